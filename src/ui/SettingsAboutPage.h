#pragma once

#include "ui/SettingsPage.h"

class QListWidget;

namespace tidewell {

/// What this is and what it is not, what there is to find about alerts, and whose work is in it.
class SettingsAboutPage final : public SettingsPage {
    Q_OBJECT
public:
    explicit SettingsAboutPage(SettingsPageContext& context);
    void present() override;

    /// What "Copy report" copies: the findings, one to a line.
    [[nodiscard]] QString report() const;

private:
    void makeIdentity();
    void makeFindings();
    void makeComponents();

    [[nodiscard]] QString lookText() const;

    QListWidget* findings_ = nullptr;
    std::function<void()> fit_;  ///< Gives the list the height of its entries.
    QLabel* looking_ = nullptr;
    QPushButton* lookAgain_ = nullptr;
    QPushButton* copy_ = nullptr;
    std::vector<AlertFinding> shown_;
};

}  // namespace tidewell
