#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <string>

#include "support/Clock.h"

namespace tidewell {

/// Who to sign in as. Invented; the password protects nothing and may be shown.
struct DemoAccount {
    std::string provider;  ///< "dexcom" or "libreLinkUp".
    std::string username;
    std::string password;
    std::string region;
    std::string patientID;    ///< Of libreLinkUp, when exactly one person shares; else one is to be chosen.
    std::string patientName;  ///< First and last name of that person.
};

struct DemoOptions {
    std::uint16_t port = 0;  ///< 0: any free one.
    std::uint64_t seed = 1;
    std::string scenario = "steady";  ///< One of the built-in scenarios.
};

/// The simulated services for a demonstration: a real person's trace up to this minute, on a loopback port.
///
/// Serves on a thread of its own, from start() until it is destroyed, which takes less than a tenth of a
/// second.
class DemoService {
public:
    /// `clock` outlives the service; only its now() is used, on the service's thread. An error is one
    /// sentence.
    [[nodiscard]] static std::expected<std::unique_ptr<DemoService>, std::string> start(
        const Clock& clock, DemoOptions options = {});
    ~DemoService();

    [[nodiscard]] DemoAccount account() const;
    /// JSON that points every region's service at this one.
    [[nodiscard]] std::string endpointsDocument() const;

private:
    struct Impl;
    explicit DemoService(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
