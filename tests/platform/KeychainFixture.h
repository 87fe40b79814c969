#pragma once

#include <QDBusConnectionInterface>
#include <cstdlib>
#include <fstream>

#include "TestBus.h"

namespace tidewell {

/// All tests share one bus, as the process shares one connection to it.
class KeychainItemStoreTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder = std::make_unique<TemporaryFolder>();
        bus = std::make_unique<TestBus>();
        for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
            ::setenv(name, folder->path().c_str(), 1);
        ::setenv("DBUS_SESSION_BUS_ADDRESS", bus->address().toUtf8().constData(), 1);
    }
    static void TearDownTestSuite()
    {
        bus.reset();
        folder.reset();
    }

    /// Starts gnome-keyring with its store open, or locked; nothing where it is not installed.
    static std::unique_ptr<ChildProcess> startKeyring(bool unlocked)
    {
        if (std::system("command -v gnome-keyring-daemon >/dev/null") != 0)
            return nullptr;
        const auto keyrings = folder->path() / "keyrings";
        std::filesystem::create_directories(keyrings);
        // The store that new items go to is the one that the password opens.
        std::ofstream{keyrings / "default"} << "login";
        std::vector<std::string> command{"gnome-keyring-daemon", "--foreground", "--components=secrets"};
        if (unlocked)
            command.push_back("--unlock");
        auto daemon = std::make_unique<ChildProcess>(command, unlocked ? "open sesame" : "");
        QDBusConnection connection = bus->connect();
        EXPECT_TRUE(
            runUntil([&] { return connection.interface()->isServiceRegistered("org.freedesktop.secrets"); }));
        return daemon;
    }

    static inline std::unique_ptr<TemporaryFolder> folder{};
    static inline std::unique_ptr<TestBus> bus{};
};

}  // namespace tidewell
