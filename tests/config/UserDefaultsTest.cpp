#include "config/UserDefaults.h"

#include <limits>
#include <thread>

#include "config/ConfigTesting.h"

namespace tidewell {
namespace {

class UserDefaultsTest : public testing::Test {
protected:
    UserDefaults loaded() const { return UserDefaults{file}; }

    TemporaryFolder folder;
    std::filesystem::path file = folder / "state/defaults.json";
};

TEST_F(UserDefaultsTest, valuesOutliveTheProcess)
{
    const Date moment = dateFromUnix(1772438400.125);
    {
        UserDefaults defaults{file};
        EXPECT_FALSE(defaults.load());
        EXPECT_FALSE(defaults.save()) << "nothing to write";
        EXPECT_TRUE(contentOf(folder).empty());
        defaults.set("flag", true);
        defaults.set("moment", moment);
        defaults.set("text", "words");
        defaults.set("gone", true);
        defaults.remove("gone");
        EXPECT_FALSE(defaults.save());
    }
    UserDefaults defaults{file};
    EXPECT_FALSE(defaults.load());
    EXPECT_TRUE(defaults.boolean("flag"));
    EXPECT_EQ(defaults.date("moment"), moment);
    EXPECT_EQ(defaults.text("text"), "words");
    EXPECT_EQ(defaults.text("gone"), std::nullopt);

    // A value of another type counts as absent, and so does a moment that is none.
    EXPECT_FALSE(defaults.boolean("text"));
    EXPECT_EQ(defaults.date("text"), std::nullopt);
    EXPECT_EQ(defaults.date("flag"), std::nullopt);
    EXPECT_EQ(defaults.text("moment"), std::nullopt);
    defaults.set("moment", dateFromUnix(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(defaults.date("moment"), std::nullopt);
}

TEST_F(UserDefaultsTest, theHandlerHearsOfChangesOnly)
{
    UserDefaults defaults;
    int changes = 0;
    defaults.setChangeHandler([&] {
        ++changes;
        (void)defaults.boolean("flag");  // No lock is held.
    });
    defaults.set("flag", true);
    defaults.set("flag", true);
    defaults.remove("other");
    EXPECT_EQ(changes, 1);
    defaults.set("flag", false);
    defaults.remove("flag");
    EXPECT_EQ(changes, 3);
    EXPECT_FALSE(defaults.save()) << "in memory only";
}

TEST_F(UserDefaultsTest, aDamagedFileIsKeptUnderAnotherName)
{
    int expectedNames = 0;
    for (const std::string bytes : {"", "[]", "{\"a\":1", "{\"a\":1}}", "{\"a\":1,\"a\":2}", "\xff"}) {
        writeBytes(file, bytes);
        UserDefaults defaults{file};
        EXPECT_EQ(defaults.load(), std::errc::bad_message) << bytes;
        EXPECT_EQ(bytesOf(file), bytes);
        defaults.set("flag", true);
        const auto before = contentOf(folder);
        {
            const FullDisk full;
            EXPECT_TRUE(defaults.save());
        }
        EXPECT_EQ(contentOf(folder), before) << "a failed save leaves no second name behind";
        EXPECT_FALSE(defaults.save());
        const auto name = ++expectedNames == 1
                              ? "state/defaults.json.unreadable"
                              : fmt::format("state/defaults.json-{}.unreadable", expectedNames);
        EXPECT_EQ(contentOf(folder).at(name), bytes);
        UserDefaults again{file};
        EXPECT_FALSE(again.load());
        EXPECT_TRUE(again.boolean("flag"));
        writeBytes(file, bytes);
        EXPECT_TRUE(again.load());
        EXPECT_TRUE(again.boolean("flag")) << "a file that became unreadable makes nobody forget";
        std::filesystem::remove(file);
    }
}

TEST_F(UserDefaultsTest, aSaveThatFailsIsTriedAgain)
{
    std::filesystem::create_directories(file);  // A folder in the place of the file.
    UserDefaults defaults{file};
    EXPECT_TRUE(defaults.load());
    defaults.set("flag", true);
    EXPECT_TRUE(defaults.save());
    EXPECT_TRUE(defaults.trySave());
    EXPECT_TRUE(std::filesystem::is_directory(file));
    std::filesystem::remove(file);
    EXPECT_FALSE(defaults.trySave());
    EXPECT_TRUE(std::filesystem::is_empty(file.parent_path())) << "looking leaves nothing behind";
    EXPECT_FALSE(defaults.save());
    EXPECT_NE(bytesOf(file).find("flag"), std::string::npos);
}

TEST_F(UserDefaultsTest, twoProcessesKeepEachOthersKeys)
{
    writeBytes(file, R"({"shared":1.5,"future":{"x":[1]},"removed":true})");
    UserDefaults one{file};
    UserDefaults two{file};
    EXPECT_FALSE(one.load());
    EXPECT_FALSE(two.load());
    one.set("one", true);
    one.remove("removed");
    two.set("two", true);
    EXPECT_FALSE(two.load());
    EXPECT_TRUE(two.boolean("two")) << "a load forgets what was set and not saved yet";
    EXPECT_FALSE(one.save());
    EXPECT_FALSE(two.save());
    EXPECT_TRUE(two.boolean("one"));
    EXPECT_FALSE(two.boolean("removed"));
    const auto values = parseUserDefaults(bytesOf(file));
    ASSERT_TRUE(values);
    EXPECT_EQ(
        *values,
        (json::object{{"shared", 1.5}, {"future", {{"x", json::array{1}}}}, {"one", true}, {"two", true}}));
}

TEST_F(UserDefaultsTest, isReadAndSetFromAnyThreadWhileItIsSaved)
{
    UserDefaults defaults{file};
    std::thread other{[&] {
        for (int i = 0; i < 500; ++i)
            defaults.set("other", fmt::format("{}", i));
    }};
    for (int i = 0; i < 20; ++i) {
        defaults.set("moment", dateFromUnix(i));
        EXPECT_FALSE(defaults.save());
        EXPECT_EQ(defaults.date("moment"), dateFromUnix(i));
    }
    other.join();
    EXPECT_EQ(defaults.text("other"), "499") << "a value set during a save is not lost";
    EXPECT_FALSE(defaults.save());
    UserDefaults again{file};
    EXPECT_FALSE(again.load());
    EXPECT_EQ(again.text("other"), "499");
}

}  // namespace
}  // namespace tidewell
