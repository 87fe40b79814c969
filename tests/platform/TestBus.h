#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QString>

#include "testing/TemporaryFolder.h"

namespace tidewell {

/// A child process that ends with the object, and with this process at the latest.
class ChildProcess final {
public:
    /// Starts it with `input` on its standard input; its standard output is kept. Aborts the test when it
    /// cannot.
    explicit ChildProcess(const std::vector<std::string>& command, const std::string& input = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;

    /// Waits for one line of output.
    [[nodiscard]] std::string readLine();
    void signal(int number) const;

private:
    QProcess process_{};
};

/// A message bus of the test's own, on which nothing is started by itself but what a test asks for.
class TestBus final {
public:
    TestBus();
    /// From now on the bus runs the command when the name is wanted.
    void makeStartable(const std::string& name, const std::string& command);
    ~TestBus();

    [[nodiscard]] QString address() const { return address_; }
    /// A connection that is closed with the bus at the latest.
    [[nodiscard]] QDBusConnection connect();
    /// Stops the bus as a hung one: connections stay, nothing is answered.
    void freeze() const { daemon_->signal(19); }
    void thaw() const { daemon_->signal(18); }
    /// Ends the bus, and starts another one at the same address.
    void end();
    void begin();

private:
    TemporaryFolder folder_{};
    std::unique_ptr<ChildProcess> daemon_{};
    QString address_{};
    std::vector<QString> connections_{};
};

/// Runs the event loop until the condition holds. False when that took unreasonably long.
[[nodiscard]] bool runUntil(const std::function<bool()>& condition);

/// As any program on the bus can send it: that nobody owns the name now, or somebody else.
void forgeOwner(QDBusConnection& bus, const QString& name, const QString& owner = {});

/// Sends a call and runs the event loop until its answer is there.
[[nodiscard]] QDBusMessage callAndWait(QDBusConnection& bus, const QDBusMessage& message);

}  // namespace tidewell
