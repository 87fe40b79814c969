#include "app/OnboardingFlow.h"

#include <boost/asio/strand.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <list>
#include <utility>

#include "app/AccountCheck.h"
#include "app/TermsAgreement.h"
#include "config/AppSettingsKeys.h"
#include "config/LocaleDefaults.h"
#include "config/ThresholdOptions.h"
#include "history/GlucoseHistoryRecords.h"
#include "polling/Calls.h"
#include "sources/GlucoseUnits.h"
#include "support/Log.h"
#include "support/OnExecutor.h"

namespace tidewell {

namespace {

using Step = OnboardingStep;

const Log flowLog{"OnboardingFlow"};

/// As stored under onboardingStepKey.
constexpr std::array<std::pair<Step, std::string_view>, 10> stepNames{{{Step::welcome, "welcome"},
                                                                       {Step::terms, "terms"},
                                                                       {Step::account, "account"},
                                                                       {Step::person, "person"},
                                                                       {Step::firstReading, "firstReading"},
                                                                       {Step::glucose, "glucose"},
                                                                       {Step::alerts, "alerts"},
                                                                       {Step::history, "history"},
                                                                       {Step::login, "login"},
                                                                       {Step::done, "done"}}};

/// The same name and password are sent no more often when the service refuses them ...
constexpr int mostRefusals = 2;
/// ... and one account, whatever the passwords ...
constexpr int mostRefusalsOfLogin = 5;
/// ... until so much time has passed: what locked the account may be over then.
constexpr Seconds refusalMemory = 15min;
/// An answer that is younger serves a step that is shown once more.
constexpr Seconds recentAnswer = 1min;
/// How often the age of the first reading is told anew.
constexpr std::chrono::milliseconds ageInterval = 30s;

std::string_view nameOf(Step step)
{
    return std::ranges::find(stepNames, step, &std::pair<Step, std::string_view>::first)->second;
}

Step stepNamed(const std::optional<std::string>& name)
{
    const auto found =
        std::ranges::find(stepNames, name.value_or(""), &std::pair<Step, std::string_view>::second);
    return found == stepNames.end() ? Step::welcome : found->first;
}

bool isControl(char c) { return (c >= '\0' && c < ' ') || c == '\x7F'; }

/// Without control characters, and at both ends without spaces and the invisible characters that come along
/// when a name is copied from a mail or a page.
std::string cleaned(std::string_view text)
{
    static constexpr std::array<std::string_view, 7> invisible{" ",      "\u00A0", "\u200B", "\u200E",
                                                               "\u2028", "\u2029", "\uFEFF"};
    std::string whole;
    std::ranges::copy_if(text, std::back_inserter(whole), [](char c) { return !isControl(c); });
    std::string_view rest = whole;
    const auto strip = [&rest](bool atFront) {
        return std::ranges::any_of(invisible, [&](std::string_view one) {
            if (atFront ? !rest.starts_with(one) : !rest.ends_with(one))
                return false;
            atFront ? rest.remove_prefix(one.size()) : rest.remove_suffix(one.size());
            return true;
        });
    };
    while (strip(true) || strip(false)) {
    }
    return std::string{rest};
}

/// A password as it was meant: a line break at its end was pasted along.
SecretText withoutLineBreak(const SecretText& password)
{
    std::string_view text = password.reveal();
    while (text.ends_with('\n') || text.ends_with('\r'))
        text.remove_suffix(1);
    return SecretText{text};
}

bool isSameLogin(const GlucoseAccountConfiguration& a, const GlucoseAccountConfiguration& b)
{
    return a.provider == b.provider && a.username == b.username;
}

/// Tells passwords apart without keeping them.
std::size_t fingerprint(const SecretText& password)
{
    return std::hash<std::string_view>{}(password.reveal());
}

bool areSameCredentials(const GlucoseAccountConfiguration& a, const GlucoseAccountConfiguration& b)
{
    return isSameLogin(a, b) && a.region == b.region && a.password == b.password;
}

bool isMmolL(const AppSettings& settings)
{
    return glucoseUnits(settings.measurementUnit) == GlucoseUnits::mmolL;
}

/// With thresholds that the unit's pickers show.
AppSettings snapped(AppSettings settings)
{
    const bool mmolL = isMmolL(settings);
    settings.lowGlucoseThreshold =
        ThresholdValidator::snap(thresholdOptions(ThresholdKind::low, mmolL), settings.lowGlucoseThreshold);
    settings.highGlucoseThreshold =
        ThresholdValidator::snap(thresholdOptions(ThresholdKind::high, mmolL), settings.highGlucoseThreshold);
    return settings;
}

bool hasOfferedThresholds(const AppSettings& settings)
{
    const AppSettings nearest = snapped(settings);
    return nearest.lowGlucoseThreshold == settings.lowGlucoseThreshold &&
           nearest.highGlucoseThreshold == settings.highGlucoseThreshold;
}

/// Before the person has chosen any.
AppSettings initialSettings(std::string_view country)
{
    return snapped({.measurementUnit = std::string{rawValue(defaultGlucoseUnits(country))}});
}

/// Lays what the first-run steps ask for over the other preferences.
AppSettings merged(AppSettings into, const AppSettings& chosen)
{
    into.measurementUnit = chosen.measurementUnit;
    into.lowGlucoseThreshold = chosen.lowGlucoseThreshold;
    into.highGlucoseThreshold = chosen.highGlucoseThreshold;
    into.alertsEnabled = chosen.alertsEnabled;
    into.alertOnLowThreshold = chosen.alertOnLowThreshold;
    into.alertOnHighThreshold = chosen.alertOnHighThreshold;
    into.alertOnRapidFall = chosen.alertOnRapidFall;
    into.alertOnRapidRise = chosen.alertOnRapidRise;
    into.alertOnMissingData = chosen.alertOnMissingData;
    return into;
}

// Where a call that broke off must look like one that failed.

ConfigurationProblem brokenSave()
{
    return {.error = {.kind = ConfigurationError::Kind::invalidConfiguration},
            .message = "The change could not be stored."};
}

AccountCheck brokenCheck()
{
    return {.result = AccountCheck::Result::unreachable, .error = GlucoseAPIError{}};
}

/// What the desktop does to alerts; what the person chose is no finding here.
std::vector<AlertFinding> desktopFindings(const AlertPath& path, Date now)
{
    auto findings = alertFindings({.now = now, .path = path, .newestReading = now});
    std::erase_if(findings, [](const AlertFinding& finding) {
        return finding.severity != AlertFinding::Severity::problem &&
               finding.severity != AlertFinding::Severity::caution;
    });
    return findings;
}

}  // namespace

struct OnboardingFlow::Impl : std::enable_shared_from_this<Impl> {
    using Self = std::shared_ptr<Impl>;

    /// Work that may be given up. What it brings counts only while its number is the latest.
    struct Job {
        Task<void> task{};
        std::uint64_t number = 0;

        void cancel()
        {
            ++number;
            if (task.running())
                task.cancel();
        }
    };

    explicit Impl(Services given)
        : services{std::move(given)}, loginStrand{asio::make_strand(services.workers)}
    {
    }

    Services services;
    const asio::any_io_executor loginStrand;  ///< The login item takes one call at a time.
    OnboardingState state{};
    bool shown = false;
    bool finished = false;

    SecretText entered{};  ///< The password as it stands in its field.
    /// The account that the service took last, or that is stored, with its password and the chosen person.
    std::optional<GlucoseAccountConfiguration> account{};
    bool mayGoOn = true;  ///< Nothing the service said since keeps `account` from being used.
    std::shared_ptr<GlucoseAPIProtocol> client{};  ///< Of `account`, with its session.
    std::optional<Date> peopleAskedAt{};
    std::optional<Date> fetchedAt{};

    /// Kept when the window closes: the service counts on.
    struct Refusal {
        GlucoseAccountConfiguration account;  ///< Without its password.
        std::size_t password;                 ///< Its fingerprint.
        Date at;
        bool isLock;
        SignInProblem problem;
    };
    std::vector<Refusal> refusals{};  ///< Of the last quarter of an hour, by time.
    struct Wait {
        GlucoseProvider provider;
        Date until;
        std::string text;
    };
    std::optional<Wait> wait{};

    AppSettings basis{};  ///< The stored preferences that those of the state were made of.
    bool hasChosenHistory = false;
    bool hasBegunSaving = false;  ///< Saving was to be switched on, whatever came of it.
    std::optional<HistoryScopeID> followed{};

    Job work{};  ///< What a step is left or begun with; isBusy.
    Job ticking{};
    Job looking{};
    Job testing{};
    std::vector<std::shared_ptr<void>> tokens{};
    std::list<std::weak_ptr<std::function<void()>>> observers{};

    void observeServices()
    {
        tokens.push_back(services.configuration.observe([this](ConfigurationChange change) {
            if (!shown)
                return;
            if (change == ConfigurationChange::appSettings)
                followSettings();
            update();
        }));
        tokens.push_back(services.history.observe([this](const GlucoseHistoryStatus&) {
            if (!shown)
                return;
            takeHistoryStatus();
            update();
        }));
    }

    void end()
    {
        tokens.clear();
        observers.clear();
        cancelAll();
    }

    void cancelAll()
    {
        for (Job* job : {&work, &ticking, &looking, &testing})
            job->cancel();
    }

    /// Begins `body(self, number)` in place of what the job did before.
    template <class Body>
    void start(Job& job, Body body)
    {
        job.cancel();
        job.task = startTask(services.main, body(shared_from_this(), job.number));
    }

    template <class Body>
    void startWork(Body body)
    {
        state.isBusy = true;
        state.problem.reset();
        state.isProblemOfStoring = false;
        start(work, std::move(body));
    }

    // What is shown.

    void update()
    {
        const Self self = shared_from_this();  // An observer may let everything go.
        state.path.clear();
        for (const auto& [step, name] : stepNames)
            if (step != Step::person || state.account.provider == GlucoseProvider::libreLinkUp)
                state.path.push_back(step);
        state.hasPassword = !password().empty();
        state.canGoBack = !finished && state.step != Step::welcome;
        state.canGoForward = !finished && !state.isBusy && isComplete();
        const auto present = observers;  // An observer may come or go while they are told.
        for (const auto& entry : present)
            if (const auto observer = entry.lock())
                (*observer)();
        std::erase_if(observers, [](const auto& entry) { return entry.expired(); });
    }

    [[nodiscard]] bool isComplete() const
    {
        switch (state.step) {
        case Step::terms: return state.termsAccepted;
        case Step::account:
            return !state.account.username.empty() && !state.account.region.empty() && state.hasPassword;
        case Step::person: return chosenPerson() != nullptr;
        case Step::firstReading: return account && mayGoOn;
        case Step::welcome:
        case Step::glucose:
        case Step::alerts:
        case Step::history:
        case Step::login:
        case Step::done: return true;
        }
        std::unreachable();
    }

    void show(Step step)
    {
        cancelAll();
        state.step = step;
        state.problem.reset();
        state.isProblemOfStoring = false;
        state.isBusy = false;
        state.isSendingTestAlert = false;
        services.defaults.set(onboardingStepKey, std::string{nameOf(step)});
        enter();
        update();
    }

    void enter()
    {
        state.now = services.clock.now();
        switch (state.step) {
        case Step::person: enterPerson(); break;
        case Step::firstReading: enterFirstReading(); break;
        case Step::alerts: look(); break;
        case Step::history: followHistory(); break;
        case Step::login: lookAtLoginItem(); break;
        case Step::welcome:
        case Step::terms:
        case Step::account:
        case Step::glucose:
        case Step::done: break;
        }
    }

    void showNext() { showNeighbour(1); }

    void showNeighbour(std::ptrdiff_t offset)
    {
        update();  // The service, and with it the path, may have changed.
        const auto here = std::ranges::find(state.path, state.step);
        show(*(here + offset));
    }

    /// The furthest step up to `wanted` whose conditions are met.
    [[nodiscard]] Step reachable(Step wanted) const
    {
        if (wanted > Step::terms && !hasAcceptedCurrentTerms(services.defaults))
            return Step::terms;
        if (wanted <= Step::account)
            return wanted;
        if (!account)
            return Step::account;
        const bool choosesPerson = account->provider == GlucoseProvider::libreLinkUp;
        if (wanted == Step::person && !choosesPerson)
            return Step::firstReading;
        return choosesPerson && wanted > Step::person && !account->patientID ? Step::person : wanted;
    }

    void begin()
    {
        if (std::exchange(shown, true)) {
            lookAgain();
            return;
        }
        finished = false;
        if (services.configuration.loaded()) {
            goOn();
            return;
        }
        // It may wait for a keyring, and a keyring for a person.
        clearState();
        startWork([](Self self, std::uint64_t number) { return awaitConfiguration(self, number); });
        update();
    }

    using Saved = std::expected<void, ConfigurationProblem>;

    static asio::awaitable<void> awaitConfiguration(Self self, std::uint64_t number)
    {
        // A failure is told by what needs the configuration.
        (void)co_await guarded(self->services.configuration.load(), Saved{});
        if (self->work.number == number)
            self->goOn();
    }

    /// Shows the step that was reached last.
    void goOn()
    {
        const Step wanted = stepNamed(services.defaults.text(onboardingStepKey));
        const auto& stored = services.configuration.account();
        clearState();
        state.termsAccepted = hasAcceptedCurrentTerms(services.defaults);
        if (stored) {
            state.account = *stored;
            state.account.password = {};
            state.patientID = stored->patientID;
            if (!stored->password.empty())
                account = *stored;
        } else {
            state.account.region = usualRegion(state.account.provider, services.country);
        }
        mayGoOn = !account || !lastRefusal(*account);
        prepareSettings(wanted);
        state.startsAtLogin = services.configuration.settings().startAtLogin;
        hasChosenHistory = false;
        takeHistoryStatus();

        const Step step = reachable(wanted);
        show(step);
        if (step == Step::account && wanted > step && stored) {
            state.problem = passwordNeededProblem();
            if (const auto& problem = services.configuration.problem())
                state.problem->message = problem->message;
            update();
        }
    }

    /// Preferences that were never chosen are those of the country.
    void prepareSettings(Step reached)
    {
        const AppSettings& stored = services.configuration.settings();
        const bool untouched = reached <= Step::glucose && merged({}, stored) == merged({}, AppSettings{});
        basis = stored;
        state.settings = untouched ? merged(stored, initialSettings(services.country)) : snapped(stored);
    }

    /// Somebody else changed preferences: what was chosen here stays chosen.
    void followSettings()
    {
        const AppSettings& stored = services.configuration.settings();
        state.settings = snapped(withChanges(stored, basis, state.settings));
        basis = stored;
    }

    /// The window came to the front: something may have been mended meanwhile.
    void lookAgain()
    {
        if (state.step == Step::alerts)
            look();
        else if (state.step == Step::login && !state.isBusy)
            start(looking, [](Self self, std::uint64_t number) { return lookAtLoginItem(self, number); });
        update();
    }

    void close()
    {
        if (!std::exchange(shown, false))
            return;
        cancelAll();
        entered = {};
        account.reset();
        client.reset();
        peopleAskedAt.reset();
        fetchedAt.reset();
        const Step step = state.step;
        clearState();
        state.step = step;
    }

    void clearState() { state = {.secretsFile = services.secretsFile}; }

    void goBack()
    {
        if (shown && state.canGoBack)
            showNeighbour(-1);
    }

    void goForward()
    {
        if (!shown || !state.canGoForward)
            return;
        switch (state.step) {
        case Step::welcome: showNext(); break;
        case Step::terms:
            if (!hasAcceptedCurrentTerms(services.defaults))
                acceptTerms(services.defaults, services.clock.now());
            showNext();
            break;
        case Step::account: leaveAccount(); break;
        case Step::person: leavePerson(); break;
        case Step::firstReading: leaveFirstReading(); break;
        case Step::glucose:
        case Step::alerts: leaveSettings(); break;
        case Step::history: leaveHistory(); break;
        case Step::login: leaveLogin(); break;
        case Step::done: finish(); break;
        }
    }

    void fail(SignInProblem problem)
    {
        state.isBusy = false;
        state.problem = std::move(problem);
        update();
    }

    void failToStore(SignInProblem problem)
    {
        state.isProblemOfStoring = true;
        fail(std::move(problem));
    }

    // The account.

    /// Of the account that is entered: the typed one, or the one that is known for it.
    [[nodiscard]] SecretText password() const
    {
        if (!entered.empty())
            return entered;
        const auto& stored = services.configuration.account();
        for (const auto* known : {account ? &*account : nullptr, stored ? &*stored : nullptr})
            if (known && isSameLogin(*known, state.account) && !known->password.empty())
                return known->password;
        return {};
    }

    [[nodiscard]] GlucoseAccountConfiguration candidate() const
    {
        GlucoseAccountConfiguration wanted = state.account;
        wanted.password = password();
        if (account && isSameLogin(*account, wanted)) {
            wanted.patientID = account->patientID;
            wanted.patientName = account->patientName;
        }
        return wanted;
    }

    void setAccount(GlucoseAccountConfiguration given)
    {
        if (!shown || state.step != Step::account)
            return;
        given.username = cleaned(given.username);
        given.region = cleaned(given.region);
        SecretText typed = withoutLineBreak(given.password);
        given.password = {};
        given.patientID.reset();
        given.patientName.reset();
        if (!isSameLogin(given, state.account))
            forgetPeople();
        else
            std::tie(given.patientID, given.patientName) =
                std::tie(state.account.patientID, state.account.patientName);
        if (given == state.account && typed == entered)
            return;
        state.account = std::move(given);
        entered = std::move(typed);
        work.cancel();
        state.isBusy = false;
        state.problem.reset();
        update();
    }

    void forgetPeople()
    {
        state.people.clear();
        state.patientID.reset();
        peopleAskedAt.reset();
        forgetReading();
    }

    void forgetReading()
    {
        state.firstReading.reset();
        fetchedAt.reset();
        client.reset();
    }

    [[nodiscard]] bool isRecent(const std::optional<Date>& moment) const
    {
        const Date now = services.clock.now();
        return moment && *moment <= now && now - *moment < recentAnswer;
    }

    void leaveAccount()
    {
        const GlucoseAccountConfiguration wanted = candidate();
        if (account && mayGoOn && areSameCredentials(*account, wanted)) {
            showNext();
            return;
        }
        if (!mayAsk(wanted))
            return;
        switch (wanted.provider) {
        case GlucoseProvider::dexcom:
            startWork([&](Self self, std::uint64_t number) { return checkDexcom(self, number, wanted); });
            break;
        case GlucoseProvider::libreLinkUp:
            startWork([&](Self self, std::uint64_t number) { return askPeople(self, number, wanted); });
            break;
        }
        update();
    }

    /// Whether the service may be asked about it now; else says why not.
    [[nodiscard]] bool mayAsk(const GlucoseAccountConfiguration& wanted)
    {
        const Date now = services.clock.now();
        if (wait && wait->provider == wanted.provider && now < wait->until) {
            fail(signInProblem(wanted.provider,
                               {.kind = GlucoseAPIError::Kind::rateLimited,
                                .text = wait->text,
                                .retryAfter = wait->until - now},
                               wanted.username));
            return false;
        }
        if (auto problem = refusalProblem(wanted)) {
            fail(*std::move(problem));
            return false;
        }
        return true;
    }

    [[nodiscard]] static bool isOf(const Refusal& refusal, const GlucoseAccountConfiguration& asked)
    {
        return isSameLogin(refusal.account, asked) && refusal.account.region == asked.region &&
               refusal.password == fingerprint(asked.password);
    }

    void forgetOldRefusals()
    {
        const Date now = services.clock.now();
        std::erase_if(refusals, [now](const Refusal& refusal) {
            return refusal.at > now || now - refusal.at >= refusalMemory;
        });
    }

    /// The last time that the service refused exactly this, if it did lately.
    [[nodiscard]] const Refusal* lastRefusal(const GlucoseAccountConfiguration& asked)
    {
        forgetOldRefusals();
        const auto last = std::ranges::find_if(refusals.rbegin(), refusals.rend(),
                                               [&](const Refusal& one) { return isOf(one, asked); });
        return last == refusals.rend() ? nullptr : &*last;
    }

    /// Why the service is not asked once more what it has refused.
    [[nodiscard]] std::optional<SignInProblem> refusalProblem(const GlucoseAccountConfiguration& asked)
    {
        const Refusal* const last = lastRefusal(asked);
        const auto count =
            std::ranges::count_if(refusals, [&](const Refusal& one) { return isOf(one, asked); });
        // What is locked stays locked for longer when it is tried again.
        if (last && (last->isLock || count >= mostRefusals)) {
            SignInProblem problem = last->problem;
            problem.remedy =
                "The service refused this more than once, and it is not sent again, so that the account is "
                "not locked: change something first, or wait for a quarter of an hour.";
            return problem;
        }
        std::vector<Date> ofLogin;
        for (const Refusal& one : refusals)
            if (isSameLogin(one.account, asked))
                ofLogin.push_back(one.at);
        if (std::ssize(ofLogin) < mostRefusalsOfLogin)
            return std::nullopt;
        const Date first = *(ofLogin.end() - mostRefusalsOfLogin);
        return tooManyRefusalsProblem(first + refusalMemory - services.clock.now());
    }

    void failToSignIn(const GlucoseAccountConfiguration& asked, const GlucoseAPIError& error)
    {
        const Date now = services.clock.now();
        SignInProblem problem = signInProblem(asked.provider, error, asked.username);
        if (accountCheckResult(error) == AccountCheck::Result::refused) {
            forgetOldRefusals();
            refusals.push_back({.account = asked,
                                .password = fingerprint(asked.password),
                                .at = now,
                                .isLock = error.kind == GlucoseAPIError::Kind::accountLocked,
                                .problem = problem});
            refusals.back().account.password = {};
        }
        if (error.kind == GlucoseAPIError::Kind::rateLimited && error.retryAfter)
            wait = Wait{.provider = asked.provider, .until = now + *error.retryAfter, .text = error.text};
        fail(std::move(problem));
    }

    void accept(GlucoseAccountConfiguration taken)
    {
        mayGoOn = true;
        std::erase_if(refusals, [&](const Refusal& one) { return isSameLogin(one.account, taken); });
        state.account.region = taken.region;
        account = std::move(taken);
    }

    static asio::awaitable<void> checkDexcom(Self self, std::uint64_t number,
                                             GlucoseAccountConfiguration wanted)
    {
        auto api = self->services.makeAPIClient(wanted);
        AccountCheck check = co_await guarded(checkAccount(self->services.engine, api), brokenCheck());
        if (self->work.number != number)
            co_return;
        if (check.result != AccountCheck::Result::good) {
            self->failToSignIn(wanted, *check.error);
            co_return;
        }
        self->accept(std::move(wanted));
        self->client = std::move(api);
        self->state.firstReading = check.newest;
        self->fetchedAt = self->services.clock.now();
        self->showNext();
    }

    // Whom to follow.

    static asio::awaitable<void> askPeople(Self self, std::uint64_t number,
                                           GlucoseAccountConfiguration wanted)
    {
        using Connections = std::expected<LibreConnections, GlucoseAPIError>;
        const Connections connections = co_await guarded(self->services.askConnections(wanted),
                                                         Connections{std::unexpected{GlucoseAPIError{}}});
        if (self->work.number != number)
            co_return;
        if (!connections) {
            self->failToSignIn(wanted, connections.error());
            co_return;
        }
        if (!connections->region.empty())
            wanted.region = connections->region;
        self->client.reset();
        self->fetchedAt.reset();
        self->state.people = connections->people;
        self->peopleAskedAt = self->services.clock.now();
        self->preselect(wanted.patientID);
        self->accept(std::move(wanted));
        self->show(Step::person);
    }

    /// Who was chosen before, or who is alone.
    void preselect(const std::optional<std::string>& former)
    {
        if (former && !state.patientID)
            state.patientID = former;
        if (!chosenPerson())
            state.patientID.reset();
        if (!state.patientID && state.people.size() == 1)
            state.patientID = state.people.front().patientId;
    }

    [[nodiscard]] const LibreConnection* chosenPerson() const
    {
        const auto found = std::ranges::find_if(state.people, [this](const LibreConnection& person) {
            return person.patientId == state.patientID;
        });
        return found == state.people.end() ? nullptr : &*found;
    }

    void enterPerson()
    {
        if (!state.people.empty())
            return;
        if (isRecent(peopleAskedAt))
            state.problem = nobodySharesProblem();
        else if (const Refusal* const last = lastRefusal(candidate()))
            state.problem = last->problem;  // Sent once more only when the person wants it.
        else
            askPeopleAgain();
    }

    void askPeopleAgain()
    {
        if (const GlucoseAccountConfiguration wanted = candidate(); mayAsk(wanted))
            startWork([&](Self self, std::uint64_t number) { return askPeople(self, number, wanted); });
    }

    void choosePerson(std::string patientID)
    {
        if (!shown || state.step != Step::person || state.isBusy)
            return;
        const auto before = std::exchange(state.patientID, std::move(patientID));
        if (!chosenPerson())
            state.patientID = before;
        state.problem.reset();
        update();
    }

    void leavePerson()
    {
        const LibreConnection& person = *chosenPerson();
        if (account->patientID != person.patientId)
            forgetReading();
        account->patientID = person.patientId;
        const std::string name = person.displayName();
        account->patientName = name.empty() ? std::nullopt : std::optional{name};
        std::tie(state.account.patientID, state.account.patientName) =
            std::tie(account->patientID, account->patientName);
        showNext();
    }

    // The first reading.

    void enterFirstReading()
    {
        start(ticking, [](Self self, std::uint64_t number) { return tellAge(self, number); });
        const Refusal* const last = account ? lastRefusal(*account) : nullptr;
        if (last)
            state.problem = last->problem;  // Sent once more only when the person wants it.
        else if (!isRecent(fetchedAt))
            fetch();
        else if (!state.firstReading)
            state.problem = noReadingsProblem(account->provider);
    }

    static asio::awaitable<void> tellAge(Self self, std::uint64_t number)
    {
        for (;;) {
            co_await self->services.clock.sleepFor(ageInterval);
            if (self->ticking.number != number)
                co_return;
            self->state.now = self->services.clock.now();
            self->update();
        }
    }

    void fetch()
    {
        if (!account || !mayAsk(*account))
            return;
        startWork([](Self self, std::uint64_t number) { return fetchReadings(self, number); });
    }

    static asio::awaitable<void> fetchReadings(Self self, std::uint64_t number)
    {
        const GlucoseAccountConfiguration asked = *self->account;
        if (!self->client)
            self->client = self->services.makeAPIClient(asked);
        const AccountCheck check =
            co_await guarded(checkAccount(self->services.engine, self->client), brokenCheck());
        if (self->work.number != number)
            co_return;
        self->state.now = self->services.clock.now();
        switch (check.result) {
        case AccountCheck::Result::good:
            self->mayGoOn = true;
            self->state.isBusy = false;
            self->state.firstReading = check.newest;
            self->fetchedAt = self->state.now;
            if (!check.newest)
                self->state.problem = noReadingsProblem(asked.provider);
            self->update();
            break;
        // The account is good as far as anybody knows.
        case AccountCheck::Result::unreachable: self->failToSignIn(asked, *check.error); break;
        case AccountCheck::Result::refused:
        case AccountCheck::Result::actionRequired:
            self->mayGoOn = false;
            self->forgetPeople();  // They are asked for anew: one may no longer share.
            self->failToSignIn(asked, *check.error);
            break;
        }
    }

    void tryAgain()
    {
        if (!shown || state.isBusy)
            return;
        if (state.step == Step::person)
            askPeopleAgain();
        else if (state.step == Step::firstReading)
            fetch();
        update();
    }

    void leaveFirstReading()
    {
        if (services.configuration.account() == account) {
            showNext();
            return;
        }
        startWork([](Self self, std::uint64_t number) { return saveAccount(self, number); });
        update();
    }

    static asio::awaitable<void> saveAccount(Self self, std::uint64_t number)
    {
        const Saved saved = co_await guarded(self->services.configuration.saveAccount(self->account),
                                             Saved{std::unexpected{brokenSave()}});
        if (self->work.number != number)
            co_return;
        if (!saved) {
            flowLog.error("The account was not stored: " + saved.error().message);
            self->failToStore(accountNotSavedProblem(saved.error()));
            co_return;
        }
        self->showNext();
    }

    // Preferences.

    void setSettings(const AppSettings& given)
    {
        if (!shown)
            return;
        AppSettings wanted = merged(state.settings, given);
        if (!glucoseUnits(wanted.measurementUnit))
            return;
        if (wanted.measurementUnit != state.settings.measurementUnit)
            wanted = snapped(std::move(wanted));
        else if (!hasOfferedThresholds(wanted))
            return;
        if (wanted == state.settings)
            return;
        state.settings = std::move(wanted);
        state.problem.reset();
        update();
    }

    void leaveSettings()
    {
        startWork([](Self self, std::uint64_t number) { return saveSettings(self, number); });
        update();
    }

    static asio::awaitable<void> saveSettings(Self self, std::uint64_t number)
    {
        if (self->state.step == Step::alerts && self->state.settings.alertsEnabled &&
            self->state.authorization == NotificationAuthorizationState::notDetermined) {
            auto request = self->services.alertDelivery.requestAuthorizationIfNeeded();
            (void)co_await guarded(runOnExecutor(self->services.engine, std::move(request)), false);
            if (self->work.number != number)
                co_return;
        }
        AppSettings wanted = self->state.settings;
        if (self->state.step == Step::login)
            wanted.startAtLogin = self->state.startsAtLogin;
        auto saving = self->services.configuration.changeSettings(self->basis, std::move(wanted));
        const Saved saved = co_await guarded(std::move(saving), Saved{std::unexpected{brokenSave()}});
        if (self->work.number != number)
            co_return;
        if (!saved) {
            flowLog.error("The settings were not stored: " + saved.error().message);
            self->failToStore(
                {.title = "The settings could not be saved",
                 .message = saved.error().message,
                 .causes = {"The disk is full.", "The folder of the settings cannot be written to."},
                 .remedy = "Make room or mend the folder's permissions, then try again."});
            co_return;
        }
        self->showNext();
    }

    // Alerts.

    void look()
    {
        start(looking, [](Self self, std::uint64_t number) { return lookAtAlerts(self, number); });
    }

    static asio::awaitable<void> lookAtAlerts(Self self, std::uint64_t number)
    {
        auto asking = self->services.alertDelivery.authorizationStatus();
        const auto known = self->state.authorization.value_or(NotificationAuthorizationState::notDetermined);
        const auto authorization =
            co_await guarded(runOnExecutor(self->services.engine, std::move(asking)), known);
        if (self->looking.number != number)
            co_return;
        self->state.authorization = authorization;
        self->update();
        const auto path = co_await guarded(findAlertPath(self), std::optional<AlertPath>{});
        if (self->looking.number != number || !path)
            co_return;
        self->state.alertFindings = desktopFindings(*path, self->services.clock.now());
        self->update();
    }

    static asio::awaitable<std::optional<AlertPath>> findAlertPath(Self self)
    {
        co_return co_await self->services.lookAtAlertPath();
    }

    void sendTestAlert()
    {
        if (!shown || state.step != Step::alerts || state.isSendingTestAlert)
            return;
        state.isSendingTestAlert = true;
        state.testAlertMessage = "Sending test alert";
        state.testAlertAnswer = OnboardingState::TestAlertAnswer::none;
        start(testing, [](Self self, std::uint64_t number) { return testAlert(self, number); });
        update();
    }

    static asio::awaitable<void> testAlert(Self self, std::uint64_t number)
    {
        auto sending = self->services.alertDelivery.sendTestAlert();
        using Result = UserNotificationGlucoseAlertDelivery::TestResult;
        const Result broken{.sent = false, .message = "Test alert could not be sent."};
        const Result result =
            co_await guarded(runOnExecutor(self->services.engine, std::move(sending)), broken);
        if (self->testing.number != number)
            co_return;
        self->state.isSendingTestAlert = false;
        self->state.testAlertMessage = result.message;
        if (result.sent)
            self->state.testAlertAnswer = OnboardingState::TestAlertAnswer::asked;
        self->look();  // Permission may have been given, and a failure has its reasons.
        self->update();
    }

    void answerTestAlert(bool seen)
    {
        using Answer = OnboardingState::TestAlertAnswer;
        if (!shown || state.step != Step::alerts || state.testAlertAnswer == Answer::none)
            return;
        state.testAlertAnswer = seen ? Answer::seen : Answer::notSeen;
        if (!seen)
            look();
        update();
    }

    // Saved history.

    [[nodiscard]] std::optional<HistoryScopeID> scope() const
    {
        const auto& stored = services.configuration.account();
        return stored ? HistoryScopeID::of(*stored) : std::nullopt;
    }

    [[nodiscard]] bool isSavingHistory() const
    {
        const GlucoseHistoryStatus& status = services.history.status();
        return status.scope && status.scope == scope() && status.configuration.isEnabled;
    }

    /// Until the person decides, the choice is what was decided before.
    void takeHistoryStatus()
    {
        if (!hasChosenHistory)
            state.savesHistory = isSavingHistory();
        const GlucoseHistoryStatus& status = services.history.status();
        const bool hasSaved =
            status.scope && status.scope == scope() && status.configuration.hasPreviouslyEnabled;
        state.retentionDays = hasSaved ? status.configuration.retentionDays : OnboardingState{}.retentionDays;
    }

    /// Tells whether an earlier run has switched saving on; nothing is written by that.
    void followHistory()
    {
        const auto wanted = scope();
        if (followed != wanted && services.history.status().scope != wanted)
            services.history.follow(wanted);
        if (std::exchange(followed, wanted) != wanted)
            hasBegunSaving = false;
        takeHistoryStatus();
    }

    void leaveHistory()
    {
        followHistory();  // Another process may have changed the account meanwhile.
        startWork([](Self self, std::uint64_t number) { return changeHistory(self, number); });
        update();
    }

    static asio::awaitable<void> changeHistory(Self self, std::uint64_t number)
    {
        HistoryCoordinator& history = self->services.history;
        const bool saves = self->state.savesHistory;
        using Changed = HistoryCoordinator::Changed;
        Changed changed{};
        const Changed broken{std::unexpected{GlucoseHistoryError::storageFailure}};
        if (saves) {
            self->hasBegunSaving = true;
            changed =
                co_await guarded(history.enable(self->state.retentionDays, currentConsentVersion), broken);
        } else if (self->scope()) {
            // Whatever the status says: what was begun before may still be under way.
            changed = co_await guarded(history.pause(), broken);
        }
        if (self->work.number != number)
            co_return;
        // Where nothing is saved and nothing was to be, a fault of saved history holds up nobody.
        if (!changed && (saves || self->hasBegunSaving || self->isSavingHistory())) {
            SignInProblem problem{
                .title = saves ? "Saving could not be switched on" : "Saving could not be switched off",
                .message = std::string{description(changed.error())},
                .causes = {"The disk is full, or the folder of saved readings cannot be written to."},
                .remedy = saves ? "Try again, or go on without saving: it can be switched on later."
                                : "Try again."};
            if (self->services.secretsFile.empty())
                problem.causes.insert(problem.causes.begin(), "The keyring is locked, or none is running.");
            self->failToStore(std::move(problem));
            co_return;
        }
        self->hasChosenHistory = false;
        self->showNext();
    }

    // Start at login.

    void lookAtLoginItem() { startLogin(std::nullopt); }

    /// The last one of several wishes is what remains: the item takes them one after the other.
    void setStartsAtLogin(bool starts)
    {
        if (!shown || state.step != Step::login)
            return;
        startLogin(starts);
        update();
    }

    void startLogin(std::optional<bool> wanted)
    {
        startWork(
            [wanted](Self self, std::uint64_t number) { return changeLoginItem(self, number, wanted); });
    }

    static asio::awaitable<void> changeLoginItem(Self self, std::uint64_t number, std::optional<bool> wanted)
    {
        const LoginItemStatus status = co_await askLoginItem(self, wanted);
        if (self->work.number != number)
            co_return;
        self->state.isBusy = false;
        self->showLoginItem(status);
    }

    static asio::awaitable<void> lookAtLoginItem(Self self, std::uint64_t number)
    {
        const LoginItemStatus status = co_await askLoginItem(self, std::nullopt);
        if (self->looking.number == number && !self->state.isBusy)
            self->showLoginItem(status);
    }

    /// What is so, after what is wanted.
    static asio::awaitable<LoginItemStatus> askLoginItem(Self self, std::optional<bool> wanted)
    {
        auto call = [item = self->services.loginItem, wanted] {
            std::expected<void, std::string> changed{};
            if (wanted)
                changed = item->setEnabled(*wanted);
            LoginItemStatus status = item->status();
            if (!changed)
                status.problem = changed.error();
            return status;
        };
        const LoginItemStatus broken{.isEnabled = self->state.startsAtLogin,
                                     .problem = "The list of programs that start at login gives no answer."};
        co_return co_await guarded(runOnWorker(self->loginStrand, std::move(call)), broken);
    }

    void showLoginItem(const LoginItemStatus& status)
    {
        state.startsAtLogin = status.isEnabled;
        state.loginItemProblem = status.problem;
        update();
    }

    void leaveLogin()
    {
        if (services.configuration.settings().startAtLogin == state.startsAtLogin)
            showNext();
        else
            leaveSettings();
    }

    // The end.

    void finish()
    {
        if (!hasAcceptedCurrentTerms(services.defaults)) {
            state.termsAccepted = false;
            show(Step::terms);
            return;
        }
        if (!services.configuration.account()) {  // Another process has signed out.
            account.reset();
            show(Step::account);
            return;
        }
        finished = true;
        services.defaults.set(onboardingCompletedKey, true);
        services.defaults.set(accountConfirmedAtKey, services.clock.now());
        services.defaults.remove(onboardingStepKey);
        update();
        // The last thing: it may close or destroy what called.
        if (const auto tell = services.finished)
            tell();
    }
};

OnboardingFlow::OnboardingFlow(Services services) : impl_{std::make_shared<Impl>(std::move(services))}
{
    impl_->observeServices();
}

OnboardingFlow::~OnboardingFlow() { impl_->end(); }

const OnboardingState& OnboardingFlow::state() const { return impl_->state; }

std::shared_ptr<void> OnboardingFlow::observe(std::function<void()> observer)
{
    auto token = std::make_shared<std::function<void()>>(std::move(observer));
    impl_->observers.push_back(token);
    return token;
}

void OnboardingFlow::begin() { impl_->begin(); }
void OnboardingFlow::close() { impl_->close(); }
void OnboardingFlow::goBack() { impl_->goBack(); }

void OnboardingFlow::goForward()
{
    const auto kept = impl_;  // Finishing may destroy the flow.
    kept->goForward();
}

void OnboardingFlow::setTermsAccepted(bool accepted)
{
    if (!impl_->shown || impl_->state.step != Step::terms)
        return;
    impl_->state.termsAccepted = accepted;
    impl_->update();
}

void OnboardingFlow::setAccount(GlucoseAccountConfiguration account)
{
    impl_->setAccount(std::move(account));
}
void OnboardingFlow::choosePerson(std::string patientID) { impl_->choosePerson(std::move(patientID)); }
void OnboardingFlow::tryAgain() { impl_->tryAgain(); }
void OnboardingFlow::setSettings(AppSettings settings) { impl_->setSettings(settings); }
void OnboardingFlow::sendTestAlert() { impl_->sendTestAlert(); }
void OnboardingFlow::answerTestAlert(bool seen) { impl_->answerTestAlert(seen); }

void OnboardingFlow::setSavesHistory(bool saves)
{
    if (!impl_->shown || impl_->state.step != Step::history || impl_->state.isBusy)
        return;
    impl_->state.savesHistory = saves;
    impl_->hasChosenHistory = true;
    impl_->state.problem.reset();
    impl_->update();
}

void OnboardingFlow::setStartsAtLogin(bool starts) { impl_->setStartsAtLogin(starts); }

}  // namespace tidewell
