// What saved history costs: one reading saved, 90 days loaded, and the bytes of a reading on disk.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>

#include "config/MemoryKeychainItemStore.h"
#include "history/GlucoseHistoryStore.h"
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

/// A history in a temporary folder, to which `perDay` readings come each day.
struct SavedHistory {
    SavedHistory(std::int64_t readingsPerDay, Disk disk)
        : perDay{readingsPerDay},
          files{disk == Disk::included ? std::unique_ptr<FileSystem>{std::make_unique<SystemFileSystem>()}
                                       : std::make_unique<WithoutSync>()}
    {
        const bool good = store.recover(startOf(firstDay)) &&
                          store.attach(HistoryScopeID::of({.username = "ada"})) &&
                          store.enable(90, currentConsentVersion, startOf(firstDay));
        if (!good)
            std::abort();
    }
    SavedHistory(const SavedHistory&) = delete;
    SavedHistory& operator=(const SavedHistory&) = delete;
    ~SavedHistory()
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    static Date startOf(std::int64_t day) { return dateFromUnix(static_cast<double>(day) * 86'400); }

    [[nodiscard]] GlucoseReading reading(std::int64_t day, std::int64_t index) const
    {
        constexpr std::array trends{"Flat", "FortyFiveUp", "SingleDown", "FortyFiveDown"};
        const Seconds step{86'400.0 / static_cast<double>(perDay)};
        return makeReading(static_cast<double>(70 + index % 180),
                           trends[static_cast<std::size_t>(index / 7) % trends.size()],
                           startOf(day) + static_cast<double>(index) * step + Seconds{0.482}, step,
                           GlucoseProvider::dexcom);
    }

    void save(std::int64_t day)
    {
        std::vector<GlucoseReading> readings;
        for (std::int64_t index = 0; index < perDay; ++index)
            readings.push_back(reading(day, index));
        const auto saved = store.save(store.collectionToken().value(), readings, startOf(day + 1));
        if (saved != static_cast<std::size_t>(perDay))
            std::abort();
    }

    [[nodiscard]] std::uintmax_t bytes() const
    {
        std::uintmax_t sum = 0;
        for (const auto& file : fs::recursive_directory_iterator{folder})
            if (file.path().extension() == ".history")
                sum += file.file_size();
        return sum;
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
    GlucoseHistoryStore store{
        {.root = folder / "SavedHistory", .files = *files, .keychain = keychain, .random = random}};
};

/// As after a poll, into a day of 1,440: lock, records, key, the day read and merged, the day written.
void saveOneReading(benchmark::State& state)
{
    SavedHistory history{1440, state.range(0) == 0 ? Disk::leftOut : Disk::included};
    history.save(firstDay);
    GlucoseReading last = history.reading(firstDay, 1439);
    for (auto _ : state) {
        last.mgdL = last.mgdL < 180 ? last.mgdL + 1 : 80;
        if (history.store.save(history.store.collectionToken().value(), {last},
                               SavedHistory::startOf(firstDay + 1)) != 1)
            state.SkipWithError("not saved");
    }
}
BENCHMARK(saveOneReading)->ArgName("disk")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

/// From files that are in the system's cache.
void load90Days(benchmark::State& state)
{
    SavedHistory history{state.range(0), Disk::leftOut};
    for (std::int64_t day = 0; day < days; ++day)
        history.save(firstDay + day);
    const auto all = static_cast<std::size_t>(days * history.perDay);
    for (auto _ : state) {
        const auto snapshot =
            history.store.snapshot(SavedHistory::startOf(firstDay), SavedHistory::startOf(firstDay + days));
        if (!snapshot || snapshot->readings.size() != all)
            state.SkipWithError("not all readings");
    }
    state.counters["bytesPerReading"] = static_cast<double>(history.bytes()) / static_cast<double>(all);
}
BENCHMARK(load90Days)->ArgName("perDay")->Arg(288)->Arg(1440)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tidewell

BENCHMARK_MAIN();
