#include "ui/SettingsGeneralPage.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "config/AppSettingsKeys.h"
#include "statusbar/GlucoseGraphLayout.h"
#include "ui/DisplayText.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

QString hoursText(std::int64_t hours)
{
    return hours == 1 ? SettingsGeneralPage::tr("1 hour") : SettingsGeneralPage::tr("%1 hours").arg(hours);
}

QString secretsText(const SettingsFacts& facts)
{
    if (facts.isDemonstration)
        return SettingsGeneralPage::tr("Nowhere: this is a demonstration.");
    return facts.secretsFile.isEmpty()
               ? SettingsGeneralPage::tr("Your keyring")
               : SettingsGeneralPage::tr("The file %1. Whoever can read your files can read them too.")
                     .arg(facts.secretsFile);
}

}  // namespace

SettingsGeneralPage::SettingsGeneralPage(SettingsPageContext& context) : SettingsPage{context}
{
    if (my().facts.isDemonstration) {
        auto* demonstration = new SettingsNotice{this};
        demonstration->setObjectName(QStringLiteral("demonstration"));
        demonstration->present(SettingsNotice::Weight::information,
                               tr("This is the demonstration, with somebody else's readings. What is changed "
                                  "here is forgotten when it ends."));
        column().addWidget(demonstration);
    }
    QVBoxLayout* start = addGroup(tr("Start"));
    startAtLogin_ = new QCheckBox{tr("Start Tidewell when I &log in"), this};
    startAtLogin_->setObjectName(QStringLiteral("startAtLogin"));
    connect(startAtLogin_, &QCheckBox::clicked, this, [this](bool on) {
        // It shows what is so, and that follows.
        present();
        if (my().handlers.startAtLoginChanged)
            my().handlers.startAtLoginChanged(on);
    });
    start->addWidget(startAtLogin_);
    loginProblem_ = new SettingsNotice{this};
    loginProblem_->setObjectName(QStringLiteral("loginProblem"));
    start->addWidget(loginProblem_);

    QVBoxLayout* graph = addGroup(tr("Graph"));
    graphWindow_ = addPicker("graphTimeWindowHours", tr("Time that the graph shows"));
    graphWindow_->onPicked([this](const QVariant& hours) {
        my().change([&hours](AppSettings& settings) {
            settings.graphTimeWindowHours.reset();
            if (hours.isValid())
                settings.graphTimeWindowHours = hours.toLongLong();
        });
        present();
    });
    addField(*graph, tr("&Time shown:"), *graphWindow_);
    graphStored_ = wrappedLabel({}, this);
    graphStored_->setObjectName(QStringLiteral("graphStored"));
    graph->addWidget(graphStored_);

    makePlaces();
    QVBoxLayout* language = addGroup(tr("Language"));
    language->addWidget(wrappedLabel(
        tr("Tidewell speaks the language of your desktop where it knows it, and English otherwise."), this));
    column().addStretch();
}

void SettingsGeneralPage::makePlaces()
{
    QVBoxLayout* places = addGroup(tr("What is stored where"));
    places->addWidget(wrappedLabel(tr("Everything stays on this computer."), this));
    const SettingsFacts& facts = my().facts;
    struct Place {
        const char* name;
        QString title;
        QString place;
        QString copyTitle;  ///< Empty: nothing that a person would paste.
        QString copySpoken;
    };
    const std::array listed{
        Place{"configurationFile", tr("Account and settings, without the password:"), facts.configurationFile,
              tr("&Copy"), tr("Copy the path of the settings")},
        Place{"historyFolder", tr("Saved readings, encrypted:"), facts.historyFolder, tr("C&opy"),
              tr("Copy the path of the saved readings")},
        Place{"stateFile", tr("What the program keeps in mind, such as a snooze:"), facts.stateFile,
              tr("Co&py"), tr("Copy the path of the program's notes")},
        Place{"secretsPlace", tr("Password, and the key of the saved readings:"), secretsText(facts), {}, {}},
    };
    for (const auto& [name, title, place, copyTitle, copySpoken] : listed) {
        places->addWidget(wrappedLabel(title, this));
        auto* row = new QHBoxLayout;
        QLabel* path = copyableLabel(place, this);
        path->setObjectName(QString::fromLatin1(name));
        path->setAccessibleName(title + u' ' + place);
        row->addWidget(path, 1);
        places->addLayout(row);
        if (copyTitle.isEmpty())
            continue;
        QPushButton* copy =
            addButton(*row, name, copyTitle, [place] { QGuiApplication::clipboard()->setText(place); });
        copy->setObjectName(QString::fromLatin1(name) + QStringLiteral("Copy"));
        copy->setAccessibleName(copySpoken);
    }
}

void SettingsGeneralPage::present()
{
    const auto& login = state().loginItem;
    startAtLogin_->setChecked(login && login->isEnabled);
    setUsable(*startAtLogin_, login && !state().isChangingLoginItem && !my().facts.isDemonstration);
    const std::string& problem =
        state().loginItemProblem.empty() && login ? login->problem : state().loginItemProblem;
    if (my().facts.isDemonstration)
        loginProblem_->present(SettingsNotice::Weight::information, tr("Not in the demonstration."));
    else
        loginProblem_->present(SettingsNotice::Weight::caution, displayText(problem));

    const auto& stored = state().settings.graphTimeWindowHours;
    const GraphTimeWindow standard = graphTimeWindow(std::nullopt);
    std::vector<SettingsComboBox::Entry> entries{
        {tr("Default (%1)").arg(hoursText(static_cast<std::int64_t>(standard))), {}}};
    for (const std::int64_t hours : graphTimeWindowHourOptions)
        entries.push_back({hoursText(hours), QVariant::fromValue<qlonglong>(hours)});
    const bool offered =
        !stored || std::ranges::find(graphTimeWindowHourOptions, *stored) != graphTimeWindowHourOptions.end();
    graphWindow_->present(entries, stored && offered ? QVariant::fromValue<qlonglong>(*stored) : QVariant{});
    graphStored_->setText(offered ? QString{}
                                  : tr("%1 is stored, which the graph cannot show; the default is in force.")
                                        .arg(hoursText(*stored)));
    graphStored_->setVisible(!offered);
}

}  // namespace tidewell
