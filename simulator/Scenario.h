#pragma once

#include <boost/json/object.hpp>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/DexcomShareSimulator.h"
#include "simulator/LibreLinkUpSimulator.h"

namespace tidewell {

/// What changes while the simulator runs: a list of steps, each with its moment and its changes.
///
/// A document is a JSON object with "steps" and, for the start, the same members that a step may have:
///
///     {"readings": {"newestAge": 880}, "steps": [
///       {"at": 30, "until": 60, "fault": {"steps": ["read"], "kind": "html", "status": 503}},
///       {"afterReads": 2, "note": "The session ends", "endSessions": true}]}
///
/// The members "service", "readings" and "fault" are Dexcom Share's; those of "libreLinkUp" are
/// LibreLinkUp's. README.md lists every member. Read strictly: an unknown member, a wrong type or a value out
/// of range is an error of one sentence that names the place.
struct Scenario {
    struct Step {
        // One of three moments.
        std::optional<Seconds> at{};            ///< Since the start of the scenario.
        std::optional<Seconds> afterSeconds{};  ///< Since the step before began.
        std::optional<std::int64_t>
            afterReads{};  ///< Once so many reads were answered with readings since the step before began.

        std::optional<Seconds>
            until{};                    ///< Since the start; then the changes of options end. Only with `at`.
        std::string note{};             ///< What happens, for the person who watches.
        boost::json::object service{};  ///< Changes of DexcomShareOptions, checked.
        boost::json::object readings{};  ///< Changes of ReadingOptions, checked.
        boost::json::object fault{};     ///< A ServiceFault and the steps that it is for, checked.
        bool endSessions = false;
        bool forgetSessions = false;
        boost::json::object libreService{};   ///< Changes of LibreLinkUpOptions, checked.
        boost::json::object libreReadings{};  ///< Changes of LibreReadingOptions, checked.
        boost::json::object libreFault{};     ///< A ServiceFault and the calls that it is for, checked.
        bool revokeTickets = false;
    };
    /// The service that the scenario is about: whose account a demonstration signs in with.
    enum class Account { dexcom, libreLinkUp };

    std::string name{};
    Account account = Account::dexcom;
    std::vector<Step> steps{};  ///< The first one holds what the document says of the start.

    [[nodiscard]] static std::expected<Scenario, std::string> parse(std::string_view document);
    /// One of the built-in scenarios; an error names them all.
    [[nodiscard]] static std::expected<Scenario, std::string> named(std::string_view name);

    struct BuiltIn {
        std::string_view name;
        std::string_view summary;
        std::string_view document;
    };
    [[nodiscard]] static const std::vector<BuiltIn>& builtIn();
};

/// Applies what a step says of options. Returns one sentence when the step is wrong; parsed steps never are.
[[nodiscard]] std::optional<std::string> applyStep(const Scenario::Step& step, DexcomShareOptions& options);
[[nodiscard]] std::optional<std::string> applyStep(const Scenario::Step& step, LibreLinkUpOptions& options);

}  // namespace tidewell
