#include "platform/linux/Folders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/AtomicFile.h"

namespace tidewell {
namespace {

namespace fs = std::filesystem;

/// A real folder of this user that is closed to all others.
bool isOursAlone(const fs::path& folder)
{
    struct stat info{};
    if (::lstat(folder.c_str(), &info) != 0)
        return false;
    return S_ISDIR(info.st_mode) && info.st_uid == ::getuid() && (info.st_mode & 077) == 0;
}

std::optional<std::string> homeFromAccount()
{
    std::vector<char> buffer(16 * 1024);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return std::nullopt;
    return std::string{found->pw_dir == nullptr ? "" : found->pw_dir};
}

std::optional<fs::path> absolute(const std::optional<std::string>& value)
{
    // Text that ends at a zero byte somewhere in the middle cannot come from an environment.
    if (!value || !value->starts_with('/'))
        return std::nullopt;
    return fs::path{*value}.lexically_normal();
}

}  // namespace

Folders Folders::below(const fs::path& root)
{
    return {root / "config", root / "state", root / "data", root / "runtime"};
}

FolderEnvironment processEnvironment()
{
    return {.variable = [](const char* name) -> std::optional<std::string> {
                const char* value = std::getenv(name);
                return value == nullptr ? std::nullopt : std::optional<std::string>{value};
            },
            .accountHome = homeFromAccount,
            .isPrivateFolder = isOursAlone,
            .userID = ::getuid()};
}

std::optional<Folders> standardFolders(const FolderEnvironment& environment)
{
    std::optional<fs::path> home = absolute(environment.variable("HOME"));
    if (!home)
        home = absolute(environment.accountHome());

    const auto base = [&](const char* variable, const char* belowHome) -> std::optional<fs::path> {
        if (auto named = absolute(environment.variable(variable)))
            return named;
        return home ? std::optional{*home / belowHome} : std::nullopt;
    };
    const auto configuration = base("XDG_CONFIG_HOME", ".config");
    const auto state = base("XDG_STATE_HOME", ".local/state");
    const auto data = base("XDG_DATA_HOME", ".local/share");
    if (!configuration || !state || !data)
        return std::nullopt;

    const std::string user = std::to_string(environment.userID);
    fs::path runtime = fs::path{"/tmp"} / ("tidewell-" + user);
    if (const auto named = absolute(environment.variable("XDG_RUNTIME_DIR"));
        named && environment.isPrivateFolder(*named))
        runtime = *named / "tidewell";
    else if (const fs::path usual = fs::path{"/run/user"} / user; environment.isPrivateFolder(usual))
        runtime = usual / "tidewell";
    return Folders{*configuration / "tidewell", *state / "tidewell", *data / "Tidewell", runtime};
}

std::error_code prepareRuntimeFolder(const fs::path& folder)
{
    if (const std::error_code error = makePrivateFolder(folder); error && error != std::errc::file_exists)
        return error;
    return isOursAlone(folder) ? std::error_code{} : std::make_error_code(std::errc::operation_not_permitted);
}

}  // namespace tidewell
