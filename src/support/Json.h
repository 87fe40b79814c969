#pragma once

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace tidewell {

namespace json = boost::json;

struct JsonLimits {
    std::size_t bytes = 4 * 1024 * 1024;
    std::size_t depth = 32;
};

/// What is wrong with a document, and where. Never quotes the document.
struct JsonError {
    std::string message;  ///< "Not valid JSON at byte 17", "A key stands twice".
    bool operator==(const JsonError&) const = default;
};

/// Parses a whole document strictly (RFC 8259): no comments, no trailing text, no key twice in one object,
/// valid UTF-8. Keys keep their order.
[[nodiscard]] std::expected<json::value, JsonError> parseJson(std::string_view text, JsonLimits limits = {});

/// Typed members of an object. Absent and null are both "absent"; a member of another type is an error, so
/// that a document that says something else than we think is never half understood.
[[nodiscard]] std::expected<std::optional<std::string>, JsonError> optionalText(const json::object& object,
                                                                                std::string_view key);
[[nodiscard]] std::expected<std::optional<double>, JsonError> optionalNumber(const json::object& object,
                                                                             std::string_view key);
/// A number with a whole value within 64 bits; 3.0 counts, 3.5 does not.
[[nodiscard]] std::expected<std::optional<std::int64_t>, JsonError> optionalInteger(
    const json::object& object, std::string_view key);
[[nodiscard]] std::expected<std::optional<bool>, JsonError> optionalBoolean(const json::object& object,
                                                                            std::string_view key);

/// The same, absent being an error too.
[[nodiscard]] std::expected<std::string, JsonError> requiredText(const json::object& object,
                                                                 std::string_view key);
[[nodiscard]] std::expected<double, JsonError> requiredNumber(const json::object& object,
                                                              std::string_view key);

/// A number of any JSON kind as double; empty when `value` is no number.
[[nodiscard]] std::optional<double> numberOf(const json::value& value);

/// The document as text, indented by two spaces, with a newline at its end: for files that people may read.
[[nodiscard]] std::string prettyJson(const json::value& value);

/// The document as text on one line, without a newline. Like prettyJson, it writes numbers in their shortest
/// plain form ("120", "5.5"), not with an exponent.
[[nodiscard]] std::string compactJson(const json::value& value);

}  // namespace tidewell
