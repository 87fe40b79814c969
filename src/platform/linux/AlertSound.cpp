#include "platform/linux/AlertSound.h"

#include <canberra.h>

#include <QObject>
#include <QTimer>
#include <array>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/experimental/channel.hpp>
#include <boost/system/system_error.hpp>
#include <condition_variable>
#include <cstdlib>
#include <list>
#include <mutex>
#include <span>
#include <utility>

#include "platform/linux/Background.h"
#include "platform/linux/SharedLibrary.h"
#include "platform/linux/SoundOutput.h"
#include "support/Log.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

const Log log{"AlertSound"};

/// Longer than any sound of a theme.
constexpr std::chrono::seconds longestSound = 15s;
/// What waits for a sound waits a little longer than the sound does.
constexpr std::chrono::milliseconds longestWait = 16s;
/// More at once would only be threads that wait for a sound server that hangs.
constexpr int soundsAtOnce = 2;

/// The sound that belongs to each tone, then others that would do. All of the freedesktop sound naming
/// specification.
constexpr std::array urgentSounds{"alarm-clock-elapsed", "phone-incoming-call", "dialog-warning",
                                  "dialog-error", "bell"};
constexpr std::array standardSounds{"message-new-instant", "message", "dialog-information", "complete",
                                    "bell"};

std::span<const char* const> soundsFor(NotificationTone tone)
{
    if (tone == NotificationTone::urgent)
        return urgentSounds;
    return standardSounds;
}

/// The functions of libcanberra that are used here.
struct Canberra {
    decltype(&ca_context_create) create;
    decltype(&ca_context_destroy) destroy;
    decltype(&ca_context_set_driver) setDriver;
    decltype(&ca_context_open) open;
    decltype(&ca_context_play_full) playFull;
    decltype(&ca_proplist_create) listCreate;
    decltype(&ca_proplist_destroy) listDestroy;
    decltype(&ca_proplist_sets) listSet;
    bool complete = false;

    Canberra()
    {
        SharedLibrary library{"libcanberra.so.0"};
        library.load(create, "ca_context_create");
        library.load(destroy, "ca_context_destroy");
        library.load(setDriver, "ca_context_set_driver");
        library.load(open, "ca_context_open");
        library.load(playFull, "ca_context_play_full");
        library.load(listCreate, "ca_proplist_create");
        library.load(listDestroy, "ca_proplist_destroy");
        library.load(listSet, "ca_proplist_sets");
        complete = library.complete();
    }

    /// Null when the library is not installed.
    static const Canberra* get()
    {
        static const Canberra library;
        return library.complete ? &library : nullptr;
    }
};

/// How a sound ended, told from a thread of the library's.
struct SoundEnd {
    std::mutex lock{};
    std::condition_variable told{};
    std::optional<int> result{};

    static void tell(ca_context*, std::uint32_t, int result, void* data)
    {
        auto& end = *static_cast<SoundEnd*>(data);
        const std::lock_guard guard{end.lock};
        end.result = result;
        end.told.notify_all();
    }

    int wait()
    {
        std::unique_lock guard{lock};
        return told.wait_for(guard, longestSound, [this] { return result.has_value(); }) ? *result
                                                                                         : CA_ERROR_CANCELED;
    }
};

/// True when the whole sound has been played. Blocks until then.
bool playFile(const Canberra& canberra, const char* driver, const fs::path& file)
{
    SoundEnd end;  // Outlives the context, whose end may still tell.
    ca_context* made = nullptr;
    if (canberra.create(&made) != CA_SUCCESS)
        return false;
    const std::unique_ptr<ca_context, int (*)(ca_context*)> context{made, canberra.destroy};
    ca_proplist* properties = nullptr;
    if (canberra.listCreate(&properties) != CA_SUCCESS)
        return false;
    const std::unique_ptr<ca_proplist, int (*)(ca_proplist*)> list{properties, canberra.listDestroy};
    canberra.listSet(properties, CA_PROP_MEDIA_FILENAME, file.c_str());
    canberra.listSet(properties, CA_PROP_MEDIA_NAME, "Glucose alert");
    canberra.listSet(properties, CA_PROP_MEDIA_ROLE, "event");
    canberra.listSet(properties, CA_PROP_APPLICATION_NAME, "Tidewell");
    canberra.listSet(properties, CA_PROP_APPLICATION_ID, "org.tidewell.Tidewell");
    return canberra.setDriver(made, driver) == CA_SUCCESS && canberra.open(made) == CA_SUCCESS &&
           canberra.playFull(made, 1, properties, SoundEnd::tell, &end) == CA_SUCCESS &&
           end.wait() == CA_SUCCESS;
}

/// Empty when the sound was played, else why not. Blocks.
std::string playSound(NotificationTone tone)
{
    const fs::path file = alertSoundFile(tone, xdgDataFolders());
    if (file.empty())
        return "No sound theme with a sound for alerts is installed.";
    const Canberra* const canberra = Canberra::get();
    if (canberra == nullptr)
        return "The library that plays sounds, libcanberra, is not installed.";
    if (playFile(*canberra, "pulse", file))
        return {};
    // Without a device that library would only complain on the terminal.
    if (soundDeviceExists() && playFile(*canberra, "alsa", file))
        return {};
    return "The sound of an alert could not be played.";
}

}  // namespace

std::string_view alertSoundName(NotificationTone tone) { return soundsFor(tone).front(); }

fs::path alertSoundFile(NotificationTone tone, const std::vector<fs::path>& dataFolders)
{
    for (const char* name : soundsFor(tone)) {
        for (const fs::path& folder : dataFolders) {
            for (const char* ending : {".oga", ".ogg", ".wav"}) {
                fs::path file = folder / "sounds/freedesktop/stereo" / (std::string{name} + ending);
                std::error_code none;
                if (fs::is_regular_file(file, none))
                    return file;
            }
        }
    }
    return {};
}

std::vector<fs::path> xdgDataFolders()
{
    const auto variable = [](const char* name, std::string otherwise) {
        const char* const value = std::getenv(name);
        return value == nullptr || *value == '\0' ? std::move(otherwise) : std::string{value};
    };
    const std::string home = variable("HOME", "/");
    const std::string list = variable("XDG_DATA_HOME", home + "/.local/share") + ':' +
                             variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    std::vector<fs::path> folders;
    for (std::size_t begin = 0; begin <= list.size();) {
        const std::size_t end = std::min(list.find(':', begin), list.size());
        if (fs::path folder = list.substr(begin, end - begin); folder.is_absolute())
            folders.push_back(std::move(folder));
        begin = end + 1;
    }
    return folders;
}

bool alertSoundsInstalled()
{
    const auto folders = xdgDataFolders();
    return !alertSoundFile(NotificationTone::urgent, folders).empty() &&
           !alertSoundFile(NotificationTone::standard, folders).empty() && Canberra::get() != nullptr;
}

struct AlertSound::Impl : std::enable_shared_from_this<Impl> {
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;

    explicit Impl(asio::any_io_executor executor) : main{std::move(executor)} {}

    /// One sound on its way.
    struct Sound {
        std::shared_ptr<void> thread{};
        std::string problem{};
        bool givenUp = false;
    };

    asio::any_io_executor main;
    QObject timers{};
    std::string problem{};
    std::list<std::shared_ptr<Sound>> sounds{};
    std::list<std::shared_ptr<Wake>> waiters{};

    void play(NotificationTone tone)
    {
        if (sounds.size() >= soundsAtOnce) {
            say("The sound server does not answer.");
            return;
        }
        const auto sound = std::make_shared<Sound>();
        sounds.push_back(sound);
        // The thread has a text of its own: this object may go before it ends.
        const auto outcome = std::make_shared<std::string>();
        sound->thread = runInBackground([tone, outcome] { *outcome = playSound(tone); },
                                        [this, weak = std::weak_ptr{sound}, outcome] {
                                            sounds.remove(weak.lock());
                                            say(std::move(*outcome));
                                            wakeWaiters();
                                        });
        QTimer::singleShot(longestWait, &timers, [this, weak = std::weak_ptr{sound}] {
            const auto late = weak.lock();
            if (!late)
                return;
            late->givenUp = true;
            say("The sound server does not answer.");
            wakeWaiters();
        });
    }

    void say(std::string text)
    {
        if (!text.empty() && text != problem)
            log.warning(text);
        problem = std::move(text);
    }

    bool idle() const
    {
        return std::ranges::all_of(sounds, [](const auto& sound) { return sound->givenUp; });
    }

    void wakeWaiters()
    {
        if (!idle())
            return;
        for (const auto& waiter : std::exchange(waiters, {}))
            waiter->try_send(boost::system::error_code{});
    }

    static asio::awaitable<void> finished(std::shared_ptr<Impl> self)
    {
        if (self->idle())
            co_return;
        const auto wake = std::make_shared<Wake>(self->main, 1);
        self->waiters.push_back(wake);
        const auto [cancelled] = co_await wake->async_receive(asio::as_tuple(asio::use_awaitable));
        if (!cancelled)
            co_return;
        self->waiters.remove(wake);
        throw boost::system::system_error{asio::error::operation_aborted};
    }
};

AlertSound::AlertSound(asio::any_io_executor main) : impl_{std::make_shared<Impl>(std::move(main))} {}

AlertSound::~AlertSound() = default;

void AlertSound::play(NotificationTone tone) { impl_->play(tone); }

const std::string& AlertSound::problem() const { return impl_->problem; }

asio::awaitable<void> AlertSound::finished() { return Impl::finished(impl_); }

}  // namespace tidewell
