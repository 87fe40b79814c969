#include "sources/LibreLinkUpAnswers.h"

#include <boost/json/array.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <ranges>
#include <set>
#include <utility>

#include "sources/HeaderText.h"
#include "sources/ReadingLimits.h"
#include "support/Sha256.h"

namespace tidewell {

namespace {

using Kind = LibreLinkUpError::Kind;

/// A graph of twelve hours is about 40 KB, a person in the list 2 KB; the rest is room for growth.
constexpr JsonLimits answerLimits{.bytes = 1024 * 1024, .depth = 32};

/// A service that names a longer wait is asked once in this time all the same.
constexpr Seconds longestWait = 1h;
constexpr std::size_t longestToken = 8192;
constexpr std::size_t longestPatientId = 128;
constexpr std::size_t longestName = 100;

constexpr Seconds graphDuration{300};
constexpr Seconds currentDuration{60};

/// The envelope's "status", where it says more than the HTTP status.
namespace envelope {
constexpr std::int64_t good = 0;
constexpr std::int64_t refused = 2;
constexpr std::int64_t pendingStep = 4;
constexpr std::int64_t rateLimited = 429;
constexpr std::int64_t foreignRegion = 911;
constexpr std::int64_t clientTooOld = 920;
}  // namespace envelope

std::unexpected<LibreLinkUpError> failure(Kind kind) { return std::unexpected{LibreLinkUpError{kind}}; }

/// A member of an object; null when there is none, when it is null, and when `value` is no object.
const json::value* member(const json::value* value, std::string_view key)
{
    const json::object* object = value ? value->if_object() : nullptr;
    const json::value* found = object ? object->if_contains({key.data(), key.size()}) : nullptr;
    return found && !found->is_null() ? found : nullptr;
}

/// A text; empty when `value` is none.
std::string_view textOf(const json::value* value)
{
    const json::string* text = value ? value->if_string() : nullptr;
    return text ? std::string_view{text->data(), text->size()} : std::string_view{};
}

std::optional<double> numberAt(const json::value* object, std::string_view key)
{
    const json::value* found = member(object, key);
    return found ? numberOf(*found) : std::nullopt;
}

std::optional<std::int64_t> integerAt(const json::value* object, std::string_view key)
{
    if (!object || !object->is_object())
        return std::nullopt;
    return optionalInteger(object->get_object(), key).value_or(std::nullopt);
}

// Asked to wait, pending step, page of the edge.

LibreLinkUpError rateLimited(const HttpResponse& response, const json::value* data, Date now)
{
    std::optional<Seconds> wait = retryAfterWait(response.header("Retry-After"), now);
    for (const json::value* place : {data, member(data, "data")}) {
        if (const auto lockout = numberAt(place, "lockout"); lockout && !wait)
            wait = std::clamp(Seconds{*lockout}, Seconds{0}, longestWait);
    }
    return {.kind = Kind::rateLimited, .wait = wait.value_or(Seconds{0})};
}

Kind pendingStep(LibreLinkUpCall call, const json::value* data)
{
    const json::value* step = member(data, "step");
    // "couldNotLoadPatient": no step, and nothing that the account's owner could do in the service's app.
    if (!step && call == LibreLinkUpCall::graph)
        return Kind::connectionUnavailable;
    const std::string_view type = textOf(member(step, "type"));
    return type == "tou" || type == "pp" ? Kind::termsRequired : Kind::accountActionRequired;
}

/// Whether the answer is a page for people. The edge in front of the service sends those; its refusals say
/// nothing about the account.
bool isPage(const HttpResponse& response)
{
    const std::size_t first = response.body.find_first_not_of(" \t\r\n");
    return lowerCased(response.header("Content-Type")).starts_with("text/html") ||
           (first != std::string::npos && response.body[first] == '<');
}

bool refusesClient(const HttpResponse& response, std::optional<std::int64_t> status, const json::value* data)
{
    const bool good = response.status >= 200 && response.status <= 299 && status == envelope::good;
    return response.status == 426 || status == envelope::clientTooOld ||
           (!good && member(data, "minimumVersion"));
}

bool refusesAccount(const HttpResponse& response, std::optional<std::int64_t> status)
{
    return response.status == 401 || status == envelope::refused ||
           (response.status == 403 && !isPage(response));
}

// Times.

/// Takes text apart from the front; once something is missing, `good` stays false.
struct Scanner {
    std::string_view rest;
    bool good = true;

    bool accept(std::string_view wanted)
    {
        if (!good || !rest.starts_with(wanted))
            return false;
        rest.remove_prefix(wanted.size());
        return true;
    }
    void expect(std::string_view wanted) { good = accept(wanted); }

    /// Decimal digits, `fewest` to `most` of them.
    int number(std::size_t fewest, std::size_t most)
    {
        const std::string_view digits = rest.substr(0, rest.find_first_not_of("0123456789"));
        int value = 0;
        if (digits.size() < fewest || digits.size() > most)
            good = false;
        else
            std::from_chars(digits.data(), digits.data() + digits.size(), value);
        rest.remove_prefix(digits.size());
        return value;
    }

    /// The position of the word that comes next.
    template <std::size_t count>
    std::size_t oneOf(const std::array<std::string_view, count>& words)
    {
        for (std::size_t i = 0; i < count; ++i)
            if (accept(words[i]))
                return i;
        good = false;
        return 0;
    }

    [[nodiscard]] bool complete() const { return good && rest.empty(); }
};

/// A moment of UTC; empty for one that no calendar has.
std::optional<Date> utcDate(std::chrono::year_month_day day, int hour, int minute, int second)
{
    if (!day.ok() || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    return Date{std::chrono::sys_days{day}.time_since_epoch() + std::chrono::hours{hour} +
                std::chrono::minutes{minute} + std::chrono::seconds{second}};
}

std::chrono::year_month_day calendarDay(int year, int month, int day)
{
    return {std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
            std::chrono::day{static_cast<unsigned>(day)}};
}

/// "Sun, 06 Nov 1994 08:49:37 GMT": IMF-fixdate (RFC 9110, section 5.6.7).
std::optional<Date> dateFromHttp(std::string_view text)
{
    static constexpr std::array<std::string_view, 7> weekdays{"Sun", "Mon", "Tue", "Wed",
                                                              "Thu", "Fri", "Sat"};
    static constexpr std::array<std::string_view, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    Scanner scanner{text};
    const std::size_t weekday = scanner.oneOf(weekdays);
    scanner.expect(", ");
    const int dayOfMonth = scanner.number(2, 2);
    scanner.expect(" ");
    const std::size_t month = scanner.oneOf(months);
    scanner.expect(" ");
    const int year = scanner.number(4, 4);
    scanner.expect(" ");
    const int hour = scanner.number(2, 2);
    scanner.expect(":");
    const int minute = scanner.number(2, 2);
    scanner.expect(":");
    const int second = scanner.number(2, 2);
    scanner.expect(" GMT");
    if (!scanner.complete())
        return std::nullopt;
    const auto day = calendarDay(year, static_cast<int>(month) + 1, dayOfMonth);
    if (std::chrono::weekday{day}.c_encoding() != weekday)
        return std::nullopt;
    return utcDate(day, hour, minute, second);
}

// People and readings.

std::string nameAt(const json::value& person, std::string_view key)
{
    std::string_view name = textOf(member(&person, key));
    if (name.size() > longestName) {
        const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
        std::size_t end = longestName;
        for (; end > 0 && continues(name[end]); --end) {
        }
        name = name.substr(0, end);  // Whole characters only.
    }
    return std::string{name};
}

/// Adds a measurement to the graph unless it cannot have been made.
std::expected<void, LibreLinkUpError> add(LibreGraph& graph, const json::value& measurement, Seconds duration,
                                          Date now)
{
    const auto mgdL = numberAt(&measurement, "ValueInMgPerDl");
    const auto date = libreFactoryTimestamp(textOf(member(&measurement, "FactoryTimestamp")));
    if (!mgdL || !date)
        return failure(Kind::invalidReading);
    if (!isPossibleValue(*mgdL) || !isPossibleTime(*date, now)) {
        ++graph.impossible;
        return {};
    }
    const std::string_view trend = libreTrendWord(integerAt(&measurement, "TrendArrow"));
    graph.readings.push_back(
        makeReading(*mgdL, std::string{trend}, *date, duration, GlucoseProvider::libreLinkUp));
    return {};
}

}  // namespace

std::expected<json::value, LibreLinkUpError> libreAnswerData(LibreLinkUpCall call,
                                                             const HttpResponse& response, Date now)
{
    const auto document = parseJson(response.body, answerLimits);
    const json::value* body = document ? &*document : nullptr;
    const std::optional<std::int64_t> status = integerAt(body, "status");
    const json::value* data = member(body, "data");

    if (response.status == 429 || status == envelope::rateLimited)
        return std::unexpected{rateLimited(response, data, now)};
    if (status == envelope::pendingStep)
        return failure(pendingStep(call, data));
    if (refusesClient(response, status, data))
        return failure(Kind::clientUpdateRequired);
    if (refusesAccount(response, status)) {
        return failure(call == LibreLinkUpCall::signIn ? Kind::authenticationFailed : Kind::sessionExpired);
    }
    if (response.status < 200 || response.status > 299)
        return std::unexpected{LibreLinkUpError{.kind = Kind::serverError, .httpStatus = response.status}};
    if (call == LibreLinkUpCall::signIn && status == envelope::foreignRegion)
        return failure(Kind::invalidRegion);
    if (status != envelope::good)
        return failure(Kind::invalidResponse);
    return data ? *data : json::value{};
}

std::expected<LibreSignIn, LibreLinkUpError> libreSignIn(const json::value& data)
{
    if (const json::value* redirect = member(&data, "redirect"); redirect && *redirect == true) {
        const std::string_view region = textOf(member(&data, "region"));
        if (region.empty())
            return failure(Kind::invalidResponse);
        return LibreSignIn{.redirectRegion = lowerCased(region)};
    }
    const json::value* ticket = member(&data, "authTicket");
    const std::string_view token = textOf(member(ticket, "token"));
    const auto expires = numberAt(ticket, "expires");
    const std::string_view userId = textOf(member(member(&data, "user"), "id"));
    if (!isHeaderText(token, longestToken) || !expires || userId.empty())
        return failure(Kind::invalidResponse);
    return LibreSignIn{
        .token = SecretText{token}, .expires = dateFromUnix(*expires), .accountHash = sha256Hex(userId)};
}

std::expected<std::vector<LibreConnection>, LibreLinkUpError> libreConnections(const json::value& data)
{
    const json::array* entries = data.if_array();
    if (!entries)
        return failure(Kind::invalidResponse);
    std::set<std::string, std::less<>> ids;
    std::map<std::pair<std::string, std::string>, LibreConnection> byName;
    for (const json::value& entry : *entries) {
        const std::string id{textOf(member(&entry, "patientId"))};
        if (!isHeaderText(id, longestPatientId) || !ids.insert(id).second)
            continue;
        LibreConnection person{
            .patientId = id, .firstName = nameAt(entry, "firstName"), .lastName = nameAt(entry, "lastName")};
        byName.emplace(std::pair{person.displayName(), id}, std::move(person));
    }
    if (byName.empty() && !entries->empty())
        return failure(Kind::invalidResponse);
    const auto people = std::views::values(byName);
    return std::vector<LibreConnection>{people.begin(), people.end()};
}

std::expected<LibreGraph, LibreLinkUpError> libreReadings(const json::value& data, std::string_view patientId,
                                                          Date now)
{
    if (!data.is_object())
        return failure(Kind::invalidResponse);
    const json::value* connection = member(&data, "connection");
    if (connection && !connection->is_object())
        return failure(Kind::invalidResponse);
    const json::value* id = member(connection, "patientId");
    if (id && !id->is_string())
        return failure(Kind::invalidResponse);
    if (!id || textOf(id) != patientId)
        return failure(Kind::connectionUnavailable);

    LibreGraph graph;
    if (const json::value* values = member(&data, "graphData")) {
        if (!values->is_array())
            return failure(Kind::invalidResponse);
        for (const json::value& measurement : values->get_array()) {
            if (const auto added = add(graph, measurement, graphDuration, now); !added)
                return std::unexpected{added.error()};
        }
    }
    if (const json::value* current = member(connection, "glucoseMeasurement")) {
        if (const auto added = add(graph, *current, currentDuration, now); !added)
            return std::unexpected{added.error()};
    }
    if (graph.readings.empty())
        return failure(graph.impossible > 0 ? Kind::invalidReading : Kind::noReadingsAvailable);
    return graph;
}

std::optional<Date> libreFactoryTimestamp(std::string_view text)
{
    Scanner scanner{text};
    const int month = scanner.number(1, 2);
    scanner.expect("/");
    const int day = scanner.number(1, 2);
    scanner.expect("/");
    const int year = scanner.number(4, 4);
    scanner.expect(" ");
    int hour = scanner.number(1, 2);
    scanner.expect(":");
    const int minute = scanner.number(2, 2);
    scanner.expect(":");
    const int second = scanner.number(2, 2);
    const bool morning = scanner.accept(" AM");
    if (morning || scanner.accept(" PM")) {
        if (hour < 1 || hour > 12)
            return std::nullopt;
        hour = hour % 12 + (morning ? 0 : 12);
    }
    return scanner.complete() ? utcDate(calendarDay(year, month, day), hour, minute, second) : std::nullopt;
}

std::string_view libreTrendWord(std::optional<std::int64_t> arrow)
{
    static constexpr std::array<std::string_view, 5> words{"SingleDown", "FortyFiveDown", "Flat",
                                                           "FortyFiveUp", "SingleUp"};
    if (!arrow || *arrow < 1 || *arrow > std::ssize(words))
        return "NotComputable";
    return words[static_cast<std::size_t>(*arrow - 1)];
}

std::optional<Seconds> retryAfterWait(std::string_view header, Date now)
{
    if (!header.empty() && header.find_first_not_of("0123456789") == std::string_view::npos) {
        std::int64_t seconds = 0;
        const auto [end, error] = std::from_chars(header.data(), header.data() + header.size(), seconds);
        return error == std::errc{} ? std::min(Seconds(static_cast<double>(seconds)), longestWait)
                                    : longestWait;  // Too large for 64 bits.
    }
    const std::optional<Date> date = dateFromHttp(header);
    if (!date)
        return std::nullopt;
    return std::clamp(*date - now, Seconds{0}, longestWait);
}

}  // namespace tidewell
