#include "program/PasswordInput.h"

#include <fmt/format.h>
#include <termios.h>
#include <unistd.h>

#include <QByteArrayView>
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

namespace tidewell {

namespace {

constexpr std::size_t longestPassword = 4096;

/// Switches the terminal's echo off while a password is typed, and on again when that is broken off.
class SilentTerminal {
public:
    SilentTerminal()
    {
        if (::tcgetattr(STDIN_FILENO, &before_) != 0)
            return;
        active_ = true;
        struct sigaction restore{};
        restore.sa_handler = [](int signal) {
            (void)::tcsetattr(STDIN_FILENO, TCSANOW, &before_);
            (void)::raise(signal);
        };
        // The default is in force again, for the same signal too, when the handler raises it.
        restore.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
        for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP}) {
            struct sigaction present{};
            if (::sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_DFL)
                (void)::sigaction(signal, &restore, nullptr);
        }
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        (void)::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
        fmt::print(stderr, "Password: ");
    }
    ~SilentTerminal()
    {
        if (!active_)
            return;
        (void)::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        fmt::print(stderr, "\n");
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

private:
    static inline termios before_{};  ///< For the signal handler too.
    bool active_ = false;
};

}  // namespace

bool isTyped(std::string_view text)
{
    return QByteArrayView{text.data(), static_cast<qsizetype>(text.size())}.isValidUtf8() &&
           std::ranges::none_of(text, [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; });
}

std::expected<SecretText, CommandError> readPassword()
{
    const SilentTerminal silent;
    std::array<char, longestPassword + 2> buffer;
    std::size_t size = 0;
    std::size_t end = 0;
    while (size < buffer.size()) {
        const auto count = ::read(STDIN_FILENO, buffer.data() + size, buffer.size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        size += static_cast<std::size_t>(count);
        if (std::find(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(size), '\n') !=
            buffer.begin() + static_cast<std::ptrdiff_t>(size))
            break;
    }
    while (end < size && buffer[end] != '\n')
        ++end;
    if (end > 0 && buffer[end - 1] == '\r')
        --end;
    SecretText password{std::string_view{buffer.data(), end}};
    wipe(buffer.data(), buffer.size());
    if (password.empty())
        return std::unexpected(CommandError{ExitCode::usage, "There is no password on standard input."});
    if (end > longestPassword)
        return std::unexpected(CommandError{ExitCode::usage, "The password is longer than 4096 bytes."});
    if (!isTyped(password.reveal()))
        return std::unexpected(
            CommandError{ExitCode::usage, "The password holds control characters, or is not text in UTF-8."});
    return password;
}

}  // namespace tidewell
