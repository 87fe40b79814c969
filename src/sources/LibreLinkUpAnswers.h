#pragma once

#include <cstddef>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sources/GlucoseReading.h"
#include "sources/LibreLinkUpAPI.h"
#include "support/HttpClient.h"
#include "support/Json.h"
#include "support/SecretText.h"

namespace tidewell {

// What LibreLinkUp's answers say. Pure functions of texts that may be anything at all.

/// Which of the service's three calls an answer belongs to.
enum class LibreLinkUpCall { signIn, connections, graph };

/// The envelope's "data" of a good answer (null when it is absent), or what went wrong, in the order of the
/// service's own precedence: asked to wait, pending step, client too old, refused, any other HTTP status,
/// not understood. `now` is for a Retry-After that is a date.
[[nodiscard]] std::expected<json::value, LibreLinkUpError> libreAnswerData(LibreLinkUpCall call,
                                                                           const HttpResponse& response,
                                                                           Date now);

/// What a sign-in that was not refused brought: either another region, or a ticket.
struct LibreSignIn {
    std::optional<std::string> redirectRegion{};  ///< Lower case. Then the rest is empty.
    SecretText token{};                           ///< Can stand in a header.
    Date expires{};
    std::string accountHash{};  ///< Lower-case hexadecimal SHA-256 of the user's id.
};
[[nodiscard]] std::expected<LibreSignIn, LibreLinkUpError> libreSignIn(const json::value& data);

/// The people of a connections answer, by name and id. An entry without a usable id is left out; when no
/// entry has one, the answer is not understood.
[[nodiscard]] std::expected<std::vector<LibreConnection>, LibreLinkUpError> libreConnections(
    const json::value& data);

/// A graph answer that holds at least one reading.
struct LibreGraph {
    std::vector<GlucoseReading> readings{};  ///< Graph values in the service's order, then the current one.
    std::size_t impossible = 0;              ///< Left out: cannot have been measured, see ReadingLimits.h.
};
/// The readings of `patientId`. connectionUnavailable when the answer is about nobody or somebody else. One
/// measurement whose value or time cannot be read fails the whole answer.
[[nodiscard]] std::expected<LibreGraph, LibreLinkUpError> libreReadings(const json::value& data,
                                                                        std::string_view patientId, Date now);

/// "3/1/2026 7:58:12 PM" (M/d/yyyy h:mm:ss a), else "3/1/2026 19:58:12" (M/d/yyyy H:mm:ss), in UTC; empty for
/// anything else.
[[nodiscard]] std::optional<Date> libreFactoryTimestamp(std::string_view text);

/// The trend word for a "TrendArrow": 1 ... 5, else "NotComputable".
[[nodiscard]] std::string_view libreTrendWord(std::optional<std::int64_t> arrow);

/// The wait that a Retry-After header asks for, in seconds or as an HTTP date (RFC 9110, IMF-fixdate); a past
/// date is 0, a longer wait than an hour is an hour; empty when it is neither.
[[nodiscard]] std::optional<Seconds> retryAfterWait(std::string_view header, Date now);

}  // namespace tidewell
