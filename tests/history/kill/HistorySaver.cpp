// Saves readings without end, or lists what is saved: the program that kill_cycles.py kills.
//
//   history_saver save FOLDER FIRST STEP   saves the readings FIRST, FIRST + STEP ..., and prints the number
//   of
//                                          each on a line of its own once it counts as saved
//   history_saver list FOLDER              prints the numbers of all that is saved; fails when anything
//   cannot
//                                          be read, or a temporary file is left

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>

#include "config/FileKeychainItemStore.h"
#include "history/GlucoseHistoryStore.h"

namespace tidewell {
namespace {

constexpr Date start = dateFromUnix(20771 * 86400.0);
constexpr std::int64_t daysInUse = 5;  ///< One reading after the other goes to another day.
constexpr Date now = start + Seconds{daysInUse * 86400.0};

Date dateOf(std::int64_t number)
{
    return start + Seconds{static_cast<double>(number % daysInUse * 86400 + number / daysInUse)};
}

std::int64_t numberOf(Date date)
{
    const auto seconds = static_cast<std::int64_t>(std::llround((date - start).count()));
    return seconds % 86400 * daysInUse + seconds / 86400;
}

int failed(std::string_view step, GlucoseHistoryError error)
{
    fmt::print(stderr, "{}: {}\n", step, description(error));
    return 1;
}

int save(GlucoseHistoryStore& store, std::int64_t first, std::int64_t step)
{
    if (const auto enabled = store.enable(90, currentConsentVersion, start); !enabled)
        return failed("enable", enabled.error());
    for (std::int64_t number = first; number < std::numeric_limits<std::int32_t>::max(); number += step) {
        const auto token = store.collectionToken();
        if (!token)
            return failed("token", GlucoseHistoryError::accountRequired);
        const auto reading = makeReading(100, "Flat", dateOf(number), Seconds{300}, GlucoseProvider::dexcom);
        if (const auto saved = store.save(*token, {reading}, now); !saved)
            return failed("save", saved.error());
        fmt::print("{}\n", number);
        std::fflush(stdout);
    }
    return 0;
}

int list(GlucoseHistoryStore& store, const std::filesystem::path& folder)
{
    const auto all = store.snapshot(start, now);
    if (!all)
        return failed("snapshot", all.error());
    if (!all->unreadableDays.empty())
        return failed("snapshot", GlucoseHistoryError::unreadableHistory);
    for (const StoredReading& stored : all->readings)
        fmt::print("{}\n", numberOf(stored.reading.date));
    std::error_code absent;  // Killed before there was anything.
    for (const auto& entry : std::filesystem::recursive_directory_iterator{folder / "SavedHistory", absent}) {
        if (entry.path().extension() == ".tmp") {
            fmt::print(stderr, "a temporary file is left\n");
            return 1;
        }
    }
    return 0;
}

std::int64_t number(std::string_view text)
{
    std::int64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

int run(int count, char** arguments)
{
    const std::string_view word = count > 2 ? arguments[1] : "";
    if ((word != "save" || count != 5) && (word != "list" || count != 3)) {
        fmt::print(stderr, "usage: history_saver save FOLDER FIRST STEP | list FOLDER\n");
        return 2;
    }
    const std::filesystem::path folder = arguments[2];
    SystemFileSystem files;
    FileKeychainItemStore keychain{folder / "keys"};
    SystemRandom random;
    GlucoseHistoryStore store{
        {.root = folder / "SavedHistory", .files = files, .keychain = keychain, .random = random}};
    if (const auto recovered = store.recover(now); !recovered)
        return failed("recover", recovered.error());
    if (const auto attached =
            store.attach(HistoryScopeID::of({.provider = GlucoseProvider::dexcom, .username = "somebody"}));
        !attached)
        return failed("attach", attached.error());
    return word == "save" ? save(store, number(arguments[3]), number(arguments[4])) : list(store, folder);
}

}  // namespace
}  // namespace tidewell

int main(int count, char** arguments) { return tidewell::run(count, arguments); }
