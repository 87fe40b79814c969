#include "platform/linux/SoundOutput.h"

#include <pulse/ext-stream-restore.h>
#include <pulse/pulseaudio.h>
#include <algorithm>
#include <filesystem>
#include <string_view>

#include "platform/linux/SharedLibrary.h"

namespace tidewell {
namespace {

/// What the server plays into when there is no device.
constexpr std::string_view noDevice = "auto_null";
/// Where the server keeps mute and volume of the sounds that announce events.
constexpr std::string_view eventSounds = "sink-input-by-media-role:event";

/// The functions of libpulse that are used here.
struct Pulse {
    decltype(&pa_mainloop_new) mainloopNew;
    decltype(&pa_mainloop_free) mainloopFree;
    decltype(&pa_mainloop_get_api) mainloopApi;
    decltype(&pa_mainloop_iterate) iterate;
    decltype(&pa_context_new) contextNew;
    decltype(&pa_context_unref) contextUnref;
    decltype(&pa_context_set_state_callback) setStateCallback;
    decltype(&pa_context_connect) connect;
    decltype(&pa_context_disconnect) disconnect;
    decltype(&pa_context_get_state) state;
    decltype(&pa_context_get_server_info) serverInfo;
    decltype(&pa_context_get_sink_info_by_name) sinkInfo;
    decltype(&pa_context_rttime_new) timer;
    decltype(&pa_rtclock_now) now;
    decltype(&pa_operation_unref) operationUnref;
    decltype(&pa_ext_stream_restore_read) readStreamRestore;
    decltype(&pa_cvolume_max) loudest;

    bool complete = false;

    Pulse()
    {
        SharedLibrary library{"libpulse.so.0"};
        library.load(mainloopNew, "pa_mainloop_new");
        library.load(mainloopFree, "pa_mainloop_free");
        library.load(mainloopApi, "pa_mainloop_get_api");
        library.load(iterate, "pa_mainloop_iterate");
        library.load(contextNew, "pa_context_new");
        library.load(contextUnref, "pa_context_unref");
        library.load(setStateCallback, "pa_context_set_state_callback");
        library.load(connect, "pa_context_connect");
        library.load(disconnect, "pa_context_disconnect");
        library.load(state, "pa_context_get_state");
        library.load(serverInfo, "pa_context_get_server_info");
        library.load(sinkInfo, "pa_context_get_sink_info_by_name");
        library.load(timer, "pa_context_rttime_new");
        library.load(now, "pa_rtclock_now");
        library.load(operationUnref, "pa_operation_unref");
        library.load(readStreamRestore, "pa_ext_stream_restore_read");
        library.load(loudest, "pa_cvolume_max");
        complete = library.complete();
    }

    /// Null when the library is not installed.
    static const Pulse* get()
    {
        static const Pulse library;
        return library.complete ? &library : nullptr;
    }
};

/// One conversation with the server, on one thread.
class Question {
public:
    Question(const Pulse& pulse, const std::string& server) : pulse_{pulse}, server_{server} {}

    SoundOutputState ask(std::chrono::milliseconds deadline)
    {
        pa_mainloop* const loop = pulse_.mainloopNew();
        context_ = pulse_.contextNew(pulse_.mainloopApi(loop), "Tidewell");
        pulse_.setStateCallback(context_, stateChanged, this);
        const auto wait = std::chrono::duration_cast<std::chrono::microseconds>(deadline).count();
        pulse_.timer(context_, pulse_.now() + static_cast<pa_usec_t>(wait), timeIsUp, this);
        if (pulse_.connect(context_, server_.empty() ? nullptr : server_.c_str(), PA_CONTEXT_NOFLAGS,
                           nullptr) < 0)
            ended_ = true;
        while (!ended_ && pulse_.iterate(loop, 1, nullptr) >= 0) {
        }
        pulse_.setStateCallback(context_, nullptr, nullptr);
        pulse_.disconnect(context_);
        pulse_.contextUnref(context_);
        pulse_.mainloopFree(loop);
        if (!reached_ && !late_)
            found_.present = soundDeviceExists() ? std::nullopt : std::optional{false};
        return found_;
    }

private:
    static Question& self(void* data) { return *static_cast<Question*>(data); }

    void begun(pa_operation* operation)
    {
        if (operation == nullptr)
            ended_ = true;
        else
            pulse_.operationUnref(operation);
    }

    static void timeIsUp(pa_mainloop_api*, pa_time_event*, const timeval*, void* data)
    {
        self(data).late_ = true;
        self(data).ended_ = true;
        if (!self(data).found_.present)
            self(data).found_.present = false;
    }

    static void stateChanged(pa_context* context, void* data)
    {
        Question& question = self(data);
        const pa_context_state_t state = question.pulse_.state(context);
        if (state == PA_CONTEXT_READY) {
            question.reached_ = true;
            question.begun(question.pulse_.serverInfo(context, serverAnswered, data));
        } else if (state == PA_CONTEXT_FAILED || state == PA_CONTEXT_TERMINATED) {
            question.ended_ = true;
        }
    }

    static void serverAnswered(pa_context* context, const pa_server_info* info, void* data)
    {
        Question& question = self(data);
        question.found_.present = false;
        const char* const sink = info == nullptr ? nullptr : info->default_sink_name;
        if (sink == nullptr || sink == noDevice)
            question.ended_ = true;
        else
            question.begun(question.pulse_.sinkInfo(context, sink, sinkAnswered, data));
    }

    static void sinkAnswered(pa_context* context, const pa_sink_info* info, int end, void* data)
    {
        Question& question = self(data);
        if (end == 0 && info != nullptr) {
            question.found_.present = true;
            question.found_.muted = info->mute != 0;
            question.found_.volume = question.fraction(info->volume);
        } else if (question.found_.present == true) {
            question.begun(question.pulse_.readStreamRestore(context, streamAnswered, data));
        } else {
            question.ended_ = true;
        }
    }

    static void streamAnswered(pa_context*, const pa_ext_stream_restore_info* info, int end, void* data)
    {
        Question& question = self(data);
        if (end != 0 || info == nullptr) {
            question.ended_ = true;
            return;
        }
        if (info->name == nullptr || info->name != eventSounds)
            return;
        question.found_.muted = question.found_.muted == true || info->mute != 0;
        if (info->volume.channels > 0 && question.found_.volume)
            question.found_.volume = *question.found_.volume * question.fraction(info->volume);
    }

    double fraction(const pa_cvolume& volume) const
    {
        return static_cast<double>(pulse_.loudest(&volume)) / static_cast<double>(PA_VOLUME_NORM);
    }

    const Pulse& pulse_;
    const std::string& server_;
    pa_context* context_ = nullptr;
    SoundOutputState found_{};
    bool reached_ = false;
    bool late_ = false;
    bool ended_ = false;
};

}  // namespace

SoundOutputState askSoundOutput(const std::string& server, std::chrono::milliseconds deadline)
{
    const Pulse* const pulse = Pulse::get();
    if (pulse == nullptr)
        return {.present = soundDeviceExists() ? std::nullopt : std::optional{false}};
    return Question{*pulse, server}.ask(deadline);
}

bool soundDeviceExists()
{
    std::error_code none;
    // Named pcmC0D0p, where the last letter says that it plays.
    return std::ranges::any_of(std::filesystem::directory_iterator{"/dev/snd", none}, [](const auto& entry) {
        const std::string name = entry.path().filename().string();
        return name.starts_with("pcm") && name.ends_with('p');
    });
}

}  // namespace tidewell
