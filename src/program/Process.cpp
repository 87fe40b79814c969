#include "program/Process.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace tidewell {

namespace {

/// Whether something listens on that Unix socket; a leading '@' stands for the abstract name space.
bool listens(std::string_view path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, path.data(), path.size());
    if (path.front() == '@')
        address.sun_path[0] = '\0';
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        return false;
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    const bool connected = ::connect(socket, reinterpret_cast<const sockaddr*>(&address), size) == 0;
    ::close(socket);
    return connected;
}

}  // namespace

ProcessArguments& processArguments()
{
    static ProcessArguments arguments;
    return arguments;
}

void hardenProcess()
{
    const rlimit none{0, 0};
    (void)::setrlimit(RLIMIT_CORE, &none);
    // A handler that collects dumps through a pipe is not bound by the limit, but by this.
    (void)::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    std::signal(SIGPIPE, SIG_IGN);
}

void endProcessUnless(bool everyThreadEnded, ExitCode code)
{
    if (everyThreadEnded)
        return;
    (void)std::fflush(nullptr);
    ::_exit(static_cast<int>(code));
}

bool displayAnswers()
{
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string{value ? value : ""};
    };
    if (const auto wayland = variable("WAYLAND_DISPLAY"); !wayland.empty()) {
        if (listens(wayland.starts_with('/') ? wayland : variable("XDG_RUNTIME_DIR") + "/" + wayland))
            return true;
    }
    const auto display = variable("DISPLAY");
    if (display.empty())
        return false;
    if (!display.starts_with(':') && !display.starts_with("unix:"))
        return true;  // Over the network: only the toolkit can tell.
    const auto colon = display.rfind(':');
    const auto number = display.substr(colon + 1, display.find('.', colon) - colon - 1);
    return listens("@/tmp/.X11-unix/X" + number) || listens("/tmp/.X11-unix/X" + number);
}

}  // namespace tidewell
