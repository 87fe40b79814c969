#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <set>

#include "config/KeychainItemStoring.h"
#include "support/FileSystem.h"
#include "support/Random.h"

namespace tidewell {

/// The machine goes off within a call.
struct PowerCut {};

/// Which of the calls of a run fail, and how. Calls to files, secrets and randomness are counted together.
struct FaultPlan {
    enum class Kind { none, error, shortWrite, powerCut };
    Kind kind = Kind::none;
    int at = 0;  ///< From 1.
    bool forEver = false;
    std::error_code error{};
    std::int32_t status = 0;  ///< Of secrets. Where it is zero they work, as files do without an error.

    int calls = 0;
    bool hit = false;

    /// Counts a call, and says whether it fails. Throws when the machine goes off before it.
    bool fails(Kind wanted, bool canFail)
    {
        ++calls;
        if (kind == Kind::powerCut && calls >= at) {
            hit = true;
            throw PowerCut{};
        }
        if (kind != wanted || !canFail || (forEver ? calls < at : calls != at))
            return false;
        hit = true;
        return true;
    }
};

/// What a power cut leaves of what was not synced.
enum class Survival {
    everything,  ///< As when only the process dies.
    synced,      ///< Names and content that were synced, nothing else.
    names        ///< All names, but content only where it was synced.
};

/// Files in memory, for tests of faults: fast, and strict about what a sync promises.
class MemoryFileSystem final : public FileSystem {
public:
    explicit MemoryFileSystem(FaultPlan& plan) : plan_{&plan} {}

    /// The same content, as after a power cut: what remains is on the disk.
    [[nodiscard]] MemoryFileSystem after(Survival survival, FaultPlan& plan) const
    {
        MemoryFileSystem copy{plan};
        const auto& names = survival == Survival::synced ? synced_ : live_;
        for (const auto& [path, node] : names) {
            const std::string_view parent = parentOf(path);
            if (parent != "/" && !copy.live_.contains(parent))
                continue;  // Its folder's own name was lost.
            const auto kept = std::make_shared<Node>(*node);
            if (survival != Survival::everything)
                kept->content = node->synced;
            kept->synced = kept->content;
            copy.live_[path] = copy.synced_[path] = kept;
        }
        return copy;
    }

    /// Every file by its path, with its bytes; lock files left out.
    [[nodiscard]] std::map<std::string, std::string> files() const
    {
        std::map<std::string, std::string> found;
        for (const auto& [path, node] : live_)
            if (!node->folder && !path.ends_with(".lock"))
                found[path] = node->content;
        return found;
    }
    [[nodiscard]] bool isOpen(const std::filesystem::path& file) const
    {
        const auto found = live_.find(file.native());
        return found != live_.end() &&
               std::ranges::any_of(open_, [&](const auto& open) { return open.second == found->second; });
    }
    /// Puts a file there, durably; its folders too.
    void put(const std::filesystem::path& file, std::string_view content)
    {
        for (auto folder = folderOf(file); folder != "/"; folder = folderOf(folder))
            if (!live_.contains(folder.string()))
                live_[folder.string()] = synced_[folder.string()] =
                    std::make_shared<Node>(Node{.folder = true});
        live_[file.string()] = synced_[file.string()] =
            std::make_shared<Node>(Node{std::string{content}, std::string{content}});
    }
    /// Every content that a file got by being renamed to, by path.
    [[nodiscard]] const std::multimap<std::string, std::string>& renamed() const { return renamed_; }
    [[nodiscard]] std::size_t openHandles() const { return open_.size(); }

    std::error_code makeFolder(const std::filesystem::path& folder) override
    {
        if (const auto error = step())
            return error;
        if (const auto found = live_.find(folder.string()); found != live_.end())
            return std::make_error_code(found->second->folder ? std::errc::file_exists
                                                              : std::errc::not_a_directory);
        if (!isFolder(parentOf(folder.native())))
            return std::make_error_code(std::errc::no_such_file_or_directory);
        live_[folder.string()] = std::make_shared<Node>(Node{.folder = true});
        return {};
    }
    std::expected<FileHandle, std::error_code> createNew(const std::filesystem::path& file) override
    {
        if (const auto error = step())
            return std::unexpected{error};
        if (live_.contains(file.string()))
            return std::unexpected{std::make_error_code(std::errc::file_exists)};
        if (!isFolder(parentOf(file.native())))
            return std::unexpected{std::make_error_code(std::errc::no_such_file_or_directory)};
        return opened(live_[file.string()] = std::make_shared<Node>());
    }
    std::expected<std::size_t, std::error_code> write(FileHandle file, std::string_view bytes) override
    {
        if (plan_->kind == FaultPlan::Kind::shortWrite) {
            if (plan_->fails(FaultPlan::Kind::shortWrite, true))
                bytes = bytes.substr(0, 1);
        } else if (const auto error = step()) {
            if (error == std::errc::no_space_on_device)  // As a disk that fills up within a file.
                open_.at(file)->content += bytes.substr(0, bytes.size() / 2);
            return std::unexpected{error};
        }
        open_.at(file)->content += bytes;
        return bytes.size();
    }
    std::error_code sync(FileHandle file) override
    {
        if (const auto error = step())
            return error;
        open_.at(file)->synced = open_.at(file)->content;
        return {};
    }
    std::error_code close(FileHandle file) override
    {
        open_.erase(file);
        if (plan_->kind == FaultPlan::Kind::powerCut) {
            return {};  // Also called while a power cut unwinds.
        }
        return step();
    }
    std::error_code rename(const std::filesystem::path& from, const std::filesystem::path& to) override
    {
        if (const auto error = step())
            return error;
        auto node = live_.extract(from.string());
        renamed_.emplace(to.string(), node.mapped()->content);
        live_[to.string()] = node.mapped();
        return {};
    }
    std::error_code syncFolder(const std::filesystem::path& folder) override
    {
        if (const auto error = step())
            return error;
        if (!isFolder(folder.native()))
            return std::make_error_code(std::errc::no_such_file_or_directory);
        const auto isIn = [&](const auto& entry) { return parentOf(entry.first) == folder.native(); };
        std::erase_if(synced_, isIn);
        for (const auto& entry : live_)
            if (isIn(entry))
                synced_.insert(entry);
        return {};
    }
    std::expected<std::optional<std::string>, std::error_code> read(const std::filesystem::path& file,
                                                                    std::size_t limit) override
    {
        if (const auto error = step())
            return std::unexpected{error};
        const auto found = live_.find(file.string());
        if (found == live_.end())
            return std::nullopt;
        if (found->second->folder)
            return std::unexpected{std::make_error_code(std::errc::is_a_directory)};
        if (found->second->content.size() > limit)
            return std::unexpected{std::make_error_code(std::errc::file_too_large)};
        return found->second->content;
    }
    std::expected<std::vector<std::string>, std::error_code> list(
        const std::filesystem::path& folder) override
    {
        if (const auto error = step())
            return std::unexpected{error};
        std::vector<std::string> names;
        for (const auto& [path, node] : live_)
            if (parentOf(path) == folder.native())
                names.push_back(path.substr(folder.native().size() + 1));
        return names;
    }
    std::error_code removeFile(const std::filesystem::path& file) override { return removed(file, false); }
    std::error_code removeFolder(const std::filesystem::path& folder) override
    {
        return removed(folder, true);
    }
    std::expected<bool, std::error_code> exists(const std::filesystem::path& path) override
    {
        if (const auto error = step())
            return std::unexpected{error};
        return live_.contains(path.string());
    }
    std::expected<FileHandle, std::error_code> lock(const std::filesystem::path& file) override
    {
        if (const auto error = step())
            return std::unexpected{error};
        if (!isFolder(parentOf(file.native())))
            return std::unexpected{std::make_error_code(std::errc::no_such_file_or_directory)};
        auto& node = live_[file.string()];
        if (!node)
            node = std::make_shared<Node>();
        return opened(node);
    }

private:
    struct Node {
        std::string content{};
        std::string synced{};
        bool folder = false;
    };
    using Names = std::map<std::string, std::shared_ptr<Node>, std::less<>>;

    /// Cheaper than a path's, and sweeps ask it millions of times.
    static std::string_view parentOf(std::string_view path)
    {
        const auto slash = path.rfind('/');
        return slash == 0 ? path.substr(0, 1) : path.substr(0, slash);
    }

    std::error_code step()
    {
        return plan_->fails(FaultPlan::Kind::error, bool{plan_->error}) ? plan_->error : std::error_code{};
    }
    [[nodiscard]] bool isFolder(std::string_view path) const
    {
        const auto found = live_.find(path);
        return path == "/" || (found != live_.end() && found->second->folder);
    }
    FileHandle opened(std::shared_ptr<Node> node)
    {
        open_[++lastHandle_] = std::move(node);
        return lastHandle_;
    }
    std::error_code removed(const std::filesystem::path& path, bool folder)
    {
        if (const auto error = step())
            return error;
        const auto found = live_.find(path.native());
        if (found == live_.end())
            return {};
        if (found->second->folder != folder)
            return std::make_error_code(folder ? std::errc::not_a_directory : std::errc::is_a_directory);
        live_.erase(found);
        return {};
    }

    FaultPlan* plan_;
    Names live_{};
    Names synced_{};
    std::map<FileHandle, std::shared_ptr<Node>> open_{};
    FileHandle lastHandle_ = 0;
    std::multimap<std::string, std::string> renamed_{};
};

/// Secrets that a power cut does not touch, and that fail by plan.
class PlannedKeychain final : public KeychainItemStoring {
public:
    explicit PlannedKeychain(FaultPlan& plan) : plan_{&plan} {}
    PlannedKeychain(const PlannedKeychain& other, FaultPlan& plan) : items{other.items}, plan_{&plan} {}

    KeychainLookup read(std::string_view service, std::string_view account) override
    {
        if (const auto status = step())
            return KeychainFailure{status};
        const auto found = items.find({std::string{service}, std::string{account}});
        if (found == items.end())
            return KeychainItemNotFound{};
        // One that is malformed looks as if it were to be made, which only the lock makes safe.
        EXPECT_FALSE(found->second.size() == 32 && isLocked && isLocked())
            << "a person may be asked now, and everybody else waits";
        return SecretText{std::string_view{found->second}};
    }
    std::int32_t write(std::string_view service, std::string_view account, const SecretText& data) override
    {
        if (const auto status = step())
            return status;
        items[{std::string{service}, std::string{account}}] = data.reveal();
        return keychainStatus::success;
    }
    std::int32_t remove(std::string_view service, std::string_view account) override
    {
        if (const auto status = step())
            return status;
        return items.erase({std::string{service}, std::string{account}}) ? keychainStatus::success
                                                                         : keychainStatus::itemNotFound;
    }

    std::map<std::pair<std::string, std::string>, std::string> items;
    std::function<bool()> isLocked{};  ///< Whether somebody holds up all others.

private:
    std::int32_t step()
    {
        const bool fails = plan_->fails(FaultPlan::Kind::error, plan_->status != keychainStatus::success);
        return fails ? plan_->status : keychainStatus::success;
    }
    FaultPlan* plan_;
};

}  // namespace tidewell
