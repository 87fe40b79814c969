#include "config/AsideFile.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "support/AtomicFile.h"
#include "support/TimeText.h"

namespace tidewell {

namespace {

/// So many unreadable files of one name mean that something else is wrong.
constexpr int mostNames = 100;

/// For file systems without hard links. Anything that is too large to be ours is not copied.
std::error_code copyFile(const std::filesystem::path& file, const std::filesystem::path& aside)
{
    const auto content = readFile(file);
    if (!content)
        return content.error();
    if (!*content)
        return std::make_error_code(std::errc::no_such_file_or_directory);
    std::error_code error;
    if (std::filesystem::exists(aside, error) || error)
        return std::make_error_code(std::errc::file_exists);
    return writeFileAtomically(aside, **content);
}

std::error_code addName(const std::filesystem::path& file, const std::filesystem::path& aside)
{
    if (::link(file.c_str(), aside.c_str()) == 0)
        return {};
    const std::error_code error{errno, std::generic_category()};
    const bool noHardLinks = error == std::errc::operation_not_permitted ||
                             error == std::errc::not_supported ||
                             error == std::errc::operation_not_supported ||
                             error == std::errc::function_not_supported || error == std::errc::too_many_links;
    return noHardLinks ? copyFile(file, aside) : error;
}

}  // namespace

std::expected<std::filesystem::path, std::error_code> keepAside(const std::filesystem::path& file,
                                                                const std::filesystem::path& aside)
{
    auto name = aside;
    for (int number = 2;; ++number) {
        const std::error_code error = addName(file, name);
        if (!error)
            return name;
        if (error != std::errc::file_exists || number > mostNames)
            return std::unexpected{error};
        name = aside.parent_path() /
               fmt::format("{}-{}{}", aside.stem().string(), number, aside.extension().string());
    }
}

std::string writtenAtText(const std::filesystem::path& file)
{
    std::error_code error;
    const auto written = std::filesystem::last_write_time(file, error);
    if (error)
        return "unknown-time";
    std::string text = isoText(std::chrono::file_clock::to_sys(written));
    std::erase_if(text, [](char letter) { return letter == '-' || letter == ':'; });
    return text;
}

}  // namespace tidewell
