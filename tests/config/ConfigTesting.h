#pragma once

#include <sys/resource.h>

#include <csignal>
#include <fstream>

#include "config/ConfigurationManager.h"
#include "config/MemoryKeychainItemStore.h"
#include "testing/LogCatcher.h"
#include "testing/TemporaryFolder.h"
#include "testing/Texts.h"

namespace tidewell {

inline std::string bytesOf(const std::filesystem::path& file)
{
    std::ifstream stream{file, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

inline void writeBytes(const std::filesystem::path& file, std::string_view bytes)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream{file, std::ios::binary};
    stream << bytes;
}

/// Every regular file below, by its path from there, with its bytes; lock files left out.
inline std::map<std::string, std::string> contentOf(const TemporaryFolder& folder)
{
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator{folder.path()}) {
        if (entry.is_regular_file() && entry.path().extension() != ".lock")
            files[entry.path().lexically_relative(folder.path()).string()] = bytesOf(entry.path());
    }
    return files;
}

/// While it lives, no file of this process can grow, as on a full disk; reading goes on. Works for root too.
class FullDisk {
public:
    FullDisk() : handler_{std::signal(SIGXFSZ, SIG_IGN)}
    {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit none{.rlim_cur = 0, .rlim_max = before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit before_{};
    void (*handler_)(int);
};

/// Stores these preferences in place of those that the manager holds. Begins at once.
[[nodiscard]] inline asio::awaitable<std::expected<void, ConfigurationProblem>> saveSettings(
    ConfigurationManager& manager, AppSettings settings)
{
    return manager.changeSettings(manager.settings(), std::move(settings));
}

/// A secret store that fails on demand: at one call, counted from 1, or at all of them.
class FaultyKeychain final : public KeychainItemStoring {
public:
    [[nodiscard]] KeychainLookup read(std::string_view service, std::string_view account) override
    {
        if (fails())
            return KeychainFailure{status};
        return items.read(service, account);
    }
    [[nodiscard]] std::int32_t write(std::string_view service, std::string_view account,
                                     const SecretText& data) override
    {
        return fails() ? status : items.write(service, account, data);
    }
    [[nodiscard]] std::int32_t remove(std::string_view service, std::string_view account) override
    {
        return fails() ? status : items.remove(service, account);
    }

    MemoryKeychainItemStore items;
    std::int32_t status = keychainStatus::interactionNotAllowed;
    bool failAlways = false;
    int failAt = 0;
    int calls = 0;

private:
    bool fails() { return ++calls == failAt || failAlways; }
};

}  // namespace tidewell
