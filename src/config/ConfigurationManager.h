#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "config/AppConfiguration.h"
#include "config/KeychainItemStoring.h"
#include "support/Asio.h"

namespace tidewell {

/// The application's own notifications.
enum class ConfigurationChange {
    configuration,  ///< "ConfigurationDidUpdate": another account, or none.
    appSettings,    ///< "AppSettingsDidUpdate": the preferences changed.
};

/// Why a load or a save did not succeed, as a person may read it.
struct ConfigurationProblem {
    ConfigurationError error;
    std::string message;  ///< One sentence that says what is wrong, and with which file.
    bool operator==(const ConfigurationProblem&) const = default;
};

/// Loads, holds and saves the stored configuration and announces its changes.
///
/// The document holds everything but the password, which goes to the secret store
/// only (service "Tidewell.account", account = provider + ":" + username). "No
/// account" is stored as an account with an empty username. A password that somebody
/// wrote into the document by hand is moved to the secret store on loading.
///
/// A document that does not decode is never overwritten: the configuration held so far stays, the problem is
/// reported, and the next save first gives the old document the name configuration.unreadable-<UTC>.json,
/// after the time that it was last written.
///
/// A save starts from the document as it then is, so that what
/// another process changed meanwhile is kept and announced.
///
/// Lives on the executor given as `main`; blocking work runs on `workers`. Loads
/// and saves begin with the call, run one at a time in the order of their calls,
/// and end even when nobody waits for them any more. Outlives its coroutines.
class ConfigurationManager {
public:
    struct Places {
        std::filesystem::path document;
        std::shared_ptr<KeychainItemStoring> keychain;
    };

    ConfigurationManager(asio::any_io_executor main, asio::any_io_executor workers, Places places);
    ~ConfigurationManager();

    /// Whether a load has ended, well or not.
    [[nodiscard]] bool loaded() const;
    /// The account, without a password when the secret store could not give it (see problem()).
    [[nodiscard]] const std::optional<GlucoseAccountConfiguration>& account() const;
    /// Defaults before the first load.
    [[nodiscard]] const AppSettings& settings() const;
    /// Of the last load or save; empty when it went well. A save that succeeded but left something behind,
    /// such as the former account's password that could not be removed, says so here.
    [[nodiscard]] const std::optional<ConfigurationProblem>& problem() const;

    /// Reads document and password. Announces what differs from what was held
    /// (nothing on the first load). The account and the settings may be there
    /// all the same when this fails: the password may be what is missing.
    [[nodiscard]] asio::awaitable<std::expected<void, ConfigurationProblem>> load();
    /// Stores the account; none, or one without a username, signs out. The password is
    /// in the secret store before the document names the account; one that is empty
    /// leaves the stored one as it is. The former account's password is removed once
    /// the document is on the disk. On failure nothing changes, in memory or on disk.
    [[nodiscard]] asio::awaitable<std::expected<void, ConfigurationProblem>> saveAccount(
        std::optional<GlucoseAccountConfiguration> account);
    /// On failure nothing changes, in memory or on disk.
    [[nodiscard]] asio::awaitable<std::expected<void, ConfigurationProblem>> saveSettings(
        AppSettings settings);
    /// Stores those values in which `to` differs from `from`; the others stay as the document then has them,
    /// whoever changed them meanwhile. On failure nothing changes, in memory or on disk.
    [[nodiscard]] asio::awaitable<std::expected<void, ConfigurationProblem>> changeSettings(AppSettings from,
                                                                                            AppSettings to);

    /// Keeps the observer until the returned token goes. Called on `main`, after everything has changed.
    using Observer = std::function<void(ConfigurationChange)>;
    [[nodiscard]] std::shared_ptr<void> observe(Observer observer);

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
