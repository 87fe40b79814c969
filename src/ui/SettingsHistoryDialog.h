#pragma once

#include <QDialog>
#include <functional>

#include "ui/SettingsWindow.h"

namespace tidewell {

/// Says what saving readings means, and for how long they are to be kept; asks whether to begin. Cancel is
/// the default, and what Escape means. Main thread.
class SettingsHistoryDialog final : public QDialog {
    Q_OBJECT
public:
    /// `accepted` gets the days.
    SettingsHistoryDialog(const GlucoseHistoryConfiguration& present, const SettingsFacts& places,
                          std::function<void(std::int64_t)> accepted, QWidget* parent);
};

}  // namespace tidewell
