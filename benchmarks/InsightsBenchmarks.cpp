// What Insights costs over 90 days: the calculation alone, and the whole command over a CSV file.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

#include "insights/InsightsCalculation.h"

extern char** environ;

namespace tidewell {

namespace {

namespace fs = std::filesystem;

constexpr double days = 90;
constexpr double firstSecond = 1'704'067'200;  // 2024-01-01, so that clocks change within.

/// Readings as sensors send them: whole seconds with some jitter, whole mg/dL, a gap now and then.
InsightsCalculationInput ninetyDays(std::int64_t perDay)
{
    const double step = 86'400 / static_cast<double>(perDay);
    InsightsCalculationInput input{
        .interval = {dateFromUnix(firstSecond), dateFromUnix(firstSecond + days * 86'400)},
        .collectionStartedAt = dateFromUnix(firstSecond),
        .zone = TimeZone::named("Europe/London").value()};
    for (std::int64_t i = 0; i < perDay * static_cast<std::int64_t>(days); ++i) {
        const auto n = static_cast<double>(i);
        const double hours = n * step / 3600;
        input.readings.push_back(
            {.mgdL = std::round(150 + 70 * std::sin(hours / 2.7) + 45 * std::sin(hours * 1.9)),
             .date = dateFromUnix(firstSecond + n * step + static_cast<double>(i * 7919 % 3)),
             .sampleDuration = Seconds{step},
             .fetchedAt = dateFromUnix(firstSecond + n * step + 60)});
    }
    return input;
}

void calculate90Days(benchmark::State& state)
{
    const auto input = ninetyDays(state.range(0));
    for ([[maybe_unused]] auto turn : state)
        benchmark::DoNotOptimize(calculateInsights(input));
}
BENCHMARK(calculate90Days)->ArgName("perDay")->Arg(288)->Arg(1440)->Unit(benchmark::kMillisecond);

#ifdef TIDEWELL_PROGRAM
/// A file of readings that goes with this object.
struct ReadingsFile {
    explicit ReadingsFile(std::int64_t perDay)
    {
        std::ofstream file{path};
        file << "epoch_s,glucose_mgdl,sample_duration_s\n";
        for (const auto& reading : ninetyDays(perDay).readings)
            file << fmt::format("{},{},{}\n", unixSeconds(reading.date), reading.mgdL,
                                reading.sampleDuration.count());
    }
    ReadingsFile(const ReadingsFile&) = delete;
    ReadingsFile& operator=(const ReadingsFile&) = delete;
    ~ReadingsFile()
    {
        std::error_code ignored;
        fs::remove_all(path.parent_path(), ignored);
    }
    fs::path path = [] {
        std::string folder = (fs::temp_directory_path() / "tidewell-bench-XXXXXX").string();
        if (!::mkdtemp(folder.data()))
            std::abort();
        return fs::path{folder} / "readings.csv";
    }();
};

/// From start to end of the process, its document thrown away.
void runCommandOver90Days(benchmark::State& state)
{
    const ReadingsFile file{state.range(0)};
    std::string program{TIDEWELL_PROGRAM};
    std::string path = file.path.string();
    std::array<std::string, 6> words{"insights", "--json", "--time-zone", "Europe/London", "--csv", path};
    std::array<char*, 8> arguments{program.data()};
    for (std::size_t i = 0; i < words.size(); ++i)
        arguments[i + 1] = words[i].data();
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    for ([[maybe_unused]] auto turn : state) {
        pid_t process = 0;
        int status = -1;
        if (::posix_spawn(&process, program.c_str(), &actions, nullptr, arguments.data(), environ) != 0 ||
            ::waitpid(process, &status, 0) != process || status != 0)
            state.SkipWithError("the command failed");
    }
    ::posix_spawn_file_actions_destroy(&actions);
}
BENCHMARK(runCommandOver90Days)
    ->ArgName("perDay")
    ->Arg(288)
    ->Arg(1440)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
#endif

}  // namespace

}  // namespace tidewell

BENCHMARK_MAIN();
