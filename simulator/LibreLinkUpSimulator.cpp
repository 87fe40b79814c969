#include "simulator/LibreLinkUpSimulator.h"

namespace tidewell {

LibreLinkUpSimulator::LibreLinkUpSimulator(LibreLinkUpOptions options, Date start, std::uint64_t seed,
                                           const GlucoseTrace& trace, double startSeconds)
    : options_{std::move(options)},
      start_{start},
      seed_{seed},
      random_{seed},
      trace_{&trace},
      startSeconds_{startSeconds}
{
    meetPeople(start);
}

SimulatedAnswer LibreLinkUpSimulator::handle(const HttpRequest&, Date)
{
    return {.response = {.status = 404}};
}

void LibreLinkUpSimulator::setOptions(LibreLinkUpOptions options, Date now)
{
    options_ = std::move(options);
    meetPeople(now);
}

void LibreLinkUpSimulator::meetPeople(Date now)
{
    for (const auto& account : options_.accounts)
        for (const auto& person : account.people)
            if (!readings_.contains(person.patientId))
                readings_.emplace(person.patientId, LibreReadings{*trace_, startSeconds_ + person.traceOffset,
                                                                  seed_, options_.readings, now});
}

void LibreLinkUpSimulator::restartReadings(Seconds age, Date now)
{
    for (auto& [id, readings] : readings_)
        readings.restart(age, now);
}

const LibreReadings& LibreLinkUpSimulator::readings() const
{
    return readings_.find(options_.accounts.front().people.front().patientId)->second;
}

}  // namespace tidewell
