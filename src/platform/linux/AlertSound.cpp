#include "platform/linux/AlertSound.h"

#include <array>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/experimental/channel.hpp>
#include <boost/system/system_error.hpp>
#include <cstdlib>
#include <list>
#include <span>
#include <utility>

#include "platform/linux/DesktopHelper.h"
#include "support/Log.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

const Log log{"AlertSound"};

/// The helper ends a sound itself; this is for one that cannot.
constexpr std::chrono::milliseconds longestSound = 15s;
/// More at once would only be noise; an urgent one begins all the same.
constexpr int soundsAtOnce = 3;

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

struct AlertSound::Impl : std::enable_shared_from_this<Impl> {
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;

    Impl(asio::any_io_executor executor, QString program)
        : main{std::move(executor)}, helper{std::move(program)}
    {
    }

    const asio::any_io_executor main;
    const QString helper;
    std::string problem{};
    std::function<void()> problemHandler{};
    int playing = 0;
    bool leftOut = false;  ///< A sound was, since one last began.
    std::list<std::shared_ptr<Wake>> waiters{};

    static asio::awaitable<void> play(std::shared_ptr<Impl> self, NotificationTone tone)
    {
        const auto outcome = co_await playInHelper(self->helper, tone, longestSound);
        --self->playing;
        self->say(problemOf(outcome));
        if (self->playing == 0)
            for (const auto& waiter : std::exchange(self->waiters, {}))
                waiter->try_send(boost::system::error_code{});
    }

    static std::string problemOf(SoundOutcome outcome)
    {
        switch (outcome) {
        case SoundOutcome::played: return {};
        case SoundOutcome::noTheme: return "No sound theme with a sound for alerts is installed.";
        case SoundOutcome::noLibrary: return "The library that plays sounds, libcanberra, is not installed.";
        case SoundOutcome::failed: return "The sound of an alert could not be played.";
        case SoundOutcome::hung: return "The sound server does not answer.";
        }
        std::unreachable();
    }

    void say(std::string text)
    {
        if (text == problem)
            return;
        if (!text.empty())
            log.warning(text);
        problem = std::move(text);
        if (problemHandler)
            problemHandler();
    }

    static asio::awaitable<void> finished(std::shared_ptr<Impl> self)
    {
        if (self->playing == 0)
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

AlertSound::AlertSound(asio::any_io_executor main, const QString& helper)
    : impl_{std::make_shared<Impl>(std::move(main), helper)}
{
}

AlertSound::~AlertSound() { impl_->problemHandler = {}; }

void AlertSound::play(NotificationTone tone)
{
    if (tone != NotificationTone::urgent && impl_->playing >= soundsAtOnce) {
        if (!std::exchange(impl_->leftOut, true))
            log.warning("The sound of an alert was left out: earlier ones have not ended yet");
        return;
    }
    impl_->leftOut = false;
    ++impl_->playing;
    asio::co_spawn(impl_->main, Impl::play(impl_, tone), asio::detached);
}

const std::string& AlertSound::problem() const { return impl_->problem; }

void AlertSound::onProblemChange(std::function<void()> handler)
{
    impl_->problemHandler = std::move(handler);
}

asio::awaitable<void> AlertSound::finished() { return Impl::finished(impl_); }

}  // namespace tidewell
