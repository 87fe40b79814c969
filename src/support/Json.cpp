#include "support/Json.h"

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value_stack.hpp>

#include <charconv>
#include <cmath>
#include <iterator>

namespace tidewell {

namespace {

using boost::system::error_code;

/// Builds the document as the parser walks through it.
///
/// Differs from the library's own handler in two ways: it counts keys, because the library silently keeps one
/// of two equal ones, and it reads fractions to the last bit.
class DocumentBuilder {
public:
    static constexpr std::size_t max_object_size = json::object::max_size();
    static constexpr std::size_t max_array_size = json::array::max_size();
    static constexpr std::size_t max_key_size = json::string::max_size();
    static constexpr std::size_t max_string_size = json::string::max_size();

    std::size_t keys = 0;  ///< Of all objects, equal ones counted too.
    bool numberTooLarge = false;

    json::value release() { return stack_.release(); }

    bool on_document_begin(error_code&)
    {
        stack_.reset();
        return true;
    }
    bool on_document_end(error_code&) { return true; }
    bool on_object_begin(error_code&) { return true; }
    bool on_object_end(std::size_t count, error_code&)
    {
        keys += count;
        stack_.push_object(count);
        return true;
    }
    bool on_array_begin(error_code&) { return true; }
    bool on_array_end(std::size_t count, error_code&)
    {
        stack_.push_array(count);
        return true;
    }
    bool on_key_part(json::string_view text, std::size_t, error_code&)
    {
        stack_.push_chars(text);
        return true;
    }
    bool on_key(json::string_view text, std::size_t, error_code&)
    {
        stack_.push_key(text);
        return true;
    }
    bool on_string_part(json::string_view text, std::size_t, error_code&)
    {
        stack_.push_chars(text);
        return true;
    }
    bool on_string(json::string_view text, std::size_t, error_code&)
    {
        stack_.push_string(text);
        return true;
    }
    bool on_number_part(json::string_view text, error_code&)
    {
        number_.append(text.data(), text.size());
        return true;
    }
    bool on_int64(std::int64_t value, json::string_view, error_code&)
    {
        number_.clear();
        stack_.push_int64(value);
        return true;
    }
    bool on_uint64(std::uint64_t value, json::string_view, error_code&)
    {
        number_.clear();
        stack_.push_uint64(value);
        return true;
    }
    bool on_double(double rough, json::string_view text, error_code& error)
    {
        number_.append(text.data(), text.size());
        double exact = rough;
        // Leaves `exact` alone when the number is out of range: infinite then, or as good as zero.
        std::from_chars(number_.data(), number_.data() + number_.size(), exact);
        number_.clear();
        if (!std::isfinite(exact)) {
            numberTooLarge = true;
            error = json::error::exponent_overflow;
            return false;
        }
        stack_.push_double(exact);
        return true;
    }
    bool on_bool(bool value, error_code&)
    {
        stack_.push_bool(value);
        return true;
    }
    bool on_null(error_code&)
    {
        stack_.push_null();
        return true;
    }
    bool on_comment_part(json::string_view, error_code&) { return true; }
    bool on_comment(json::string_view, error_code&) { return true; }

private:
    json::value_stack stack_;
    std::string number_;  ///< The digits of the number that is being read.
};

std::size_t keysIn(const json::value& value)
{
    std::size_t count = 0;
    if (const json::object* const object = value.if_object()) {
        count = object->size();
        for (const auto& member : *object)
            count += keysIn(member.value());
    } else if (const json::array* const array = value.if_array()) {
        for (const json::value& element : *array)
            count += keysIn(element);
    }
    return count;
}

std::string_view view(json::string_view text) { return {text.data(), text.size()}; }

/// The member, or none when it is absent or null.
const json::value* member(const json::object& object, std::string_view key)
{
    const json::value* const found = object.if_contains({key.data(), key.size()});
    return found && !found->is_null() ? found : nullptr;
}

std::unexpected<JsonError> wrongType(std::string_view key, std::string_view wanted)
{
    return std::unexpected{JsonError{fmt::format("\"{}\" is not {}", key, wanted)}};
}

template <class Value>
std::expected<Value, JsonError> required(std::expected<std::optional<Value>, JsonError> read,
                                         std::string_view key)
{
    if (!read)
        return std::unexpected{std::move(read.error())};
    if (!*read)
        return std::unexpected{JsonError{fmt::format("\"{}\" is missing", key)}};
    return std::move(**read);
}

enum class Layout { compact, indented };

void append(std::string& text, const json::value& value, Layout layout, std::size_t depth)
{
    const auto newLine = [&text, layout](std::size_t level) {
        if (layout == Layout::compact)
            return;
        text += '\n';
        text.append(2 * level, ' ');
    };
    if (const json::object* const object = value.if_object(); object && !object->empty()) {
        char before = '{';
        for (const auto& entry : *object) {
            text += std::exchange(before, ',');
            newLine(depth + 1);
            text += json::serialize(entry.key());
            text += layout == Layout::compact ? ":" : ": ";
            append(text, entry.value(), layout, depth + 1);
        }
        newLine(depth);
        text += '}';
    } else if (const json::array* const array = value.if_array(); array && !array->empty()) {
        char before = '[';
        for (const json::value& element : *array) {
            text += std::exchange(before, ',');
            newLine(depth + 1);
            append(text, element, layout, depth + 1);
        }
        newLine(depth);
        text += ']';
    } else if (const double* const number = value.if_double()) {
        // The library would write 3.9 as 3.9E0. What is no number has no JSON form.
        text += std::isfinite(*number) ? fmt::format("{}", *number) : "null";
    } else {
        text += json::serialize(value);
    }
}

}  // namespace

std::expected<json::value, JsonError> parseJson(std::string_view text, JsonLimits limits)
{
    if (text.size() > limits.bytes)
        return std::unexpected{JsonError{fmt::format("Longer than {} bytes", limits.bytes)}};
    json::parse_options options;
    options.max_depth = limits.depth;
    json::basic_parser<DocumentBuilder> parser{options};
    error_code error;
    const std::size_t read = parser.write_some(false, text.data(), text.size(), error);
    if (parser.handler().numberTooLarge || error == json::error::exponent_overflow)
        return std::unexpected{JsonError{fmt::format("A number is too large at byte {}", read)}};
    if (error == json::error::too_deep)
        return std::unexpected{JsonError{fmt::format("Nested more than {} deep", limits.depth)}};
    if (error == json::error::incomplete)
        return std::unexpected{JsonError{"Ends before the document is complete"}};
    if (error)
        return std::unexpected{JsonError{fmt::format("Not valid JSON at byte {}", read)}};
    if (read < text.size())
        return std::unexpected{JsonError{fmt::format("More text after the document at byte {}", read)}};
    json::value document = parser.handler().release();
    if (keysIn(document) != parser.handler().keys)
        return std::unexpected{JsonError{"A key stands twice"}};
    return document;
}

std::expected<std::optional<std::string>, JsonError> optionalText(const json::object& object,
                                                                  std::string_view key)
{
    const json::value* const found = member(object, key);
    if (!found)
        return std::nullopt;
    if (const json::string* const text = found->if_string())
        return std::string{view(*text)};
    return wrongType(key, "a text");
}

std::expected<std::optional<double>, JsonError> optionalNumber(const json::object& object,
                                                               std::string_view key)
{
    const json::value* const found = member(object, key);
    if (!found)
        return std::nullopt;
    if (const auto number = numberOf(*found))
        return number;
    return wrongType(key, "a number");
}

std::expected<std::optional<std::int64_t>, JsonError> optionalInteger(const json::object& object,
                                                                      std::string_view key)
{
    const json::value* const found = member(object, key);
    if (!found)
        return std::nullopt;
    if (const std::int64_t* const whole = found->if_int64())
        return *whole;
    if (const double* const number = found->if_double()) {
        constexpr double bound = 0x1p63;
        if (std::trunc(*number) == *number && *number >= -bound && *number < bound)
            return static_cast<std::int64_t>(*number);
    }
    return wrongType(key, "a whole number of 64 bits");
}

std::expected<std::optional<bool>, JsonError> optionalBoolean(const json::object& object,
                                                              std::string_view key)
{
    const json::value* const found = member(object, key);
    if (!found)
        return std::nullopt;
    if (const bool* const flag = found->if_bool())
        return *flag;
    return wrongType(key, "true or false");
}

std::expected<std::string, JsonError> requiredText(const json::object& object, std::string_view key)
{
    return required(optionalText(object, key), key);
}

std::expected<double, JsonError> requiredNumber(const json::object& object, std::string_view key)
{
    return required(optionalNumber(object, key), key);
}

std::optional<double> numberOf(const json::value& value)
{
    if (const double* const number = value.if_double())
        return *number;
    if (const std::int64_t* const whole = value.if_int64())
        return static_cast<double>(*whole);
    if (const std::uint64_t* const whole = value.if_uint64())
        return static_cast<double>(*whole);
    return {};
}

std::string prettyJson(const json::value& value)
{
    std::string text;
    append(text, value, Layout::indented, 0);
    text += '\n';
    return text;
}

std::string compactJson(const json::value& value)
{
    std::string text;
    append(text, value, Layout::compact, 0);
    return text;
}

}  // namespace tidewell
