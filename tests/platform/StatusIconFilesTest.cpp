#include "platform/linux/StatusIconFiles.h"

#include <gtest/gtest.h>
#include <fstream>

#include "StatusItemFixture.h"

namespace tidewell {
namespace {

using State = StatusIconFiles::State;

class StatusIconFilesTest : public testing::Test {
protected:
    static QImage picture(int number)
    {
        QImage made{4, 4, QImage::Format_ARGB32};
        made.fill(static_cast<uint>(number));
        return made;
    }
    /// Lets the write that goes on end.
    void finish()
    {
        auto [work, done] = std::exchange(running, {});
        work();
        done();
    }
    [[nodiscard]] std::ptrdiff_t count() const
    {
        return std::distance(std::filesystem::directory_iterator{folder}, {});
    }

    TemporaryFolder temporary{};
    std::filesystem::path folder = temporary.path() / "icons";
    std::pair<std::function<void()>, std::function<void()>> running{};
    int begun = 0;
    int changes = 0;
    StatusIconFiles files{folder, [this] { ++changes; },
                          [this](std::function<void()> work, std::function<void()> done) {
                              ++begun;
                              running = {std::move(work), std::move(done)};
                              return std::make_shared<int>();
                          }};
};

TEST_F(StatusIconFilesTest, aWriteThatHangsKeepsNobodyWaitingAndIsTheOnlyOne)
{
    EXPECT_EQ(files.look(picture(1), 0ms), State::soon);
    EXPECT_EQ(files.look(picture(1), 999ms), State::soon);
    for (int i = 1; i < 100; ++i)
        EXPECT_EQ(files.look(picture(i), i * 1000ms), State::missing);
    EXPECT_EQ(begun, 1);
    finish();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(files.look(picture(1), 100s), State::ready);
    EXPECT_FALSE(QImage{QString::fromStdString(files.file(picture(1)).string())}.isNull());
    EXPECT_EQ(files.look(picture(2), 100s), State::soon);
}

TEST_F(StatusIconFilesTest, aFailedWriteIsTriedAgainNotTooSoon)
{
    std::ofstream{folder} << "in the way";
    EXPECT_EQ(files.look(picture(1), 0ms), State::soon);
    finish();
    EXPECT_EQ(files.look(picture(1), 29s), State::missing);
    EXPECT_EQ(files.look(picture(2), 29s), State::missing);
    EXPECT_EQ(begun, 1);
    std::filesystem::remove(folder);
    EXPECT_EQ(files.look(picture(1), 30s), State::soon);
    finish();
    EXPECT_EQ(files.look(picture(1), 30s), State::ready);
    EXPECT_EQ(files.look(picture(2), 30s), State::soon) << "the failure is over";
}

TEST_F(StatusIconFilesTest, theFolderStaysSmallAndEachReadyFileIsThere)
{
    std::filesystem::create_directory(folder);
    std::ofstream{folder / "somebody-elses.png"} << "stays";
    for (int i = 0; i < 300; ++i) {
        std::ofstream{folder / ("icon-earlier" + std::to_string(i) + ".png")} << "old";
        std::filesystem::last_write_time(folder / ("icon-earlier" + std::to_string(i) + ".png"),
                                         std::filesystem::file_time_type::clock::now() - 24h);
    }
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(files.look(picture(i), 0ms), State::soon);
        finish();
        EXPECT_EQ(count(), static_cast<std::ptrdiff_t>(StatusIconFiles::kept) + 1);
        for (int earlier = std::max(0, i - 9); earlier <= i; ++earlier) {
            EXPECT_EQ(files.look(picture(earlier), 0ms), State::ready);
            EXPECT_TRUE(std::filesystem::exists(files.file(picture(earlier))));
        }
    }
    EXPECT_EQ(files.look(picture(0), 0ms), State::soon) << "written anew";
    EXPECT_TRUE(std::filesystem::exists(folder / "somebody-elses.png"));
}

}  // namespace
}  // namespace tidewell
