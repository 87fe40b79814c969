#include "program/Process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>

#include "program/Commands.h"

namespace tidewell {

namespace {

/// A connection to that Unix socket, if something listens; a leading '@' stands for the abstract name space.
UniqueFd connectTo(std::string_view path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return {};
    std::memcpy(address.sun_path, path.data(), path.size());
    if (path.front() == '@')
        address.sun_path[0] = '\0';
    UniqueFd socket{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    const void* where = &address;
    if (!socket || ::connect(socket.get(), static_cast<const sockaddr*>(where), size) != 0)
        return {};
    return socket;
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
    // The lowest free number is the closed one. Opened for reading, it refuses what is written to it.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(stream, F_GETFD) < 0)
            (void)::open("/dev/null", stream == STDERR_FILENO ? O_WRONLY : O_RDONLY);
}

void endAtOnceOn(std::span<const int> signals)
{
    for (const int signal : signals)
        if (std::signal(signal, [](int) { ::_exit(static_cast<int>(ExitCode::good)); }) == SIG_IGN)
            std::signal(signal, SIG_IGN);
}

ExitCode afterOutput(ExitCode code)
{
    errno = 0;
    if ((std::fflush(stdout) == 0 && std::ferror(stdout) == 0) || errno == EPIPE)
        return code;
    return report({ExitCode::failure, "The output cannot be written: " +
                                          std::generic_category().message(errno != 0 ? errno : EIO) + "."});
}

void endProcessUnless(bool everyThreadEnded, ExitCode code)
{
    if (everyThreadEnded)
        return;
    (void)std::fflush(nullptr);
    ::_exit(static_cast<int>(code));
}

DisplayProbe::DisplayProbe()
{
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string{value ? value : ""};
    };
    const auto wayland = variable("WAYLAND_DISPLAY");
    if (!wayland.empty())
        connection_ =
            connectTo(wayland.starts_with('/') ? wayland : variable("XDG_RUNTIME_DIR") + "/" + wayland);
    const auto display = variable("DISPLAY");
    if (!connection_ && !display.empty()) {
        if (!display.starts_with(':') && !display.starts_with("unix:")) {
            answers_ = true;  // Over the network.
            return;
        }
        const auto colon = display.rfind(':');
        const auto number = display.substr(colon + 1, display.find('.', colon) - colon - 1);
        connection_ = connectTo("@/tmp/.X11-unix/X" + number);
        if (!connection_)
            connection_ = connectTo("/tmp/.X11-unix/X" + number);
    }
    answers_ = static_cast<bool>(connection_);
}

}  // namespace tidewell
