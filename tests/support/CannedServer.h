#pragma once

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <list>
#include <thread>

namespace tidewell {

/// A server on 127.0.0.1 that says what a test tells it to, byte for byte; plain sockets, so that it can
/// also break every rule of HTTP. One thread for each connection.
class CannedServer {
public:
    /// One connection, at the moment when a request has come in.
    class Connection {
    public:
        explicit Connection(int socket) : socket_{socket} {}

        /// False when the client has gone.
        bool send(std::string_view bytes) const
        {
            while (!bytes.empty()) {
                const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
                if (sent <= 0)
                    return false;
                bytes.remove_prefix(static_cast<std::size_t>(sent));
            }
            return true;
        }

        /// Blocks until the client goes away.
        void waitForClose() const
        {
            char byte = 0;
            while (::recv(socket_, &byte, 1, 0) > 0) {
            }
        }

        /// Ends the connection with a reset instead of an orderly close.
        void resetWhenClosed() const
        {
            const linger now{.l_onoff = 1, .l_linger = 0};
            setsockopt(socket_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        }

        [[nodiscard]] int socket() const { return socket_; }

    private:
        int socket_;
    };

    /// Answers `request`; returns whether the connection stays open for another one.
    using Answer = std::function<bool(const Connection&, const std::string& request)>;

    explicit CannedServer(Answer answer) : answer_{std::move(answer)}
    {
        listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        // NOLINTBEGIN: the socket interface is as it is.
        ::bind(listener_, reinterpret_cast<sockaddr*>(&address), size);
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
        // NOLINTEND
        ::listen(listener_, 16);
        port_ = ntohs(address.sin_port);
        acceptor_ = std::thread{[this] { accept(); }};
    }

    ~CannedServer()
    {
        ::shutdown(listener_, SHUT_RDWR);
        acceptor_.join();
        ::close(listener_);
        {
            const std::lock_guard lock{mutex_};
            for (const int socket : open_)
                ::shutdown(socket, SHUT_RDWR);
        }
        for (std::thread& thread : threads_)
            thread.join();
    }

    [[nodiscard]] std::string url(std::string_view path) const
    {
        return "http://127.0.0.1:" + std::to_string(port_) + std::string{path};
    }
    [[nodiscard]] int port() const { return port_; }

    [[nodiscard]] std::size_t connections()
    {
        const std::lock_guard lock{mutex_};
        return threads_.size();
    }

    /// Every request so far, whole.
    [[nodiscard]] std::vector<std::string> requests()
    {
        const std::lock_guard lock{mutex_};
        return requests_;
    }

    /// Blocks until so many requests have come in.
    void waitForRequests(std::size_t count)
    {
        std::unique_lock lock{mutex_};
        arrived_.wait(lock, [&] { return requests_.size() >= count; });
    }

private:
    void accept()
    {
        for (;;) {
            const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            if (socket < 0)
                return;
            const std::lock_guard lock{mutex_};
            open_.push_back(socket);
            threads_.emplace_back([this, socket] { serve(socket); });
        }
    }

    void serve(int socket)
    {
        const Connection connection{socket};
        for (std::string request = read(socket); !request.empty(); request = read(socket)) {
            {
                const std::lock_guard lock{mutex_};
                requests_.push_back(request);
            }
            arrived_.notify_all();
            if (!answer_(connection, request))
                break;
        }
        const std::lock_guard lock{mutex_};
        std::erase(open_, socket);
        ::close(socket);
    }

    /// One request with its body; empty when the client has gone.
    static std::string read(int socket)
    {
        std::string text;
        char byte = 0;
        while (!text.ends_with("\r\n\r\n")) {
            if (::recv(socket, &byte, 1, 0) <= 0)
                return {};
            text += byte;
        }
        std::size_t left = 0;
        if (const std::size_t at = text.find("Content-Length: "); at != std::string::npos)
            left = static_cast<std::size_t>(std::atoi(text.c_str() + at + 16));
        for (; left > 0 && ::recv(socket, &byte, 1, 0) > 0; --left)
            text += byte;
        return text;
    }

    Answer answer_;
    int listener_ = -1;
    int port_ = 0;
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<std::string> requests_;
    std::vector<int> open_;
    std::list<std::thread> threads_;
    std::thread acceptor_;
};

}  // namespace tidewell
