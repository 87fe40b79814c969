#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/DexcomShareSimulator.h"
#include "simulator/LibreLinkUpSimulator.h"
#include "simulator/Scenario.h"
#include "simulator/SimulatedAnswer.h"

namespace tidewell {

/// All the services that the program talks to, behind one address: a path for each, and the scenario that
/// changes them as time passes.
///
///     /us/ShareWebServices/Services   Dexcom Share, each region with accounts and readings of its own
///     /ous/ShareWebServices/Services
///     /jp/ShareWebServices/Services
///     /libre/REGION                   LibreLinkUp: its thirteen regions and "global", one account database
///
/// Used by one thread at a time. The traces outlive it.
class SimulatedServices {
public:
    struct Options {
        DexcomShareOptions dexcom{};  ///< Of `region`; the other regions have the same without the accounts.
        std::string region = "us";    ///< Which region has the accounts.
        Scenario scenario{};
        std::uint64_t seed = 1;
        const GlucoseTrace* trace = &GlucoseTrace::builtIn();
        std::int64_t startPosition = GlucoseTrace::builtInStart;
        LibreLinkUpOptions libreLinkUp{};
        const GlucoseTrace* libreTrace = &GlucoseTrace::libre();
        double libreStart = GlucoseTrace::libreStart;
    };

    /// Starts at `start`. Applies what the scenario says of the start.
    SimulatedServices(Options options, Date start);

    [[nodiscard]] SimulatedAnswer handle(const HttpRequest& request, Date now);

    /// The simulator of a region ("us", "ous", "jp"); any other name stops the program.
    [[nodiscard]] DexcomShareSimulator& dexcom(std::string_view region);

    [[nodiscard]] LibreLinkUpSimulator& libreLinkUp() { return *libre_; }

    /// The path of a request as a log may show it: with "…" for what names a person.
    [[nodiscard]] static std::string loggedPath(std::string_view path);

    /// JSON that points a client at the services behind `origin` ("http://127.0.0.1:8080").
    [[nodiscard]] static std::string endpointsDocument(std::string_view origin);

    /// Called with the note of each step that begins and with its seconds since the start.
    void onStep(std::function<void(Seconds, std::string_view)> handler) { onStep_ = std::move(handler); }

private:
    struct Region {
        std::string_view name;
        DexcomShareOptions initial;  ///< Before the scenario.
        DexcomShareOptions given;    ///< What was last given to the simulator.
        std::unique_ptr<DexcomShareSimulator> simulator;
    };

    void advance(Date now);
    [[nodiscard]] std::optional<Date> nextBegin() const;
    void begin(Date at);
    void applyOptions(Date now);

    Scenario scenario_;
    Date start_;
    std::vector<Region> regions_{};
    LibreLinkUpOptions libreInitial_;  ///< As of a region.
    LibreLinkUpOptions libreGiven_{};
    std::unique_ptr<LibreLinkUpSimulator> libre_{};
    std::vector<Date> started_{};    ///< When each step began; the next one to begin is the one after.
    Date lastBegin_;                 ///< When the last of them began ...
    std::int64_t readsSince_ = 0;    ///< ... how many reads were answered with readings since ...
    Date lastRead_;                  ///< ... and when the last of those was.
    std::optional<Date> nextEnd_{};  ///< The next `until`.
    std::function<void(Seconds, std::string_view)> onStep_{};
};

}  // namespace tidewell
