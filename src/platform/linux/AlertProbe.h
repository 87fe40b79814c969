#pragma once

#include <QString>
#include <chrono>
#include <memory>
#include <string>

#include "platform/linux/DesktopHelper.h"
#include "polling/AlertHealth.h"
#include "support/Clock.h"

namespace tidewell {

struct AlertProbeOptions {
    QString sessionBusAddress{};  ///< Empty: the session's.
    QString systemBusAddress{};   ///< Empty: the system's.
    std::string soundServer{};    ///< As PULSE_SERVER names it; empty: the usual one.
    QString helper = desktopHelperProgram;
    /// Whether a notification server that the bus would start is started for the question. Otherwise its
    /// being installed counts as its answer: for looks at the start of a session, when the desktop's own is
    /// yet to come.
    bool startsServer = true;
};

/// Asks the desktop whether an alert would be seen and heard.
///
/// What cannot be asked stays empty. Made on the main thread, with a QCoreApplication; `clock` outlives it.
class AlertProbe final {
public:
    AlertProbe(asio::any_io_executor main, Clock& clock, AlertProbeOptions options = {});
    ~AlertProbe();

    /// Ends within two seconds whatever hangs. Awaited on any executor; a cancelled caller leaves at once
    /// with operation_aborted.
    [[nodiscard]] asio::awaitable<AlertPath> look();

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
