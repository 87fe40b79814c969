#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace tidewell {

/// What would come of a sound.
struct SoundOutputState {
    std::optional<bool> present{};  ///< A device plays, and its server answers; empty when only it could say.
    std::optional<bool> muted{};
    std::optional<double> volume{};  ///< 0 ... 1, as sliders show it.
    bool operator==(const SoundOutputState&) const = default;
};

/// Asks the sound server: PulseAudio, or PipeWire, which speaks like it. `server` as PULSE_SERVER names it;
/// empty means the usual one. What the server keeps for the sounds of alerts in general counts too.
///
/// Blocks for at most `deadline`; loads the server's client library, which stays.
[[nodiscard]] SoundOutputState askSoundOutput(const std::string& server, std::chrono::milliseconds deadline);

/// Whether the kernel has a device that plays.
[[nodiscard]] bool soundDeviceExists();

}  // namespace tidewell
