#pragma once

#include "ui/SettingsPage.h"

namespace tidewell {

/// Which alerts come, when they stay silent, and whether the desktop shows them.
class SettingsAlertsPage final : public SettingsPage {
    Q_OBJECT
public:
    explicit SettingsAlertsPage(SettingsPageContext& context);
    void present() override;

private:
    void makeDesktop();
    void makeCategories();
    void makeQuietHours();
    void makeSnooze();
    SettingsTimeEdit* addTime(QBoxLayout& layout, const char* name, const QString& title,
                              const QString& spoken, std::int64_t AppSettings::* field);
    void presentQuietHours();

    SettingsNotice* denied_ = nullptr;
    QLabel* deniedAdvice_ = nullptr;
    QPushButton* openSettings_ = nullptr;
    QCheckBox* all_ = nullptr;
    std::vector<QCheckBox*> categories_;
    SettingsComboBox* repeat_ = nullptr;
    QLabel* repeatLabel_ = nullptr;
    QLabel* repeatStored_ = nullptr;
    QCheckBox* quietHours_ = nullptr;
    SettingsTimeEdit* from_ = nullptr;
    SettingsTimeEdit* to_ = nullptr;
    QLabel* quietNote_ = nullptr;
    QCheckBox* quietLows_ = nullptr;
    std::vector<QCheckBox*> snoozes_;
    QPushButton* test_ = nullptr;
    SettingsNotice* testResult_ = nullptr;
};

}  // namespace tidewell
