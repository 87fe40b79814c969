#include "config/FileKeychainItemStore.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <cerrno>
#include <set>
#include <thread>
#include <utility>

#include "support/AtomicFile.h"
#include "support/Base64.h"
#include "support/Json.h"

namespace tidewell {

namespace {

constexpr std::int64_t formatVersion = 1;
/// A few passwords and keys take a few kilobytes.
constexpr std::size_t longestFile = 1 << 20;

std::string errorText(int code) { return std::generic_category().message(code); }

/// A file descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int number) : number_{number} {}
    Descriptor(Descriptor&& other) noexcept : number_{std::exchange(other.number_, -1)} {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }
    [[nodiscard]] bool valid() const { return number_ >= 0; }
    [[nodiscard]] int number() const { return number_; }

private:
    int number_;
};

/// Why the open file must not be trusted with secrets; empty when it may be.
std::string_view objection(const struct stat& status)
{
    if (!S_ISREG(status.st_mode))
        return "it is not a regular file";
    if (status.st_uid != ::geteuid())
        return "it belongs to another user";
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return "other users may read or write it; make it private with chmod 600";
    return {};
}

/// The bytes of the file; -1 with errno set when reading failed.
std::expected<std::string, int> readAll(int descriptor)
{
    std::string content;
    std::array<char, 16384> block{};
    for (;;) {
        const auto count = ::read(descriptor, block.data(), block.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::unexpected{errno};
        if (count == 0)
            break;
        content.append(block.data(), static_cast<std::size_t>(count));
        if (content.size() > longestFile)
            return std::unexpected{EFBIG};
    }
    wipe(block.data(), block.size());
    return content;
}

/// Overwrites the texts of a document that held secrets, before its memory is given back.
void wipeDocument(json::value& value)
{
    if (auto* text = value.if_string()) {
        wipe(text->data(), text->size());
    } else if (auto* array = value.if_array()) {
        for (json::value& element : *array)
            wipeDocument(element);
    } else if (auto* object = value.if_object()) {
        for (auto& member : *object)
            wipeDocument(member.value());
    }
}

}  // namespace

/// Keeps other threads and processes from writing while it lives.
class FileKeychainItemStore::Lock {
public:
    /// The lock, or why there is none: notAvailable when another process does not let go in time.
    static std::expected<Lock, std::int32_t> take(const FileKeychainItemStore& store)
    {
        auto path = store.file_;
        path += ".lock";
        if (const auto error = makePrivateFolder(store.file_.parent_path())) {
            store.log_.error(
                fmt::format("{} cannot be made: {}", store.file_.parent_path().string(), error.message()));
            return std::unexpected{keychainStatus::io};
        }
        Descriptor descriptor{
            ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600)};
        if (!descriptor.valid()) {
            store.log_.error(fmt::format("{} cannot be opened: {}", path.string(), errorText(errno)));
            return std::unexpected{keychainStatus::io};
        }
        constexpr std::chrono::milliseconds step{20};
        for (auto left = store.patience_; ::flock(descriptor.number(), LOCK_EX | LOCK_NB) != 0;) {
            if (errno == EINTR)
                continue;
            if (errno != EWOULDBLOCK || left <= std::chrono::milliseconds::zero()) {
                store.log_.error(fmt::format("{} cannot be locked: {}", path.string(), errorText(errno)));
                return std::unexpected{errno == EWOULDBLOCK ? keychainStatus::notAvailable
                                                            : keychainStatus::io};
            }
            std::this_thread::sleep_for(std::min(step, left));
            left -= step;
        }
        return Lock{std::move(descriptor)};
    }

private:
    explicit Lock(Descriptor descriptor) : descriptor_{std::move(descriptor)} {}
    Descriptor descriptor_;  ///< Closing it gives the lock back.
};

FileKeychainItemStore::FileKeychainItemStore(std::filesystem::path file, std::chrono::milliseconds patience)
    : file_{std::move(file)}, patience_{patience}
{
}

KeychainLookup FileKeychainItemStore::read(std::string_view service, std::string_view account)
{
    // Without the lock: the file is replaced as a whole, so it is always one of the two.
    auto items = load();
    if (!items)
        return KeychainFailure{items.error()};
    const auto item = find(*items, service, account);
    if (item == items->end())
        return KeychainItemNotFound{};
    return std::move(item->data);
}

std::int32_t FileKeychainItemStore::write(std::string_view service, std::string_view account,
                                          const SecretText& data)
{
    {
        const auto lock = Lock::take(*this);
        if (!lock)
            return lock.error();
        auto items = load();
        if (!items)
            return items.error();
        const auto item = find(*items, service, account);
        if (item != items->end())
            item->data = data;
        else
            items->push_back(
                {.service = std::string{service}, .account = std::string{account}, .data = data});
        if (const auto status = store(*items); status != keychainStatus::success)
            return status;
    }
    return verifyWritten(*this, service, account, data);
}

std::int32_t FileKeychainItemStore::remove(std::string_view service, std::string_view account)
{
    const auto lock = Lock::take(*this);
    if (!lock)
        return lock.error();
    auto items = load();
    if (!items)
        return items.error();
    const auto item = find(*items, service, account);
    if (item == items->end())
        return keychainStatus::itemNotFound;
    items->erase(item);
    return store(*items);
}

auto FileKeychainItemStore::load() const -> std::expected<Items, std::int32_t>
{
    // Without O_NONBLOCK a pipe in the file's place would hold us up.
    const Descriptor descriptor{::open(file_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK)};
    if (!descriptor.valid()) {
        if (errno == ENOENT)
            return Items{};
        log_.error(fmt::format("{} cannot be opened: {}", file_.string(), errorText(errno)));
        // O_NOFOLLOW reports a symbolic link this way; where it leads is not for us to trust.
        return std::unexpected{errno == ELOOP ? keychainStatus::invalidStore : keychainStatus::io};
    }
    struct stat status{};
    if (::fstat(descriptor.number(), &status) != 0)
        return std::unexpected{keychainStatus::io};
    if (const auto reason = objection(status); !reason.empty()) {
        log_.error(fmt::format("{} is refused: {}", file_.string(), reason));
        return std::unexpected{keychainStatus::invalidStore};
    }
    auto content = readAll(descriptor.number());
    if (!content) {
        log_.error(fmt::format("{} cannot be read: {}", file_.string(), errorText(content.error())));
        return std::unexpected{keychainStatus::io};
    }
    auto items = decode(*content);
    wipe(content->data(), content->size());
    if (!items) {
        log_.error(fmt::format("{} is damaged and was left as it is: {}", file_.string(), items.error()));
        return std::unexpected{keychainStatus::decode};
    }
    return std::move(*items);
}

auto FileKeychainItemStore::decode(std::string_view text) -> std::expected<Items, std::string>
{
    auto document = parseJson(text, {.bytes = longestFile, .depth = 8});
    if (!document)
        return std::unexpected{document.error().message};
    const auto read = [&document]() -> std::expected<Items, std::string> {
        const json::object* object = document->if_object();
        if (!object || optionalInteger(*object, "version") != std::optional{formatVersion})
            return std::unexpected{"its version is not one that we know"};
        const json::value* list = object->if_contains("items");
        if (!list || !list->is_array())
            return std::unexpected{"it has no list of items"};
        Items items;
        std::set<std::pair<std::string, std::string>> seen;
        for (const json::value& element : list->get_array()) {
            const json::object* member = element.if_object();
            if (!member)
                return std::unexpected{"an item is not an object"};
            auto service = requiredText(*member, "service");
            auto account = requiredText(*member, "account");
            auto data = requiredText(*member, "data");
            if (!service || !account || !data)
                return std::unexpected{"an item is incomplete"};
            auto bytes = bytesFromBase64(*data);
            wipe(data->data(), data->size());
            if (!bytes)
                return std::unexpected{"an item is not base64"};
            if (!seen.emplace(*service, *account).second)
                return std::unexpected{"an item stands twice"};
            items.push_back({.service = std::move(*service),
                             .account = std::move(*account),
                             .data = SecretText{std::move(*bytes)}});
        }
        return items;
    };
    auto items = read();
    wipeDocument(*document);
    return items;
}

std::int32_t FileKeychainItemStore::store(const Items& items) const
{
    json::array list;
    for (const Item& item : items) {
        std::string data = base64(item.data.reveal());
        list.push_back(json::object{{"service", item.service}, {"account", item.account}, {"data", data}});
        wipe(data.data(), data.size());
    }
    json::value document = json::object{{"version", formatVersion}, {"items", std::move(list)}};
    std::string text = json::serialize(document) + '\n';
    wipeDocument(document);
    // What we could not read again must not replace what we can.
    const bool readable = decode(text).has_value();
    const auto error =
        readable ? writeFileAtomically(file_, text) : std::make_error_code(std::errc::invalid_argument);
    wipe(text.data(), text.size());
    if (!error)
        return keychainStatus::success;
    log_.error(fmt::format("{} cannot be written: {}", file_.string(), error.message()));
    return keychainStatus::io;
}

auto FileKeychainItemStore::find(Items& items, std::string_view service, std::string_view account)
    -> Items::iterator
{
    return std::ranges::find_if(
        items, [&](const Item& item) { return item.service == service && item.account == account; });
}

}  // namespace tidewell
