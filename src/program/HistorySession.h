#pragma once

#include <expected>
#include <memory>
#include <string>
#include <string_view>

#include "history/GlucoseHistoryStore.h"
#include "program/CommandSession.h"

namespace tidewell {

/// What a command about saved history needs: the stored account, and the store with its scope attached. Calls
/// of the store block.
class HistorySession {
public:
    /// signInNeeded without an account, or when no person is chosen where one must be.
    [[nodiscard]] static std::expected<std::unique_ptr<HistorySession>, CommandError> make();

    [[nodiscard]] GlucoseHistoryStore& store() { return *store_; }
    /// As it was attached: after an error, with its problem.
    [[nodiscard]] const GlucoseHistoryStatus& status() const { return status_; }
    [[nodiscard]] GlucoseProvider provider() const { return provider_; }
    [[nodiscard]] const AppSettings& settings() { return session_->configuration().settings(); }
    [[nodiscard]] Date now() { return session_->clock().now(); }
    [[nodiscard]] const std::filesystem::path& root() const { return root_; }
    /// Tells a running application that saved history changed.
    SingleInstance::SendResult announceChange()
    {
        return session_->announceChange(InstanceWord::historyChanged);
    }

private:
    explicit HistorySession(std::unique_ptr<CommandSession> session);

    std::unique_ptr<CommandSession> session_;
    std::filesystem::path root_;
    std::shared_ptr<GlucoseHistoryStore> store_;
    GlucoseHistoryStatus status_{};
    GlucoseProvider provider_ = GlucoseProvider::dexcom;
};

/// The code and the text for the person; `then` says what that means here, and may be empty.
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
