#pragma once

#include <expected>
#include <memory>
#include <string>
#include <string_view>

#include "history/GlucoseHistoryStore.h"
#include "program/CommandSession.h"

namespace tidewell {

/// Everything that can be saved, whatever the clock says: 1970 to the year 9999.
inline constexpr Date historyBegin{};
inline constexpr Date historyEnd = dateFromUnix(253'402'300'800);

/// What a command about saved history needs: the stored account, and the store with its scope attached. Calls
/// of the store block.
class HistorySession {
public:
    /// signInNeeded without an account, or when no person is chosen where one must be.
    [[nodiscard]] static std::expected<std::unique_ptr<HistorySession>, CommandError> make();
    /// Of a command that concerns every account: where make() would fail, the session stands without a scope,
    /// and missingAccount() says why.
    [[nodiscard]] static std::expected<std::unique_ptr<HistorySession>, CommandError> makeForEveryAccount();
    [[nodiscard]] const std::optional<CommandError>& missingAccount() const { return missingAccount_; }

    [[nodiscard]] GlucoseHistoryStore& store() { return *store_; }
    /// As it was attached: after an error, with its problem.
    [[nodiscard]] const GlucoseHistoryStatus& status() const { return status_; }
    [[nodiscard]] GlucoseProvider provider() const { return provider_; }
    [[nodiscard]] const AppSettings& settings() { return session_->configuration().settings(); }
    [[nodiscard]] Date now() { return session_->clock().now(); }
    [[nodiscard]] const std::filesystem::path& root() const { return root_; }
    [[nodiscard]] bool hasKeyring() const { return session_->environment().keychainFile.empty(); }
    /// Where the key is, as part of a sentence: "in your keyring".
    [[nodiscard]] std::string keyPlace() const;
    /// Of how many others there are saved readings: accounts and persons that are not followed now.
    [[nodiscard]] std::size_t otherHistories() const;
    /// Tells a running application that saved history changed.
    SingleInstance::SendResult announceChange()
    {
        return session_->announceChange(InstanceWord::historyChanged);
    }

private:
    explicit HistorySession(std::unique_ptr<CommandSession> session);
    void attachAccount();

    std::unique_ptr<CommandSession> session_;
    std::filesystem::path root_;
    std::shared_ptr<GlucoseHistoryStore> store_;
    GlucoseHistoryStatus status_{};
    std::optional<CommandError> missingAccount_{};
    GlucoseProvider provider_ = GlucoseProvider::dexcom;
};

/// The code and the text for the person, with the way out where only a command is one; `then` says what that
/// means here, and may be empty.
[[nodiscard]] CommandError commandError(GlucoseHistoryError error, std::string_view then = {});

/// Whether the person says yes to `question` on the terminal. Without a terminal it is a usage error that
/// names `option`, which says yes beforehand.
[[nodiscard]] std::expected<bool, CommandError> askedForYes(std::string_view question,
                                                            std::string_view option);

/// "2 readings", "1 reading".
[[nodiscard]] std::string counted(std::size_t count, std::string_view one);

/// The dates of days as "2026-03-01, 2026-03-02", at most ten of them.
[[nodiscard]] std::string dayList(const std::vector<std::int64_t>& days);

}  // namespace tidewell
