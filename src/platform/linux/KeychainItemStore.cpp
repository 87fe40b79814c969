#include "platform/linux/KeychainItemStore.h"

// The path of a session belongs to the part of the library that must be asked for.
#define SECRET_API_SUBJECT_TO_CHANGE 1
#include <libsecret/secret.h>

#include <condition_variable>
#include <cstring>
#include <deque>
#include <expected>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "platform/linux/GObject.h"
#include "support/Base64.h"
#include "support/Log.h"

namespace tidewell {
namespace {

using Moment = std::chrono::steady_clock;

const Log log{"KeychainItemStore"};

/// Larger contents are none of ours.
constexpr std::size_t largestContent = 1024 * 1024;
/// For the answer to a goodbye.
constexpr int closeMilliseconds = 500;

const SecretSchema& schema()
{
    static const SecretSchema made = [] {
        SecretSchema schema{};
        schema.name = "org.tidewell.Tidewell";
        schema.flags = SECRET_SCHEMA_NONE;
        schema.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
        schema.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
        return schema;
    }();
    return made;
}

/// One call on its way. Shared by the caller, who may give up, and the thread that carries it out.
struct Call {
    std::function<std::int32_t(Call&)> work;
    GObjectPtr<GCancellable> cancellable{g_cancellable_new()};
    SecretText found{};       ///< Of a read; the caller takes it once `status` is there.
    bool mayAskAgain = true;  ///< Opens a dialog even though the person closed the last one.

    // Under the worker's lock.
    std::optional<std::int32_t> status{};
    bool begun = false;
    bool abandoned = false;
    std::optional<Moment::time_point> prompting{};  ///< Since when an unlock dialog is open.
};

std::int32_t statusOf(const GError* error)
{
    if (error != nullptr && error->domain == SECRET_ERROR) {
        // A store without any collection cannot be unlocked either; setting one up needs a person as well.
        if (error->code == SECRET_ERROR_IS_LOCKED || error->code == SECRET_ERROR_NO_SUCH_OBJECT)
            return keychainStatus::interactionNotAllowed;
    }
    return keychainStatus::notAvailable;
}

struct AttributesUnref {
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
using Attributes = std::unique_ptr<GHashTable, AttributesUnref>;

struct Name {
    std::string service;
    std::string account;

    [[nodiscard]] Attributes attributes() const
    {
        return Attributes{secret_attributes_build(&schema(), "service", service.c_str(), "account",
                                                  account.c_str(), nullptr)};
    }
};

/// The secret service for the length of one call, with a session of its own that is closed afterwards.
class Session final {
public:
    /// Fails with the status to return.
    static std::expected<Session, std::int32_t> open(GCancellable* cancellable)
    {
        GErrorSlot error;
        const GObjectPtr<GDBusConnection> bus{g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable, error.fill())};
        if (!bus)
            return std::unexpected{statusOf(error.get())};
        // Else the library ends the whole process when the bus goes away.
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
        Session session;
        session.service_.reset(secret_service_open_sync(
            SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, cancellable, error.fill()));
        if (!session.service_)
            return std::unexpected{statusOf(error.get())};
        return session;
    }
    Session(Session&&) = default;
    Session& operator=(Session&&) = delete;
    ~Session()
    {
        const char* path = service_ ? secret_service_get_session_dbus_path(service_.get()) : nullptr;
        if (path == nullptr)
            return;
        // Waits, since the connection may go with this object, and with it what was not sent yet.
        GErrorSlot ignored;
        GVariant* answer = g_dbus_connection_call_sync(
            g_dbus_proxy_get_connection(proxy()), g_dbus_proxy_get_name(proxy()), path,
            "org.freedesktop.Secret.Session", "Close", nullptr, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
            closeMilliseconds, nullptr, ignored.fill());
        if (answer != nullptr)
            g_variant_unref(answer);
    }

    [[nodiscard]] SecretService* get() const { return service_.get(); }

private:
    Session() = default;
    [[nodiscard]] GDBusProxy* proxy() const { return G_DBUS_PROXY(service_.get()); }
    GObjectPtr<SecretService> service_{};
};

struct ItemListFree {
    void operator()(GList* list) const { g_list_free_full(list, g_object_unref); }
};
using ItemList = std::unique_ptr<GList, ItemListFree>;

SecretItem* itemOf(const GList* node) { return SECRET_ITEM(node->data); }

/// All items of this name, locked ones too. Without asking for locked ones, "locked" looks like "absent".
std::expected<ItemList, std::int32_t> search(const Session& session, const Name& name,
                                             GCancellable* cancellable)
{
    GErrorSlot error;
    ItemList items{secret_service_search_sync(session.get(), &schema(), name.attributes().get(),
                                              SECRET_SEARCH_ALL, cancellable, error.fill())};
    if (error)
        return std::unexpected{statusOf(error.get())};
    return items;
}

/// The one that was written last: normally there is no other.
SecretItem* newestOf(const ItemList& items)
{
    SecretItem* newest = nullptr;
    for (const GList* node = items.get(); node != nullptr; node = node->next) {
        if (newest == nullptr || secret_item_get_modified(itemOf(node)) > secret_item_get_modified(newest))
            newest = itemOf(node);
    }
    return newest;
}

/// Nothing where the service says that there is none.
std::expected<GObjectPtr<SecretCollection>, std::int32_t> defaultCollection(const Session& session,
                                                                            GCancellable* cancellable)
{
    GErrorSlot error;
    GObjectPtr<SecretCollection> collection{secret_collection_for_alias_sync(
        session.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, cancellable, error.fill())};
    const bool saysNone = g_error_matches(error.get(), SECRET_ERROR, SECRET_ERROR_NO_SUCH_OBJECT) != FALSE ||
                          g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_OBJECT) != FALSE;
    if (error && !saysNone)
        return std::unexpected{statusOf(error.get())};
    return collection;
}

}  // namespace

/// Carries out calls one after the other on a thread that lives while there are any. A caller that gives up
/// leaves the call behind; when the service hangs beyond help, so does this thread, and later calls end by
/// their deadlines.
struct KeychainItemStore::Worker : std::enable_shared_from_this<Worker> {
    explicit Worker(Deadlines chosen) : deadlines{chosen} {}

    const Deadlines deadlines;
    std::mutex lock{};
    std::condition_variable changed{};
    std::deque<std::shared_ptr<Call>> queue{};  ///< Under lock.
    std::shared_ptr<Call> current{};            ///< Under lock.
    bool running = false;                       ///< Under lock.
    bool dialogClosed = false;     ///< Under lock: the person closed the last unlock dialog unanswered.
    Moment::time_point begunAt{};  ///< Under lock: when the current call began, or its dialog closed.

    std::int32_t carryOut(const std::shared_ptr<Call>& call)
    {
        const auto start = Moment::now();
        std::unique_lock guard{lock};
        queue.push_back(call);
        if (!running) {
            running = true;
            std::thread{[self = shared_from_this()] { self->run(); }}.detach();
        }
        changed.notify_all();
        while (!call->status) {
            const auto end = deadlineOf(*call, start);
            if (Moment::now() >= end)
                return giveUp(*call);
            changed.wait_until(guard, end);
        }
        return *call->status;
    }

private:
    /// While a dialog is open, everybody waits for that one, until it has stood for long enough.
    [[nodiscard]] Moment::time_point deadlineOf(const Call& call, Moment::time_point start) const
    {
        if (current && current->prompting)
            return *current->prompting + deadlines.prompt;
        return (call.begun ? std::max(start, begunAt) : start) + deadlines.answer;
    }

    std::int32_t giveUp(Call& call)
    {
        const bool dialogOpen = current && current->prompting;
        call.abandoned = true;
        std::erase_if(queue, [&](const auto& waiting) { return waiting.get() == &call; });
        // An open dialog is left alone: taking it away and asking again has crashed providers.
        if (!call.prompting)
            g_cancellable_cancel(call.cancellable.get());
        log.warning(dialogOpen ? "The dialog that unlocks the secret store was not answered in time"
                               : "The secret store did not answer in time");
        return dialogOpen ? keychainStatus::interactionNotAllowed : keychainStatus::notAvailable;
    }

    void run()
    {
        // Signals of the service's objects go here rather than to the main thread's context.
        GMainContext* context = g_main_context_new();
        g_main_context_push_thread_default(context);
        std::unique_lock guard{lock};
        while (!queue.empty()) {
            current = queue.front();
            queue.pop_front();
            current->begun = true;
            begunAt = Moment::now();
            const auto call = current;
            guard.unlock();
            const std::int32_t status = call->work(*call);
            call->work = nullptr;
            while (g_main_context_iteration(context, FALSE) != FALSE) {
            }
            guard.lock();
            call->status = status;
            call->prompting.reset();
            current.reset();
            changed.notify_all();
        }
        running = false;
        guard.unlock();
        g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
    }
};

/// The three operations, as the worker's thread carries them out.
struct KeychainItemStore::Operations {
    Worker& worker;
    Call& call;

    [[nodiscard]] GCancellable* cancellable() const { return call.cancellable.get(); }

    [[nodiscard]] bool isAbandoned() const
    {
        const std::lock_guard guard{worker.lock};
        return call.abandoned;
    }

    /// Asks the person to unlock; success when everything is open. Takes as long as the dialog stands.
    [[nodiscard]] std::int32_t unlock(const Session& session, GObject* locked) const
    {
        const auto start = Moment::now();
        {
            const std::lock_guard guard{worker.lock};
            if (call.abandoned)
                return keychainStatus::notAvailable;
            if (worker.dialogClosed && !call.mayAskAgain)
                return keychainStatus::userCanceled;
            call.prompting = start;
            worker.changed.notify_all();
        }
        GErrorSlot error;
        GList single{.data = locked, .next = nullptr, .prev = nullptr};
        const int opened = secret_service_unlock_sync(session.get(), &single, nullptr, nullptr, error.fill());
        bool abandoned = false;
        {
            const std::lock_guard guard{worker.lock};
            call.prompting.reset();
            worker.begunAt = Moment::now();
            abandoned = call.abandoned;
            worker.changed.notify_all();
        }
        if (error)
            return statusOf(error.get());
        const bool closed = opened == 0 && Moment::now() - start >= worker.deadlines.seen;
        {
            const std::lock_guard guard{worker.lock};
            worker.dialogClosed = closed;
        }
        if (opened == 0)
            return closed ? keychainStatus::userCanceled : keychainStatus::interactionNotAllowed;
        return abandoned ? keychainStatus::interactionNotAllowed : keychainStatus::success;
    }

    /// The items of this name, every one of them unlocked. With none there, the default collection is
    /// unlocked before that is believed, since some providers do not search what is locked.
    [[nodiscard]] std::expected<ItemList, std::int32_t> unlockedItems(const Session& session,
                                                                      const Name& name) const
    {
        auto items = search(session, name, cancellable());
        if (!items)
            return items;
        if (!*items) {
            const auto collection = defaultCollection(session, cancellable());
            if (!collection)  // It may be locked, so nothing is known of the item.
                return std::unexpected{collection.error()};
            if (!*collection || secret_collection_get_locked(collection->get()) == FALSE)
                return items;
            if (const auto status = unlock(session, G_OBJECT(collection->get()));
                status != keychainStatus::success)
                return std::unexpected{status};
            items = search(session, name, cancellable());
            if (!items)
                return items;
        }
        for (const GList* node = items->get(); node != nullptr; node = node->next) {
            if (secret_item_get_locked(itemOf(node)) == FALSE)
                continue;
            if (const auto status = unlock(session, G_OBJECT(itemOf(node)));
                status != keychainStatus::success)
                return std::unexpected{status};
        }
        return items;
    }

    /// The content of an item, out of base64.
    [[nodiscard]] std::int32_t load(SecretItem* item, SecretText& content) const
    {
        GErrorSlot error;
        if (secret_item_load_secret_sync(item, cancellable(), error.fill()) == FALSE)
            return statusOf(error.get());
        SecretValue* value = secret_item_get_secret(item);
        if (value == nullptr)
            return keychainStatus::decode;
        gsize size = 0;
        const char* text = secret_value_get(value, &size);
        std::optional<std::string> bytes;
        if (size <= largestContent)
            bytes = bytesFromBase64({text, size});
        secret_value_unref(value);
        if (!bytes)
            return keychainStatus::decode;
        content = SecretText{std::move(*bytes)};
        return keychainStatus::success;
    }

    [[nodiscard]] std::int32_t read(const Name& name) const
    {
        auto session = Session::open(cancellable());
        if (!session)
            return session.error();
        const auto items = unlockedItems(*session, name);
        if (!items)
            return items.error();
        SecretItem* item = newestOf(*items);
        return item == nullptr ? keychainStatus::itemNotFound : load(item, call.found);
    }

    [[nodiscard]] std::int32_t write(const Name& name, const SecretText& data) const
    {
        auto session = Session::open(cancellable());
        if (!session)
            return session.error();
        const auto items = unlockedItems(*session, name);
        if (!items)
            return items.error();
        if (isAbandoned())
            return keychainStatus::notAvailable;

        std::string text = base64(data.reveal());
        SecretValue* value = secret_value_new(text.data(), static_cast<gssize>(text.size()), "text/plain");
        wipe(text.data(), text.size());
        SecretItem* item = newestOf(*items);
        GErrorSlot error;
        const bool written =
            item != nullptr ? secret_item_set_secret_sync(item, value, cancellable(), error.fill()) != FALSE
                            : secret_service_store_sync(session->get(), &schema(), name.attributes().get(),
                                                        SECRET_COLLECTION_DEFAULT, name.service.c_str(),
                                                        value, cancellable(), error.fill()) != FALSE;
        secret_value_unref(value);
        if (!written)
            return statusOf(error.get());
        removeOthers(*items, item);
        return verify(*session, name, data);
    }

    /// Older copies, say in a collection that was the default once. They do no harm when they stay.
    void removeOthers(const ItemList& items, const SecretItem* kept) const
    {
        for (const GList* node = items.get(); node != nullptr; node = node->next) {
            if (itemOf(node) != kept)
                secret_item_delete_sync(itemOf(node), cancellable(), GErrorSlot{}.fill());
        }
    }

    [[nodiscard]] std::int32_t verify(const Session& session, const Name& name, const SecretText& data) const
    {
        const auto items = search(session, name, cancellable());
        if (!items)
            return items.error();
        SecretItem* item = newestOf(*items);
        if (item == nullptr)
            return keychainStatus::decode;
        SecretText stored;
        const std::int32_t status = load(item, stored);
        if (status != keychainStatus::success)
            return status;
        return stored == data ? keychainStatus::success : keychainStatus::decode;
    }

    [[nodiscard]] std::int32_t remove(const Name& name) const
    {
        auto session = Session::open(cancellable());
        if (!session)
            return session.error();
        const auto items = unlockedItems(*session, name);
        if (!items)
            return items.error();
        if (!*items)
            return keychainStatus::itemNotFound;
        if (isAbandoned())
            return keychainStatus::notAvailable;
        for (const GList* node = items->get(); node != nullptr; node = node->next) {
            GErrorSlot error;
            if (secret_item_delete_sync(itemOf(node), cancellable(), error.fill()) == FALSE)
                return statusOf(error.get());
        }
        return keychainStatus::success;
    }
};

KeychainItemStore::KeychainItemStore() : KeychainItemStore{Deadlines{}} {}

KeychainItemStore::KeychainItemStore(Deadlines deadlines) : worker_{std::make_shared<Worker>(deadlines)} {}

KeychainItemStore::~KeychainItemStore() = default;

KeychainLookup KeychainItemStore::read(std::string_view service, std::string_view account)
{
    const auto call = std::make_shared<Call>();
    call->mayAskAgain = false;
    call->work = [worker = worker_, name = Name{std::string{service}, std::string{account}}](Call& self) {
        return Operations{*worker, self}.read(name);
    };
    switch (const std::int32_t status = worker_->carryOut(call)) {
    case keychainStatus::success: return std::move(call->found);
    case keychainStatus::itemNotFound: return KeychainItemNotFound{};
    default: return KeychainFailure{status};
    }
}

std::int32_t KeychainItemStore::write(std::string_view service, std::string_view account,
                                      const SecretText& data)
{
    const auto call = std::make_shared<Call>();
    call->work = [worker = worker_, name = Name{std::string{service}, std::string{account}},
                  data](Call& self) { return Operations{*worker, self}.write(name, data); };
    return worker_->carryOut(call);
}

std::int32_t KeychainItemStore::remove(std::string_view service, std::string_view account)
{
    const auto call = std::make_shared<Call>();
    call->work = [worker = worker_, name = Name{std::string{service}, std::string{account}}](Call& self) {
        return Operations{*worker, self}.remove(name);
    };
    return worker_->carryOut(call);
}

}  // namespace tidewell
