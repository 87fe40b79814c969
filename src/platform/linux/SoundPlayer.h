#pragma once

#include <filesystem>

namespace tidewell {

/// Whether libcanberra is installed. Loads it.
[[nodiscard]] bool canPlaySounds();

/// Plays the file to its end, through the sound server or, where there is none, the device. Blocks for as
/// long as the sound takes, and for as long as a sound server that hangs. False when it was not heard.
[[nodiscard]] bool playSoundFile(const std::filesystem::path& file);

}  // namespace tidewell
