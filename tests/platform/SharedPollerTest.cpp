#include "platform/linux/SharedPoller.h"

#include <QCoreApplication>
#include <QDBusMetaType>
#include <QDBusVirtualObject>

#include "TestBus.h"
#include "platform/linux/QtMainLoop.h"
#include "testing/FakeClock.h"

namespace tidewell {

/// Another process with the name: answers as the test says, or not at all.
class FakeOwner final : public QDBusVirtualObject {
    Q_OBJECT
public:
    FakeOwner(TestBus& bus, uint flags) : connection{bus.connect()}
    {
        qDBusRegisterMetaType<SharedReading>();
        qDBusRegisterMetaType<QList<SharedReading>>();
        connection.registerVirtualObject(sharedPollerPath, this);
        QDBusMessage call = QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                           "org.freedesktop.DBus", "RequestName");
        call << sharedPollerName << flags;
        EXPECT_EQ(callAndWait(connection, call).arguments().value(0).toUInt(), 1U);
    }
    ~FakeOwner() override { QDBusConnection::disconnectFromBus(connection.name()); }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override
    {
        calls.push_back(message.member().toStdString());
        if (hangs)
            return true;
        if (message.member() == "GetAll")
            return connection.send(message.createReply(QVariant{properties}));
        if (message.member() == "Readings")
            since.push_back(message.arguments().value(0).toLongLong());
        if (message.member() == "Readings")
            return connection.send(message.createReply(readings));
        return false;
    }

    /// Sends a change, as told or with the next revision.
    void change(QVariantMap changed, std::optional<uint> revision = {})
    {
        changed["Revision"] = revision.value_or(properties["Revision"].toUInt() + 1);
        properties.insert(changed);
        QDBusMessage signal = QDBusMessage::createSignal(sharedPollerPath, "org.freedesktop.DBus.Properties",
                                                         "PropertiesChanged");
        signal.setArguments({sharedPollerInterface, changed, QStringList{}});
        connection.send(signal);
    }

    QDBusConnection connection;
    QVariantMap properties{};
    QVariant readings = QVariant::fromValue(QList<SharedReading>{});
    bool hangs = false;
    std::vector<std::string> calls{};
    std::vector<qlonglong> since{};  ///< From when on readings were asked for.
};

namespace {

constexpr uint replaceable = 1;

GlucoseReading reading(Date date, double mgdL = 120)
{
    return makeReading(mgdL, "Flat", date, Seconds{300}, GlucoseProvider::dexcom);
}

class SharedPollerTest : public testing::Test {
protected:
    /// One process that takes part.
    struct Member {
        std::unique_ptr<SharedPoller> poller{};
        std::vector<std::string> roles{};  ///< "polls", "alone" or "follows", as told.
        std::vector<FollowedState> heard{};
        StatusBarState state{};
        int refreshes = 0;
        std::vector<int> snoozes{};  ///< Minutes; 0 for an end.

        [[nodiscard]] std::string role() const { return roles.empty() ? "undecided" : roles.back(); }
        void publish() { poller->publish(state, {}); }
    };

    Member& join(SharingKind kind = SharingKind::watcher, std::string account = "ada",
                 std::string profile = "home", bool canPoll = true)
    {
        Member& member = *members.emplace_back(std::make_unique<Member>());
        member.poller = std::make_unique<SharedPoller>(
            main.executor(), clock, random,
            SharedPollerOptions{.kind = kind, .profile = std::move(profile), .busAddress = bus.address()},
            SharedPoller::Handlers{
                .roleDidChange =
                    [&member](PollingRole role, bool alone) {
                        member.roles.emplace_back(role == PollingRole::follows ? "follows"
                                                  : alone                      ? "alone"
                                                                               : "polls");
                    },
                .heard = [&member](const FollowedState& state) { member.heard.push_back(state); },
                .refresh = [&member] { ++member.refreshes; },
                .snooze =
                    [&member](std::chrono::minutes length) {
                        member.snoozes.push_back(static_cast<int>(length.count()));
                    },
                .resume = [&member] { member.snoozes.push_back(0); }});
        member.poller->start(std::move(account), canPoll);
        return member;
    }
    Member& joinAs(const std::string& role, SharingKind kind = SharingKind::watcher)
    {
        Member& member = join(kind);
        EXPECT_TRUE(becomes(member, role));
        return member;
    }
    static bool becomes(const Member& member, const std::string& role)
    {
        return runUntil([&] { return member.role() == role; });
    }
    static void turns()
    {
        for (int turn = 0; turn < 8; ++turn)
            QCoreApplication::processEvents();
    }
    /// Time passes, and whoever wakes has their turn.
    void pass(Seconds time)
    {
        turns();
        clock.advance(time);
        turns();
    }
    [[nodiscard]] long polling() const
    {
        return std::ranges::count_if(
            members, [](const auto& member) { return member->poller && member->role() != "follows"; });
    }

    QDBusMessage call(const QString& method, const QVariantList& arguments = {},
                      const QString& interface = sharedPollerInterface)
    {
        QDBusMessage message =
            QDBusMessage::createMethodCall(sharedPollerName, sharedPollerPath, interface, method);
        message.setArguments(arguments);
        return callAndWait(client, message);
    }
    QVariantMap properties()
    {
        return qdbus_cast<QVariantMap>(
            call("GetAll", {sharedPollerInterface}, "org.freedesktop.DBus.Properties").arguments().value(0));
    }
    /// What was asked of the owner before has been answered, so that time may pass.
    void settle()
    {
        for (int round = 0; round < 3; ++round)
            (void)properties();
    }
    /// What a good owner of the same account tells.
    QVariantMap good() const
    {
        QVariantMap told = sharedProperties({}, {.nextPollDate = clock.now() + Seconds{300}});
        told["Profile"] = "home";
        told["Account"] = "ada";
        told["Revision"] = 7U;
        told["ReadingsRevision"] = 7U;
        return told;
    }

    TestBus bus{};
    QtMainLoop main{};
    asio::io_context io{};
    FakeClock clock{io, dateFromUnix(1'772'438'000)};
    SeededRandom random{3};
    QDBusConnection client = bus.connect();
    std::vector<std::unique_ptr<Member>> members{};
};

TEST_F(SharedPollerTest, oneOfManyPollsAndTheOthersHearWhatItShows)
{
    Member& owner = joinAs("polls");
    std::vector<Member*> followers;
    for (int i = 0; i < 3; ++i)
        followers.push_back(&joinAs("follows"));
    const Date now = clock.now();

    // A reading, a corrected one, one that falls out of the day, a problem, an activity, and all of it gone.
    std::vector<StatusBarState> story(6);
    story[0].glucoseHistory = {reading(now - 24h), reading(now - 5min), reading(now, 121.5)};
    story[0].lastUpdateAt = now;
    story[1].glucoseHistory = {reading(now - 24h), reading(now - 5min, 118), reading(now, 121.5)};
    story[2].glucoseHistory = {reading(now - 5min, 118), reading(now, 121.5), reading(now + 2min)};
    story[3] = story[2];
    story[3].currentError = ErrorInfo{"Title", "Message\x1b[31m", "Remedy", true, true};
    story[3].nextRetryAt = now + 30s;
    story[4] = story[2];
    story[4].activity = StatusBarActivity::authenticating;
    for (const StatusBarState& state : story) {
        owner.state = state;
        owner.publish();
        for (const Member* follower : followers) {
            ASSERT_TRUE(runUntil([&] {
                return !follower->heard.empty() &&
                       follower->heard.back().glucoseHistory == state.glucoseHistory &&
                       follower->heard.back().activity == state.activity &&
                       follower->heard.back().currentError.has_value() == state.currentError.has_value();
            }));
            EXPECT_EQ(follower->heard.back().nextRetryAt, state.nextRetryAt);
            EXPECT_EQ(follower->heard.back().lastUpdateAt, state.lastUpdateAt);
        }
    }
    const auto& heard = followers[0]->heard;
    const auto problem = std::ranges::find_if(heard, [](const auto& state) { return !!state.currentError; });
    EXPECT_EQ(*problem->currentError, (ErrorInfo{"Title", "Message [31m", "Remedy", true, true}));

    // The same again is no change, and nobody is told.
    const uint revision = properties()["Revision"].toUInt();
    owner.publish();
    QCoreApplication::processEvents();
    EXPECT_EQ(properties()["Revision"].toUInt(), revision);
    EXPECT_EQ(polling(), 1);
}

TEST_F(SharedPollerTest, theNextInTheQueueTakesOverAndTheApplicationTakesOverFromAll)
{
    joinAs("polls");
    Member& second = joinAs("follows");
    Member& third = joinAs("follows");
    second.state.glucoseHistory = third.state.glucoseHistory = {reading(clock.now())};
    second.publish();
    third.publish();
    members[0]->poller.reset();
    ASSERT_TRUE(becomes(second, "polls"));
    ASSERT_TRUE(runUntil([&] { return !third.heard.empty() && !third.heard.back().glucoseHistory.empty(); }));
    EXPECT_EQ(third.roles, std::vector<std::string>{"follows"});

    Member& application = joinAs("polls", SharingKind::application);
    EXPECT_EQ(application.roles.size(), 1U);
    ASSERT_EQ(application.heard.size(), 1U) << "what it takes over comes before its own polling";
    EXPECT_EQ(application.heard[0].glucoseHistory, second.state.glucoseHistory);
    ASSERT_TRUE(becomes(second, "follows"));
    EXPECT_EQ(polling(), 1);
    application.poller.reset();
    ASSERT_TRUE(runUntil([&] { return second.role() == "polls" || third.role() == "polls"; }));
    EXPECT_EQ(polling(), 1);
}

TEST_F(SharedPollerTest, whoCannotPollLeavesTheNameToThoseWhoCan)
{
    Member& locked = join(SharingKind::watcher, "ada", "home", false);
    ASSERT_TRUE(becomes(locked, "polls")) << "it has to say what is wrong";
    Member& owner = joinAs("polls");
    ASSERT_TRUE(becomes(locked, "follows"));
    locked.poller->setAccount("ada", true);
    owner.poller->setAccount("ada", false);
    ASSERT_TRUE(becomes(locked, "polls"));
    EXPECT_TRUE(becomes(owner, "follows"));
}

TEST_F(SharedPollerTest, whoCannotPollSaysWhyWhenTheOwnerHangs)
{
    FakeOwner owner{bus, 0};
    owner.properties = good();
    Member& locked = join(SharingKind::watcher, "ada", "home", false);
    ASSERT_TRUE(becomes(locked, "follows"));
    owner.hangs = true;
    owner.calls.clear();
    pass(Seconds{320});
    ASSERT_TRUE(runUntil([&] { return !owner.calls.empty(); }));
    pass(Seconds{5.1});
    EXPECT_TRUE(becomes(locked, "polls"));
    owner.hangs = false;
    owner.change({{"StatusTitle", "120 →"}});
    EXPECT_TRUE(becomes(locked, "follows"));
}

TEST_F(SharedPollerTest, onlyTheBusSaysWhoOwnsTheName)
{
    joinAs("polls");
    Member& follower = joinAs("follows");
    const auto ownerIs = [&](const Member& member) {
        return properties()["StatusTitle"].toString().toStdString() == member.state.statusTitle;
    };
    members[0]->state.statusTitle = "first";
    members[0]->publish();
    ASSERT_TRUE(runUntil([&] { return ownerIs(*members[0]); }));
    for (const QString& forged : {QString{}, client.baseService()}) {
        forgeOwner(client, sharedPollerName, forged);
        settle();
        turns();
        EXPECT_EQ(members[0]->roles, std::vector<std::string>{"polls"});
        EXPECT_EQ(follower.roles, std::vector<std::string>{"follows"});
    }
    // Both still tell and hear.
    const auto heard = follower.heard.size();
    members[0]->state.statusTitle = "again";
    members[0]->publish();
    EXPECT_TRUE(runUntil([&] { return follower.heard.size() > heard; }));
}

TEST_F(SharedPollerTest, otherFoldersShareNothingAndAnotherAccountOnlyOnceBothAgree)
{
    Member& owner = joinAs("polls");
    EXPECT_TRUE(becomes(join(SharingKind::watcher, "ada", "elsewhere"), "polls"));
    EXPECT_TRUE(becomes(join(SharingKind::asker, "grace"), "polls"));
    Member& follower = joinAs("follows");
    const auto told = follower.heard.size();

    // Both are about to read the same new configuration.
    follower.poller->setAccount("grace", true);
    owner.state.glucoseHistory = {reading(clock.now())};
    owner.publish();
    settle();
    pass(Seconds{9});
    EXPECT_EQ(follower.role(), "follows");
    EXPECT_EQ(follower.heard.size(), told) << "another person's readings";
    owner.poller->setAccount("grace", true);
    ASSERT_TRUE(runUntil([&] { return follower.heard.size() > told; }));
    // One of them does not.
    owner.poller->setAccount("ada", true);
    ASSERT_TRUE(runUntil([&] { return properties()["Account"] == "ada"; }));
    ASSERT_TRUE(runUntil([&] {
        settle();
        pass(Seconds{2});
        return follower.role() == "polls";
    }));
    follower.poller->setAccount("ada", true);
    EXPECT_TRUE(becomes(follower, "follows"));
}

TEST_F(SharedPollerTest, anOwnerThatHangsIsReplacedOrNotFollowedUntilItSpeaks)
{
    for (const uint flags : {replaceable, 0U}) {
        SCOPED_TRACE(flags);
        FakeOwner owner{bus, flags};
        owner.properties = good();
        Member& watcher = joinAs("follows");
        owner.hangs = true;
        owner.calls.clear();
        pass(Seconds{300});
        EXPECT_TRUE(owner.calls.empty()) << "it is not late yet";
        pass(Seconds{20});
        ASSERT_TRUE(runUntil([&] { return !owner.calls.empty(); }));
        EXPECT_EQ(watcher.role(), "follows");
        pass(Seconds{5.1});
        if (flags == replaceable) {
            EXPECT_TRUE(becomes(watcher, "polls"));
        } else {
            ASSERT_TRUE(becomes(watcher, "alone"));
            owner.hangs = false;
            owner.change({{"StatusTitle", "120 →"}});
            ASSERT_TRUE(becomes(watcher, "follows"));
            // And by itself, when it answers again without saying anything.
            owner.hangs = true;
            pass(Seconds{30});
            pass(Seconds{5.1});
            ASSERT_TRUE(becomes(watcher, "alone"));
            owner.hangs = false;
            pass(Seconds{63});
            EXPECT_TRUE(becomes(watcher, "follows"));
        }
        watcher.poller.reset();
    }
}

TEST_F(SharedPollerTest, nobodyWaitsForAnOwnerOrABusThatHangs)
{
    FakeOwner owner{bus, 0};
    owner.hangs = true;
    std::vector<Member*> all{&join(SharingKind::asker), &join(), &join(SharingKind::application)};
    ASSERT_TRUE(runUntil([&] { return owner.calls.size() >= 3; }));
    pass(Seconds{2});
    for (const Member* member : all)
        EXPECT_TRUE(becomes(*member, "polls"));
    bus.freeze();
    Member& late = join();
    pass(Seconds{2});
    EXPECT_TRUE(becomes(late, "polls"));
    bus.thaw();
}

TEST_F(SharedPollerTest, everybodyPollsWithoutABusAndOneWhenItIsBack)
{
    joinAs("polls");
    joinAs("follows");
    bus.end();
    ASSERT_TRUE(runUntil([&] { return polling() == 2; }));
    EXPECT_TRUE(becomes(join(SharingKind::asker), "polls"));
    members.back()->poller.reset();
    bus.begin();
    ASSERT_TRUE(runUntil([&] {
        pass(Seconds{10});
        return polling() == 1;
    }));
}

TEST_F(SharedPollerTest, whatCannotBeTrueIsNotTaken)
{
    FakeOwner owner{bus, 0};
    owner.properties = good();
    owner.properties["Activity"] = 5;
    owner.properties["ProblemTitle"] = QString{5000, u'x'};
    owner.properties["ProblemMessage"] = "line\nbreak\a";
    owner.properties["NextPollTime"] = std::numeric_limits<qlonglong>::max();
    owner.properties["RetryNotBefore"] = qlonglong{-5};
    owner.properties["LastUpdateTime"] = static_cast<qlonglong>(unixSeconds(clock.now()) + 3600) * 1000;
    owner.properties["RefusedSignIns"] = std::numeric_limits<uint>::max();
    for (int i = 0; i < 1000; ++i)
        owner.properties["Invented" + QString::number(i)] = i;
    const auto now = static_cast<qlonglong>(unixSeconds(clock.now()) * 1000);
    QList<SharedReading> readings{{now, 120, "Flat", 300, "dexcom"},
                                  {now - 300'000, 5, "Flat", 300, "dexcom"},
                                  {now - 600'000, 5000, "Flat", 300, "dexcom"},
                                  {now - 900'000, std::nan(""), "Flat", 300, "dexcom"},
                                  {now + 3'600'000, 40, "Flat", 300, "dexcom"},
                                  {-1, 120, "Flat", 300, "dexcom"},
                                  {now - 1'200'000, 120, QString{100, u'F'}, 300, "dexcom"},
                                  {now - 1'500'000, 120, "Flat", 0, "dexcom"},
                                  {now - 1'800'000, 120, "Flat", 300, "elsewhere"}};
    owner.readings = QVariant::fromValue(readings);
    Member& follower = joinAs("follows");
    ASSERT_TRUE(runUntil([&] { return follower.heard.size() == 1; }));
    const FollowedState heard = follower.heard[0];
    EXPECT_EQ(heard.glucoseHistory, std::vector{reading(clock.now())});
    EXPECT_FALSE(heard.activity);
    EXPECT_EQ(heard.currentError->title.size(), 500U);
    EXPECT_EQ(heard.currentError->message, "line break ");
    EXPECT_EQ(heard.progress, (PollingProgress{.refusedSignIns = 100}));
    EXPECT_FALSE(heard.lastUpdateAt);

    // Somebody else's signal; one of an earlier revision; properties of wrong types; one that was missed.
    QDBusMessage forged =
        QDBusMessage::createSignal(sharedPollerPath, "org.freedesktop.DBus.Properties", "PropertiesChanged");
    forged.setArguments(
        {sharedPollerInterface, QVariantMap{{"Revision", 8U}, {"ProblemTitle", "Forged"}}, QStringList{}});
    client.send(forged);
    owner.change({{"ProblemTitle", "Old"}}, 6U);
    owner.change({{"ProblemTitle", 7}, {"Activity", "refreshing"}}, 8U);
    ASSERT_TRUE(runUntil([&] { return follower.heard.size() == 2; }));
    EXPECT_EQ(follower.heard[1].activity, StatusBarActivity::refreshing);
    EXPECT_EQ(follower.heard[1].currentError->title, heard.currentError->title);
    owner.change({{"ProblemTitle", "Right"}}, 20U);
    ASSERT_TRUE(runUntil([&] { return follower.heard.size() == 3; }));
    EXPECT_EQ(follower.heard[2].currentError->title, "Right");

    // No more than a day holds, and no answer of another form.
    readings.clear();
    for (int i = 0; i < 100'000; ++i)
        readings.append({now - i * 1000, 120, "Flat", 60, "dexcom"});
    owner.readings = QVariant::fromValue(readings);
    owner.change({{"ReadingsRevision", 21U}, {"ReadingsChangedSince", now}}, 21U);
    ASSERT_TRUE(runUntil([&] { return follower.heard.size() == 4; }));
    EXPECT_LE(follower.heard[3].glucoseHistory.size(), mostSharedReadings);
    owner.change({{"ReadingsRevision", 22U}, {"ReadingsChangedSince", std::numeric_limits<qlonglong>::max()}},
                 22U);
    ASSERT_TRUE(runUntil([&] { return follower.heard.size() == 5; }));
    EXPECT_GE(std::ranges::min(owner.since), 0);
    EXPECT_LE(std::ranges::max(owner.since), now);
    owner.readings = QVariant{QStringLiteral("readings")};
    owner.change({{"ReadingsRevision", 23U}, {"ReadingsChangedSince", now}}, 23U);
    EXPECT_TRUE(becomes(follower, "alone"));
    EXPECT_EQ(follower.heard.size(), 5U);
}

TEST_F(SharedPollerTest, callersReadAndAskWithinBounds)
{
    Member& owner = joinAs("polls");
    const Date now = clock.now();
    for (int i = 300; i >= 0; --i)
        owner.state.glucoseHistory.push_back(reading(now - i * Seconds{60}));
    owner.state.presentedReading = owner.state.glucoseHistory.back();
    owner.state.statusTitle = "120 →";
    owner.publish();
    ASSERT_TRUE(runUntil([&] { return properties()["StatusTitle"] == "120 →"; }));
    EXPECT_EQ(properties()["ReadingTime"].toLongLong(), static_cast<qlonglong>(unixSeconds(now) * 1000));
    EXPECT_EQ(properties().size(), 30);
    EXPECT_EQ(
        qdbus_cast<QList<SharedReading>>(
            call("Readings", {static_cast<qlonglong>(unixSeconds(now - 10min) * 1000)}).arguments().value(0))
            .size(),
        11);

    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(call("Refresh").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(owner.refreshes, 1);
    clock.advance(Seconds{5});
    call("Refresh");
    EXPECT_EQ(owner.refreshes, 2);

    struct Case {
        const char* method;
        QVariantList arguments;
        QDBusError::ErrorType refused;  ///< NoError: it is done.
    };
    using enum QDBusError::ErrorType;
    const QString ours = sharedPollerInterface;
    for (const Case& given :
         {Case{"Snooze", {30U}, NoError},
          {"Snooze", {0U}, InvalidArgs},
          {"Snooze", {1441U}, InvalidArgs},
          {"Snooze", {30}, UnknownMethod},
          {"Resume", {}, NoError},
          {"Resume", {1}, UnknownMethod},
          {"Readings", {"all"}, UnknownMethod},
          {"Quit", {}, UnknownMethod},
          {"Get", {ours, "Secret"}, UnknownProperty},
          {"Set", {ours, "StatusTitle", QVariant::fromValue(QDBusVariant{"1"})}, PropertyReadOnly}}) {
        SCOPED_TRACE(given.method);
        const QString method{given.method};
        const bool standard = method == "Get" || method == "Set";
        const QDBusMessage answer =
            call(method, given.arguments, standard ? "org.freedesktop.DBus.Properties" : ours);
        EXPECT_EQ(QDBusError{answer}.type(), given.refused);
    }
    EXPECT_EQ(owner.snoozes, (std::vector{30, 0}));
    const QString described =
        call("Introspect", {}, "org.freedesktop.DBus.Introspectable").arguments().value(0).toString();
    for (const QString& name : properties().keys())
        EXPECT_TRUE(described.contains("\"" + name + "\"")) << name.toStdString();
}

}  // namespace
}  // namespace tidewell

#include "SharedPollerTest.moc"
