#pragma once

#include "ui/SettingsPage.h"

class QGridLayout;

namespace tidewell {

/// The account that is followed, and what can be done with it.
class SettingsAccountPage final : public SettingsPage {
    Q_OBJECT
public:
    explicit SettingsAccountPage(SettingsPageContext& context);
    void present() override;
    [[nodiscard]] static QString reconnectingText();

private:
    struct Row {
        QLabel* label;
        QLabel* value;
    };
    Row addRow(QGridLayout& grid, const char* name, const QString& title);
    static void presentRow(const Row& row, const QString& title, const QString& value);
    void askToSignOut();
    void presentMessage();
    [[nodiscard]] QString signInTitle() const;
    [[nodiscard]] QString passwordPlaceText() const;
    [[nodiscard]] QString problemText() const;

    QLabel* nobody_ = nullptr;
    QWidget* details_ = nullptr;
    Row service_{};
    Row username_{};
    Row region_{};
    Row person_{};
    Row password_{};
    SettingsNotice* problem_ = nullptr;
    SettingsNotice* message_ = nullptr;
    QPushButton* signIn_ = nullptr;
    QPushButton* reconnect_ = nullptr;
    QPushButton* terms_ = nullptr;
    QPushButton* signOut_ = nullptr;
    QPointer<QDialog> question_;
    std::optional<GlucoseAccountConfiguration> askedAbout_;
};

}  // namespace tidewell
