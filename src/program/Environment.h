#pragma once

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>

#include "config/AppConfiguration.h"
#include "config/KeychainItemStoring.h"
#include "platform/linux/Folders.h"
#include "program/ExitCode.h"
#include "simulator/DemoService.h"
#include "sources/ServiceEndpoints.h"
#include "support/Clock.h"

namespace tidewell {

/// A folder below the system's temporary one that goes, with what is in it, when this object goes.
class DemoFolder {
public:
    /// Mode 0700; an error is one sentence.
    [[nodiscard]] static std::expected<std::unique_ptr<DemoFolder>, std::string> make();
    ~DemoFolder();
    DemoFolder(const DemoFolder&) = delete;
    DemoFolder& operator=(const DemoFolder&) = delete;
    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

private:
    explicit DemoFolder(std::filesystem::path path) : path_{std::move(path)} {}
    std::filesystem::path path_;
};

/// What the program was started into: folders, secret store, addresses, and the demonstration's own services.
struct Environment {
    std::unique_ptr<DemoFolder> temporary{};  ///< Of a demonstration.
    std::unique_ptr<DemoService> demo{};      ///< Of a demonstration.
    Folders folders{};
    std::shared_ptr<KeychainItemStoring> keychain{};
    std::filesystem::path keychainFile{};  ///< Where a file stands in for the keyring; else empty.
    ServiceEndpoints endpoints{};

    [[nodiscard]] std::filesystem::path document() const
    {
        return folders.configuration / "configuration.json";
    }
    [[nodiscard]] std::filesystem::path defaults() const { return folders.state / "defaults.json"; }
};

/// What two runs have to have in common to show each other's readings: a SHA-256 over the configuration
/// folder, the state folder and every address.
[[nodiscard]] std::string sharingProfile(const Environment& environment);
/// Whose readings an account gives, in that environment: a SHA-256 of whom it follows, and as whom.
[[nodiscard]] std::string sharingAccount(const Environment& environment,
                                         const GlucoseAccountConfiguration& account);

/// One sentence about a file of user defaults that could not be read: the program goes on without it.
[[nodiscard]] std::string bookkeepingProblem(const std::filesystem::path& file, std::error_code error);
/// What to say when it could not be saved: what failed, and on further lines what follows and what to do.
[[nodiscard]] std::string bookkeepingNotSaved(const std::filesystem::path& file, std::error_code error);

/// Reads the environment's variables and files. Folders that cannot be made are no error here: reading goes
/// on without them, and a save says what is wrong.
[[nodiscard]] std::expected<Environment, CommandError> standardEnvironment();

/// Temporary folders, secrets in memory, and the built-in simulator, which `clock` drives.
[[nodiscard]] std::expected<Environment, CommandError> demoEnvironment(const Clock& clock,
                                                                       std::string scenario);

}  // namespace tidewell
