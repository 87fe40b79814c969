#pragma once

#include "config/ThresholdOptions.h"
#include "ui/SettingsPage.h"

namespace tidewell {

/// Unit and thresholds.
class SettingsGlucosePage final : public SettingsPage {
    Q_OBJECT
public:
    explicit SettingsGlucosePage(SettingsPageContext& context);
    void present() override;

private:
    struct Threshold {
        ThresholdKind kind;
        double AppSettings::* field;
        SettingsComboBox* picker = nullptr;
        QLabel* stored = nullptr;  ///< What the list cannot show.
    };
    void makeThreshold(QBoxLayout& layout, Threshold& threshold, const char* name, const QString& title,
                       const QString& spoken);
    void presentThreshold(const Threshold& threshold, bool mmolL);

    SettingsComboBox* unit_ = nullptr;
    Threshold low_{ThresholdKind::low, &AppSettings::lowGlucoseThreshold};
    Threshold high_{ThresholdKind::high, &AppSettings::highGlucoseThreshold};
};

}  // namespace tidewell
