// The answers of LibreLinkUp's three calls. The first byte chooses the call, the HTTP status and the type of
// the content; the rest is the body.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "Require.h"
#include "sources/LibreLinkUpAnswers.h"

using namespace tidewell;

namespace {

using Kind = LibreLinkUpError::Kind;

const Date now = dateFromUnix(1'772'438'400);
constexpr std::string_view patient = "9a7b6c5d-1111-4222-8333-444455556666";

void checkError(LibreLinkUpCall call, const LibreLinkUpError& error, int status)
{
    // Every text is a constant but for the status, so nothing of the body is in it.
    const LibreLinkUpError plain{.kind = error.kind, .httpStatus = error.httpStatus};
    require(description(error) == description(plain) && !description(error).empty(), "an error has its text");
    require(error.httpStatus == (error.kind == Kind::serverError ? status : 0), "a status is the answer's");
    require(error.wait >= Seconds{0} && error.wait <= Seconds{3600}, "a wait is at most an hour");
    require(error.kind == Kind::rateLimited || error.wait == Seconds{0}, "only a limit has a wait");
    require(error.kind != Kind::authenticationFailed || call == LibreLinkUpCall::signIn,
            "credentials refused");
    require(error.kind != Kind::sessionExpired || call != LibreLinkUpCall::signIn, "a session refused");
    require(status != 429 || error.kind == Kind::rateLimited, "429 is a limit whatever the body says");
}

void checkSignIn(const LibreSignIn& signIn)
{
    if (signIn.redirectRegion) {
        require(lowerCased(*signIn.redirectRegion) == *signIn.redirectRegion, "a region is in lower case");
        require(signIn.token.empty() && signIn.accountHash.empty(), "a redirect brings no ticket");
        return;
    }
    const std::string_view token = signIn.token.reveal();
    require(!token.empty() && token.size() <= 8192, "a token has a possible length");
    require(std::ranges::all_of(token, [](char c) { return c >= ' ' && c <= '~'; }),
            "a token can stand in a header");
    require(signIn.accountHash.size() == 64, "a hash has 64 digits");
}

void checkPeople(const std::vector<LibreConnection>& people)
{
    std::set<std::string> ids;
    std::string before;
    for (const LibreConnection& person : people) {
        require(!person.patientId.empty() && person.patientId.size() <= 128, "an id has a possible length");
        require(ids.insert(person.patientId).second, "a person stands once");
        const std::string name = person.displayName();
        require(name.size() <= 201 && before <= name, "people stand in the order of their names");
        require(std::ranges::none_of(name, [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; }),
                "a name can be printed");
        before = name;
    }
}

void checkGraph(const LibreGraph& graph)
{
    static const std::set<std::string_view> words{"SingleDown",  "FortyFiveDown", "Flat",
                                                  "FortyFiveUp", "SingleUp",      "NotComputable"};
    require(!graph.readings.empty(), "a good answer holds a reading");
    for (const GlucoseReading& reading : graph.readings) {
        require(reading.mgdL > 12 && reading.mgdL <= 1000, "a value is possible");
        require(reading.date <= now + Seconds{5400} && unixSeconds(reading.date) >= 0, "a time is possible");
        require(words.contains(reading.trendString), "a trend is one of the service's");
        require(reading.source == GlucoseProvider::libreLinkUp, "a reading knows its service");
        require(reading.sampleDuration == Seconds{300} ||
                    (reading.sampleDuration == Seconds{60} && &reading == &graph.readings.back()),
                "only the last one is the current one");
        require(decodeReading(encode(reading)) == reading, "a reading survives its stored form");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    constexpr std::array calls{LibreLinkUpCall::signIn, LibreLinkUpCall::connections, LibreLinkUpCall::graph};
    constexpr std::array statuses{200, 204, 302, 400, 401, 403, 426, 429, 430, 503};
    const std::size_t choice = data[0];
    const LibreLinkUpCall call = calls[choice % 3];
    HttpResponse response{.status = statuses[choice / 3 % statuses.size()],
                          .body = std::string{reinterpret_cast<const char*>(data) + 1, size - 1}};
    if (choice >= 128)
        response.headers.push_back({"Content-Type", "text/html; charset=UTF-8"});

    const auto answer = libreAnswerData(call, response, now);
    if (!answer) {
        checkError(call, answer.error(), response.status);
        return 0;
    }
    require(response.status >= 200 && response.status <= 299, "only a good status is a good answer");

    const auto signIn = libreSignIn(*answer);
    signIn ? checkSignIn(*signIn) : checkError(LibreLinkUpCall::signIn, signIn.error(), 0);
    const auto people = libreConnections(*answer);
    people ? checkPeople(*people) : checkError(LibreLinkUpCall::connections, people.error(), 0);
    const auto graph = libreReadings(*answer, patient, now);
    graph ? checkGraph(*graph) : checkError(LibreLinkUpCall::graph, graph.error(), 0);
    if (graph) {
        const json::value* id = answer->at("connection").as_object().if_contains("patientId");
        require(id && *id == json::string_view{patient.data(), patient.size()},
                "the values are the patient's");
        const auto others = libreReadings(*answer, std::string{patient} + "0", now);
        require(!others && others.error().kind == Kind::connectionUnavailable,
                "nobody else gets this patient's values");
    }
    return 0;
}
