#pragma once

#include "ui/SettingsPage.h"

namespace tidewell {

/// Saved history: whether readings are saved, for how long, and their deletion.
class SettingsInsightsPage final : public SettingsPage {
    Q_OBJECT
public:
    explicit SettingsInsightsPage(SettingsPageContext& context);
    void present() override;

private:
    void makeState();
    void makeRetention(QVBoxLayout& group);
    void makeReport();
    void makeDeletion();
    void askToEnable();
    void askForRetention(std::int64_t days);
    void askToDelete(bool everyAccount);
    [[nodiscard]] QString stateText() const;
    [[nodiscard]] QString sinceText() const;
    [[nodiscard]] QString collectionText() const;

    QLabel* title_ = nullptr;
    QLabel* since_ = nullptr;
    SettingsNotice* problem_ = nullptr;
    SettingsNotice* message_ = nullptr;
    QPushButton* enable_ = nullptr;
    QPushButton* pause_ = nullptr;
    SettingsComboBox* retention_ = nullptr;
    QLabel* retentionLabel_ = nullptr;
    QLabel* collection_ = nullptr;
    QPushButton* delete_ = nullptr;
    QPushButton* deleteAll_ = nullptr;
    QPointer<QDialog> question_;
    std::optional<HistoryScopeID> askedAbout_;  ///< Whose history the question is about.
};

}  // namespace tidewell
