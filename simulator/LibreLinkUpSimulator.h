#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/LibreReadings.h"
#include "simulator/ServiceFault.h"
#include "simulator/SimulatedAnswer.h"
#include "support/Random.h"

namespace tidewell {

/// Someone whose sensor the service knows. Invented.
struct LibrePerson {
    std::string patientId = "9a7b6c5d-1111-4222-8333-444455556666";
    std::string firstName = "Grace";
    std::string lastName = "Muster";
    double traceOffset = 0;    ///< Seconds: where in the trace this person is, so that two differ.
    bool activeSensor = true;  ///< False: "sensor" is null.
    bool measurement = true;   ///< False: "glucoseMeasurement" is null, nothing was measured yet.
    bool operator==(const LibrePerson&) const = default;
};

/// A follower's account, and who shares with it. Invented; the password protects nothing.
struct LibreAccount {
    std::string email = "ada@example.org";
    std::string password = "correct horse";
    std::string userId = "5d2c7a10-91f4-4c3b-8e6d-0f1b2a3c4d5e";
    std::string homeRegion = "eu2";
    std::vector<LibrePerson> people{LibrePerson{}};
    bool operator==(const LibreAccount&) const = default;
};

/// What a sign-in at a region that is not the account's home is answered with.
enum class LibreRedirect {
    home,     ///< The home region.
    unknown,  ///< A code that nobody knows.
    self,     ///< The region that was asked.
    circle,   ///< On and on: the next of the thirteen regions, also from home.
    refused,  ///< Envelope status 911 alone.
};

/// The whole service: every region, one account database.
struct LibreLinkUpOptions {
    std::vector<LibreAccount> accounts{LibreAccount{}};
    LibreReadingOptions readings{};
    ServiceFault login{};
    ServiceFault connections{};
    ServiceFault graph{};

    // What a client must send; an empty text or false switches the check off.
    std::string minimumVersion = "4.16.0";  ///< Older: 403 and envelope 920 on data calls; signing in works.
    bool requireProduct = true;             ///< Else 400.
    bool requireAccountId = true;           ///< Missing: 400, RequiredHeaderMissing. A wrong hash: 401.

    LibreRedirect redirect = LibreRedirect::home;
    std::string pendingStep{};     ///< "tou", "pp", "verifyEmail" or any word; "-" for a step without type.
    bool refusePasswords = false;  ///< Every password is wrong, as after a change elsewhere.
    bool refuseTickets = false;    ///< Every ticket is answered with 401, as in maintenance.
    std::int64_t lockAfter = 3;    ///< Refused sign-ins of one account within `lockWindow` that lock it ...
    Seconds lockWindow{60};
    Seconds lockDuration{300};  ///< ... for so long, even for the right password; 0 for lockAfter: never.
    bool locked = false;        ///< Every sign-in is answered as if the account were locked.
    Seconds ticketLifetime{180.0 * 86400};
    bool removed = false;  ///< The first person of each account no longer shares with it.
    bool operator==(const LibreLinkUpOptions&) const = default;
};

/// The LibreLinkUp service, simulated: regions, sign-in with everything that may be pending, people,
/// readings.
///
/// Has no clock and no threads: the time comes with each request. The same seed and the same requests give
/// the same bytes. Used by one thread at a time. `trace` outlives it.
///
/// What counts of a URL is its path's end, "…/REGION/llu/…", so any base will do: the region is the segment
/// before "llu". It must be one of the thirteen codes or "global", which only redirects.
class LibreLinkUpSimulator {
public:
    static constexpr std::array<std::string_view, 13> regions{"ae",  "ap", "au", "ca", "cn", "de", "eu",
                                                              "eu2", "fr", "jp", "la", "ru", "us"};

    struct Counters {
        std::int64_t logins = 0;  ///< Requests of each call, whatever came of them.
        std::int64_t connections = 0;
        std::int64_t graphs = 0;
        std::int64_t refusedSignIns = 0;   ///< Wrong e-mail or password, and those of a locked account.
        std::int64_t tickets = 0;          ///< Full ones that were given out.
        std::int64_t successfulReads = 0;  ///< Graph answers with envelope status 0.
        bool operator==(const Counters&) const = default;
    };

    /// The first person's newest measurement at `start` is that of the trace's second `startSeconds`.
    LibreLinkUpSimulator(LibreLinkUpOptions options, Date start, std::uint64_t seed = 1,
                         const GlucoseTrace& trace = GlucoseTrace::libre(),
                         double startSeconds = GlucoseTrace::libreStart);

    [[nodiscard]] SimulatedAnswer handle(const HttpRequest& request, Date now);

    /// Options from `now` on. Tickets, locks and counters stay.
    void setOptions(LibreLinkUpOptions options, Date now);
    [[nodiscard]] const LibreLinkUpOptions& options() const { return options_; }

    /// Every ticket given out so far is answered with 401.
    void revokeTickets() { ticketGeneration_ += 1; }

    /// Goes on at `now` with newest measurements of that age, for everyone with a sensor.
    void restartReadings(Seconds age, Date now);

    [[nodiscard]] const Counters& counters() const { return counters_; }
    /// The readings of the first person of the first account; without one the program stops.
    [[nodiscard]] const LibreReadings& readings() const;

private:
    enum class Call { login, connections, graph };
    struct Refusals {
        std::deque<Date> times{};
        Date lockedUntil{};
    };
    /// Whose ticket a request carries, or the answer that refuses the request.
    struct Admission {
        const LibreAccount* account = nullptr;
        SimulatedAnswer refusal{};
    };

    [[nodiscard]] SimulatedAnswer perform(Call call, std::string_view region, std::string_view patientId,
                                          const HttpRequest& request, Date now);
    [[nodiscard]] SimulatedAnswer login(std::string_view region, const HttpRequest& request, Date now);
    [[nodiscard]] SimulatedAnswer connections(const LibreAccount& account, std::string_view region, Date now);
    [[nodiscard]] SimulatedAnswer graph(const LibreAccount& account, std::string_view region,
                                        std::string_view patientId, Date now);
    [[nodiscard]] Admission admit(std::string_view region, const HttpRequest& request, Date now);
    [[nodiscard]] SimulatedAnswer refused(std::string_view email, Date now);
    [[nodiscard]] std::optional<std::string> redirect(const LibreAccount& account,
                                                      std::string_view region) const;
    [[nodiscard]] bool isLocked(std::string_view email, Date now) const;
    [[nodiscard]] static bool knownProduct(const HttpRequest& request);
    [[nodiscard]] const LibreAccount* ticketHolder(std::string_view region, const HttpRequest& request,
                                                   Date now) const;
    [[nodiscard]] std::vector<const LibrePerson*> sharing(const LibreAccount& account) const;
    [[nodiscard]] std::string connectionText(const LibrePerson& person, Date now) const;
    [[nodiscard]] std::string sensorText(Date now) const;
    [[nodiscard]] std::string deviceText(const LibrePerson& person, Date now) const;
    [[nodiscard]] std::int64_t sensorStart(Date now) const;
    [[nodiscard]] std::string ticketText(const LibreAccount& account, std::string_view region, bool interim,
                                         Date now) const;
    [[nodiscard]] std::string signature(std::string_view signedPart, bool interim) const;
    [[nodiscard]] SimulatedAnswer answer(int status, std::string body,
                                         std::string_view type = "application/json; charset=utf-8");
    void meetPeople(Date now);

    LibreLinkUpOptions options_;
    Date start_;
    std::uint64_t seed_;
    SeededRandom random_;
    const GlucoseTrace* trace_;
    double startSeconds_;
    Counters counters_{};
    std::map<std::string, LibreReadings, std::less<>> readings_{};  ///< By patientId.
    std::map<std::string, Refusals, std::less<>> refusals_{};       ///< By e-mail.
    std::uint64_t ticketGeneration_ = 0;                            ///< Of the key that signs tickets.
    std::size_t garbage_ = 0;                                       ///< How many garbage answers there were.
};

}  // namespace tidewell
