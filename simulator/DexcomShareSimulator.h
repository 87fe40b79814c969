#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/ReadingGenerator.h"
#include "simulator/ServiceFault.h"
#include "simulator/SimulatedAnswer.h"
#include "support/Random.h"

namespace tidewell {

/// An account of one service base. The defaults are invented and protect nothing.
struct SimulatedAccount {
    std::string name = "ada@example.org";
    std::string password = "correct horse";
    bool operator==(const SimulatedAccount&) const = default;
};

/// Which error object a refused sign-in gets.
enum class RefusalForm {
    current,       ///< AccountPasswordInvalid.
    singleSignOn,  ///< SSO_InternalError, whose message quotes the account name (servers of 2024).
    legacy,        ///< SSO_AuthenticatePasswordInvalid and SSO_AuthenticateAccountNotFound.
};

/// One service base.
struct DexcomShareOptions {
    std::vector<SimulatedAccount> accounts{SimulatedAccount{}};
    /// The application id that the base expects; another one is answered with InvalidArgument. Empty: any
    /// UUID.
    std::string applicationId{};
    ReadingOptions readings{};
    ServiceFault authenticate{};
    ServiceFault login{};
    ServiceFault read{};
    RefusalForm refusal = RefusalForm::current;
    bool xmlSubCode = false;       ///< SubCode as XML, as until mid-2025; else as JSON text.
    bool refusePasswords = false;  ///< Every password is wrong, as after a change elsewhere.
    Seconds sessionLifetime{24h};
    std::int64_t sessionReads = 0;  ///< A session ends after so many reads; 0: only by time.
    std::int64_t lockAfter =
        10;  ///< Refused sign-ins of one account name within `lockWindow` that lock it ...
    Seconds lockWindow{10min};
    Seconds lockDuration{10min};  ///< ... for so long, even for the right password; 0 for lockAfter: never.
    std::string lockedCode = "SSO_AuthenticateMaxAttemptsExceeed";
};

/// One base of the Dexcom Share service, simulated: sign-in, sessions, readings, and everything that goes
/// wrong.
///
/// Has no clock and no threads: the time comes with each request, so days pass in milliseconds. The same seed
/// and the same requests give the same bytes. Used by one thread at a time. `trace` outlives it.
class DexcomShareSimulator {
public:
    struct Counters {
        std::int64_t authentications = 0;  ///< Requests of each step, whatever came of them.
        std::int64_t logins = 0;
        std::int64_t reads = 0;
        std::int64_t refusedSignIns = 0;  ///< Wrong name, password or id, and those of a locked account.
        std::int64_t sessionsOpened = 0;
        std::int64_t successfulReads = 0;  ///< Answered with an array.
        bool operator==(const Counters&) const = default;
    };
    /// A session that was opened, without its id.
    struct Session {
        Date opened;
        std::int64_t reads = 0;
        bool ended = false;
    };

    /// A base that starts at `start`.
    DexcomShareSimulator(DexcomShareOptions options, Date start, std::uint64_t seed = 1,
                         const GlucoseTrace& trace = GlucoseTrace::builtIn(),
                         std::int64_t startPosition = GlucoseTrace::builtInStart);

    /// Answers one request. What counts of the URL is the end of its path, so any base will do.
    [[nodiscard]] SimulatedAnswer handle(const HttpRequest& request, Date now);

    /// Options from `now` on. Sessions, locks and counters stay.
    void setOptions(DexcomShareOptions options, Date now);
    [[nodiscard]] const DexcomShareOptions& options() const { return options_; }

    /// Ends every session: the next read of each is answered with SessionNotValid.
    void endSessions();
    /// Forgets every session: the next read of each is answered with SessionIdNotFound.
    void forgetSessions();

    [[nodiscard]] const Counters& counters() const { return counters_; }
    /// Oldest first.
    [[nodiscard]] std::vector<Session> sessions() const;
    [[nodiscard]] ReadingGenerator& readings() { return readings_; }

private:
    enum class Step { authenticate, login, read };
    struct Parameters;
    struct OpenSession {
        std::string id;
        Session session;
    };
    struct Refusals {
        std::deque<Date> times{};
        Date lockedUntil{};
    };

    [[nodiscard]] SimulatedAnswer perform(Step step, const HttpRequest& request, std::string_view query,
                                          Date now);
    [[nodiscard]] SimulatedAnswer authenticate(const Parameters& parameters, Date now);
    [[nodiscard]] SimulatedAnswer login(const Parameters& parameters, Date now);
    [[nodiscard]] SimulatedAnswer read(const Parameters& parameters, Date now);
    [[nodiscard]] SimulatedAnswer spoilt(const ServiceFault& fault, Date now);
    [[nodiscard]] SimulatedAnswer answer(int status, std::string body,
                                         std::string_view type = "application/json");
    [[nodiscard]] SimulatedAnswer error(std::string_view code, std::string_view message, Date now);
    [[nodiscard]] SimulatedAnswer refused(std::string_view name, std::string_view by, Date now);
    [[nodiscard]] SimulatedAnswer locked(Date now);
    [[nodiscard]] std::optional<std::string> missingApplication(const Parameters& parameters) const;
    [[nodiscard]] bool isLocked(std::string_view name, Date now) const;
    [[nodiscard]] std::string accountId(std::string_view name) const;
    [[nodiscard]] std::string subCode(std::string_view code, std::string_view message, Date now);

    DexcomShareOptions options_;
    std::uint64_t seed_;
    SeededRandom random_;
    ReadingGenerator readings_;
    Counters counters_{};
    std::deque<OpenSession> sessions_{};                       ///< Oldest first.
    std::map<std::string, Refusals, std::less<>> refusals_{};  ///< By account name.
    std::size_t garbage_ = 0;                                  ///< How many garbage answers there were.
};

}  // namespace tidewell
