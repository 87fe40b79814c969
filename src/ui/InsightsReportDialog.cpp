#include "ui/InsightsReportDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>
#include <array>
#include <utility>

#include "ui/Announcer.h"

namespace tidewell {
namespace {

constexpr int textWidth = 400;  // Pixels; about sixty characters to a line.

struct Kind {
    InsightsReportFormat format;
    const char* title;
    const char* ending;
};
constexpr std::array kinds{
    Kind{InsightsReportFormat::pdf, QT_TRANSLATE_NOOP("InsightsReportDialog", "PDF document"), "pdf"},
    Kind{InsightsReportFormat::png, QT_TRANSLATE_NOOP("InsightsReportDialog", "PNG picture"), "png"}};

QLabel* wrappedLabel(const QString& text, QWidget* parent)
{
    auto* label = new QLabel{text, parent};
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(textWidth);
    return label;
}

std::filesystem::path pathOf(const QString& text)
{
    const QByteArray bytes = QFile::encodeName(text);
    return std::filesystem::path{bytes.toStdString()};
}

}  // namespace

struct InsightsReportDialog::Impl {
    std::function<void(InsightsReportRequest)> save{};
    QString proposal{};
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);

    QComboBox* kind = nullptr;
    QComboBox* paper = nullptr;
    QLineEdit* name = nullptr;
    QCheckBox* withReadings = nullptr;
    QLabel* problem = nullptr;
    QPushButton* choose = nullptr;
    QPushButton* cancel = nullptr;
    Announcer* announcer = nullptr;

    [[nodiscard]] const Kind& chosenKind() const
    {
        return kinds.at(static_cast<std::size_t>(std::max(kind->currentIndex(), 0)));
    }

    void setSaving(bool on) const
    {
        for (QWidget* field : std::initializer_list<QWidget*>{kind, paper, name, withReadings, choose})
            field->setEnabled(!on);
        choose->setText(on ? tr("Saving…") : tr("Save &as…"));
    }

    void showProblem(const QString& text) const
    {
        problem->setText(text);
        problem->setVisible(!text.isEmpty());
        announcer->say(text);
    }

    void askWhere(InsightsReportDialog* dialog)
    {
        showProblem({});
        auto* const chooser = new QFileDialog{dialog, tr("Save report"), folder};
        chooser->setAttribute(Qt::WA_DeleteOnClose);
        chooser->setAcceptMode(QFileDialog::AcceptSave);
        const QString ending = QString::fromLatin1(chosenKind().ending);
        chooser->setNameFilter(QStringLiteral("%1 (*.%2)").arg(tr(chosenKind().title), ending));
        chooser->setDefaultSuffix(ending);
        chooser->selectFile(proposal + u'.' + ending);
        QObject::connect(chooser, &QFileDialog::fileSelected, dialog,
                         [this](const QString& file) { request(file); });
        chooser->open();
    }

    /// A chooser asks before it gives the name of a file that exists.
    void request(QString file)
    {
        const QFileInfo chosen{file};
        folder = chosen.absolutePath();
        const QString ending = QString::fromLatin1(chosenKind().ending);
        const bool asChosen = chosen.suffix().compare(ending, Qt::CaseInsensitive) == 0;
        if (!asChosen)
            file += u'.' + ending;
        setSaving(true);
        if (save)
            save({.file = pathOf(file),
                  .format = chosenKind().format,
                  .paper = paper->currentData().value<InsightsReportPaper>(),
                  .name = name->text().trimmed().toStdString(),
                  .withReadings = withReadings->isChecked(),
                  .replace = asChosen});
    }
};

InsightsReportDialog::InsightsReportDialog(QWidget* parent) : QDialog{parent}, impl_{std::make_unique<Impl>()}
{
    setWindowTitle(tr("Save report"));
    impl_->kind = new QComboBox{this};
    for (const Kind& kind : kinds)
        impl_->kind->addItem(tr(kind.title));
    impl_->paper = new QComboBox{this};
    impl_->paper->addItem(tr("A4"), QVariant::fromValue(InsightsReportPaper::a4));
    impl_->paper->addItem(tr("US Letter"), QVariant::fromValue(InsightsReportPaper::letter));
    impl_->name = new QLineEdit{this};
    impl_->name->setMaxLength(80);
    impl_->name->setPlaceholderText(tr("Leave empty for a page without a name"));
    impl_->withReadings = new QCheckBox{tr("Attach the &readings as CSV, in a file beside it"), this};
    impl_->announcer = new Announcer{this};
    impl_->problem = wrappedLabel({}, this);
    impl_->problem->setObjectName(QStringLiteral("insightsReportProblem"));
    impl_->problem->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    impl_->problem->hide();

    auto* form = new QFormLayout;
    form->addRow(tr("&Kind:"), impl_->kind);
    form->addRow(tr("&Paper:"), impl_->paper);
    form->addRow(tr("&Name on the page:"), impl_->name);
    form->addRow(QString{}, impl_->withReadings);
    auto* const buttons = new QDialogButtonBox{QDialogButtonBox::Cancel, this};
    impl_->cancel = buttons->button(QDialogButtonBox::Cancel);
    impl_->choose = buttons->addButton(QString{}, QDialogButtonBox::AcceptRole);
    auto* const layout = new QVBoxLayout{this};
    layout->addWidget(wrappedLabel(
        tr("One page for the doctor: the figures, the profile and the newest days of this period. It is "
           "made on this computer, and nothing is sent anywhere."),
        this));
    layout->addLayout(form);
    layout->addWidget(
        wrappedLabel(tr("What is saved is not encrypted: whoever can open the file can read it."), this));
    layout->addWidget(impl_->problem);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetMinAndMaxSize);

    connect(buttons, &QDialogButtonBox::accepted, this, [this] { impl_->askWhere(this); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    impl_->setSaving(false);
}

InsightsReportDialog::~InsightsReportDialog() = default;

void InsightsReportDialog::onSave(std::function<void(InsightsReportRequest)> handler)
{
    impl_->save = std::move(handler);
}

void InsightsReportDialog::present(InsightsReportPaper usual, const QString& fileName)
{
    if (!isVisible()) {
        impl_->paper->setCurrentIndex(impl_->paper->findData(QVariant::fromValue(usual)));
        impl_->proposal = fileName;
        impl_->showProblem({});
        impl_->setSaving(false);
        impl_->choose->setDefault(true);
        impl_->cancel->setText(tr("Cancel"));
        impl_->kind->setFocus();
    }
    show();
    raise();
    activateWindow();
}

void InsightsReportDialog::finish(const std::vector<std::string>& missingDays)
{
    impl_->name->clear();
    impl_->setSaving(false);
    if (missingDays.empty())
        return accept();
    QStringList days;
    for (const std::string& day : missingDays)
        days << QString::fromStdString(day);
    impl_->showProblem(tr("The report is saved. The saved readings of these days cannot be read, and are "
                          "missing in the attached file: %1.")
                           .arg(days.join(QStringLiteral(", "))));
    impl_->cancel->setText(tr("Close"));
    impl_->cancel->setFocus();
}

void InsightsReportDialog::withdraw()
{
    for (auto* opened : findChildren<QDialog*>())
        opened->reject();
    impl_->name->clear();
    impl_->withReadings->setChecked(false);
    reject();
}

void InsightsReportDialog::showError(const QString& text)
{
    impl_->setSaving(false);
    impl_->cancel->setText(tr("Cancel"));
    impl_->showProblem(text);
    impl_->choose->setFocus();
}

}  // namespace tidewell
