#include "ui/SettingsHistoryDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <array>
#include <utility>

#include "ui/SettingsControls.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

constexpr int lettersToLine = 60;

QString keyText(const SettingsFacts& places)
{
    if (places.isDemonstration)
        return SettingsHistoryDialog::tr("The key to them is kept nowhere: this is a demonstration.");
    return places.secretsFile.isEmpty()
               ? SettingsHistoryDialog::tr("The key to them is kept in your keyring.")
               : SettingsHistoryDialog::tr(
                     "The key to them is kept in the file %1. Whoever can read your "
                     "files can read it too.")
                     .arg(places.secretsFile);
}

}  // namespace

SettingsHistoryDialog::SettingsHistoryDialog(const GlucoseHistoryConfiguration& present,
                                             const SettingsFacts& places,
                                             std::function<void(std::int64_t)> accepted, QWidget* parent)
    : QDialog{parent}
{
    setObjectName(QStringLiteral("historyDisclosure"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Save readings"));
    auto* page = new QWidget{this};
    page->setMinimumWidth(fontMetrics().averageCharWidth() * lettersToLine);
    auto* column = new QVBoxLayout{page};
    QLabel* title = wrappedLabel(tr("Save readings on this computer?"), page);
    scaleLetters(*title, 1.2, true);
    column->addWidget(title);
    const std::array facts{
        tr("What: each glucose reading that Tidewell fetches from now on for this account and person, with "
           "its value, trend and time. Nothing from before."),
        tr("Where: on this computer only, encrypted. Nothing is ever uploaded."),
        keyText(places),
        tr("To stop: “Pause saving” on this page. What is saved stays until it is too old."),
        tr("To delete: “Delete saved readings…” on this page. It removes the readings, and their key last."),
    };
    for (const QString& fact : facts)
        column->addWidget(bulletLabel(fact, page));

    auto* days = new QComboBox{page};
    days->setObjectName(QStringLiteral("historyDisclosureDays"));
    days->setAccessibleName(tr("How long readings are kept"));
    for (const int one : {30, 90})
        days->addItem(tr("%1 days").arg(one), one);
    days->setCurrentIndex(days->findData(static_cast<int>(present.retentionDays)));
    if (days->currentIndex() < 0)
        days->setCurrentIndex(days->count() - 1);
    addField(*column, tr("&Keep readings for:"), *days);
    QLabel* older = wrappedLabel(tr("Readings that are older will be removed."), page);
    column->addWidget(older);
    QLabel* shorter = wrappedLabel(
        tr("Until now it was longer: saved readings that are older will be deleted at once."), page);
    shorter->setObjectName(QStringLiteral("historyDisclosureShorter"));
    column->addWidget(shorter);
    const auto picked = [days, older, shorter, present] {
        const bool deletes =
            present.hasPreviouslyEnabled && days->currentData().toLongLong() < present.retentionDays;
        shorter->setVisible(deletes);
        older->setVisible(!deletes);
    };
    connect(days, &QComboBox::currentIndexChanged, this, picked);
    picked();
    column->addStretch();

    auto* scroll = new GrowingScrollArea{this};
    scroll->setWidget(page);
    auto* buttons = new QDialogButtonBox{this};
    QPushButton* yes = buttons->addButton(tr("&Save readings"), QDialogButtonBox::AcceptRole);
    yes->setObjectName(QStringLiteral("settingsConfirm"));
    QPushButton* cancel = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    yes->setAutoDefault(false);
    cancel->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this, days, accepted = std::move(accepted)] {
        const std::int64_t kept = days->currentData().toLongLong();
        accept();
        accepted(kept);
    });
    auto* layout = new QVBoxLayout{this};
    layout->addWidget(scroll, 1);
    layout->addWidget(buttons);
    cancel->setFocus();
}

}  // namespace tidewell
