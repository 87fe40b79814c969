#pragma once

#include "ui/SettingsPage.h"

namespace tidewell {

/// Start at login, the graph, and where things lie.
class SettingsGeneralPage final : public SettingsPage {
    Q_OBJECT
public:
    explicit SettingsGeneralPage(SettingsPageContext& context);
    void present() override;

private:
    void makePlaces();

    QCheckBox* startAtLogin_ = nullptr;
    SettingsNotice* loginProblem_ = nullptr;
    SettingsComboBox* graphWindow_ = nullptr;
    QLabel* graphStored_ = nullptr;
};

}  // namespace tidewell
