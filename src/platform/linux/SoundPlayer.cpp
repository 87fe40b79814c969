#include "platform/linux/SoundPlayer.h"

#include <canberra.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/linux/SharedLibrary.h"
#include "platform/linux/SoundOutput.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// Longer than any sound of a theme.
constexpr std::chrono::seconds longestSound = 12s;

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

}  // namespace

bool canPlaySounds() { return Canberra::get() != nullptr; }

bool playSoundFile(const fs::path& file)
{
    const Canberra* const canberra = Canberra::get();
    if (canberra == nullptr)
        return false;
    // Without a device the second way would only complain.
    return playFile(*canberra, "pulse", file) || (soundDeviceExists() && playFile(*canberra, "alsa", file));
}

}  // namespace tidewell
