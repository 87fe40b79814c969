// What saved history costs: one reading saved, 90 days loaded, and the bytes of a reading on disk.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>

#include "config/MemoryKeychainItemStore.h"
#include "history/GlucoseHistoryAccount.h"
#include "support/FileSystem.h"

namespace tidewell {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t firstDay = 20'680;
constexpr std::int64_t days = 90;

/// The disk's own time depends on the disk, so it is left out of all but one figure.
class WithoutSync final : public FileSystem {
public:
    std::error_code makeFolder(const fs::path& folder) override { return real_.makeFolder(folder); }
    std::expected<FileHandle, std::error_code> createNew(const fs::path& file) override
    {
        return real_.createNew(file);
    }
    std::expected<std::size_t, std::error_code> write(FileHandle file, std::string_view bytes) override
    {
        return real_.write(file, bytes);
    }
    void excludeFromBackup(FileHandle file) override { real_.excludeFromBackup(file); }
    std::error_code sync(FileHandle) override { return {}; }
    std::error_code close(FileHandle file) override { return real_.close(file); }
    std::error_code rename(const fs::path& from, const fs::path& to) override
    {
        return real_.rename(from, to);
    }
    std::error_code syncFolder(const fs::path&) override { return {}; }
    std::expected<std::optional<std::string>, std::error_code> read(const fs::path& file,
                                                                    std::size_t limit) override
    {
        return real_.read(file, limit);
    }
    std::expected<std::vector<std::string>, std::error_code> list(const fs::path& folder) override
    {
        return real_.list(folder);
    }
    std::error_code removeFile(const fs::path& file) override { return real_.removeFile(file); }
    std::error_code removeFolder(const fs::path& folder) override { return real_.removeFolder(folder); }
    std::expected<bool, std::error_code> exists(const fs::path& path) override { return real_.exists(path); }
    std::expected<FileHandle, std::error_code> lock(const fs::path& file) override
    {
        return real_.lock(file);
    }

private:
    SystemFileSystem real_;
};

enum class Disk { included, leftOut };

/// One scope in a temporary folder, with `perDay` readings on each day.
struct SavedScope {
    SavedScope(std::int64_t readingsPerDay, Disk disk)
        : perDay{readingsPerDay},
          files{disk == Disk::included ? std::unique_ptr<FileSystem>{std::make_unique<SystemFileSystem>()}
                                       : std::make_unique<WithoutSync>()}
    {
    }
    SavedScope(const SavedScope&) = delete;
    SavedScope& operator=(const SavedScope&) = delete;
    ~SavedScope()
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    [[nodiscard]] StoredReading reading(std::int64_t day, std::int64_t index) const
    {
        constexpr std::array trends{"Flat", "FortyFiveUp", "SingleDown", "FortyFiveDown"};
        const double second = static_cast<double>(day) * 86'400 +
                              86'400.0 * static_cast<double>(index) / static_cast<double>(perDay) + 0.482;
        const auto trend = static_cast<std::size_t>(index / 7) % trends.size();
        return {
            .reading = makeReading(static_cast<double>(70 + index % 180), trends[trend], dateFromUnix(second),
                                   Seconds{86'400.0 / static_cast<double>(perDay)}, GlucoseProvider::dexcom),
            .fetchedAt = dateFromUnix(second + 11.25)};
    }

    void write(std::int64_t day, std::int64_t count)
    {
        HistoryDay held{.accountScope = scope};
        for (std::int64_t index = 0; index < count; ++index)
            held.readings.push_back(reading(day, index));
        if (!account.writeDay(key, day, held))
            std::abort();
    }

    std::int64_t perDay;
    fs::path folder = [] {
        std::string name = (fs::temp_directory_path() / "tidewell-bench-XXXXXX").string();
        if (!::mkdtemp(name.data()))
            std::abort();
        return fs::path{name};
    }();
    std::unique_ptr<FileSystem> files;
    SystemRandom random{};
    MemoryKeychainItemStore keychain{};
    HistoryScopeID scope = HistoryScopeID::of({.username = "ada"}).value();
    LocalGlucoseHistoryFileAccess access{*files, random};
    GlucoseHistoryAccount account{{.folder = folder / scope.text(),
                                   .scope = scope,
                                   .access = access,
                                   .keychain = keychain,
                                   .random = random}};
    SecretText key = account.loadKey(true).value();
};

/// Into a day of 1,440: the key, the day read and merged, the day written.
void saveOneReading(benchmark::State& state)
{
    SavedScope saved{1440, state.range(0) == 0 ? Disk::leftOut : Disk::included};
    saved.write(firstDay, 1439);
    const StoredReading last = saved.reading(firstDay, 1439);
    for (auto _ : state) {
        const auto key = saved.account.loadKey(false);
        auto day = saved.account.readDay(key.value(), firstDay).value().value();
        if (day.readings.size() == 1440)
            day.readings.pop_back();
        day.readings.push_back(last);
        if (!saved.account.writeDay(key.value(), firstDay, day))
            state.SkipWithError("not saved");
    }
}
BENCHMARK(saveOneReading)->ArgName("disk")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

/// Files in the system's cache.
void load90Days(benchmark::State& state)
{
    SavedScope saved{state.range(0), Disk::leftOut};
    for (std::int64_t day = 0; day < days; ++day)
        saved.write(firstDay + day, saved.perDay);
    std::uintmax_t bytes = 0;
    for (const auto& file : fs::directory_iterator{saved.folder / saved.scope.text()})
        bytes += file.file_size();
    for (auto _ : state) {
        std::vector<StoredReading> readings;
        for (const std::int64_t day : saved.account.days().value()) {
            auto read = saved.account.readDay(saved.key, day).value().value();
            std::ranges::move(read.readings, std::back_inserter(readings));
        }
        if (readings.size() != static_cast<std::size_t>(days * saved.perDay))
            state.SkipWithError("not all readings");
        benchmark::DoNotOptimize(readings.data());
    }
    state.counters["bytesPerReading"] = static_cast<double>(bytes) / static_cast<double>(days * saved.perDay);
}
BENCHMARK(load90Days)->ArgName("perDay")->Arg(288)->Arg(1440)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tidewell

BENCHMARK_MAIN();
