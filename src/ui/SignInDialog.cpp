#include "ui/SignInDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <array>
#include <utility>

#include "config/GlucoseProvider.h"

namespace tidewell {
namespace {

struct Choice {
    const char* code;
    const char* title;
};

constexpr int textWidth = 400;  // Pixels; about sixty characters to a line.

constexpr std::array dexcomRegions{
    Choice{"us", QT_TRANSLATE_NOOP("SignInDialog", "United States")},
    Choice{"ous", QT_TRANSLATE_NOOP("SignInDialog", "Outside the United States")},
    Choice{"jp", QT_TRANSLATE_NOOP("SignInDialog", "Japan")},
};

/// Empties a line edit, its undo list included, and overwrites the text that it held. Copies that the toolkit
/// made while the text was typed are beyond reach.
void clearSecret(QLineEdit& edit)
{
    QString text = edit.text();
    edit.setText({});
    if (!text.isEmpty())
        wipe(text.data(), static_cast<std::size_t>(text.size()) * sizeof(QChar));
}

/// The password as it was typed: outer spaces belong to it. Only line breaks, which nobody can type and which
/// come along when a line is pasted, are left out at its ends.
SecretText passwordOf(const QLineEdit& edit)
{
    QByteArray bytes = edit.text().toUtf8();
    std::string_view text{bytes.constData(), static_cast<std::size_t>(bytes.size())};
    const auto isBreak = [](char c) { return c == '\n' || c == '\r'; };
    while (!text.empty() && isBreak(text.back()))
        text.remove_suffix(1);
    while (!text.empty() && isBreak(text.front()))
        text.remove_prefix(1);
    SecretText secret{text};
    wipe(bytes.data(), static_cast<std::size_t>(bytes.size()));
    return secret;
}

std::string usernameOf(const QLineEdit& edit)
{
    return edit.text().remove(u'\n').remove(u'\r').trimmed().toStdString();
}

QLabel* wrappedLabel(const QString& text, QWidget* parent)
{
    auto* label = new QLabel{text, parent};
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

}  // namespace

struct SignInDialog::Impl {
    Submit submit{};
    std::function<void()> cancel{};
    QComboBox* service = nullptr;
    QComboBox* region = nullptr;
    QLineEdit* username = nullptr;
    QLineEdit* password = nullptr;
    QCheckBox* showPassword = nullptr;
    QFrame* problem = nullptr;
    QLabel* problemTitle = nullptr;
    QLabel* problemDetail = nullptr;
    QLabel* problemHint = nullptr;
    QProgressBar* progress = nullptr;
    QLabel* progressText = nullptr;
    QPushButton* signIn = nullptr;
    bool checking = false;
    bool finished = false;

    void clearProblem()
    {
        problem->hide();
        for (QLabel* label : {problemTitle, problemDetail, problemHint})
            label->clear();
    }

    void setChecking(bool on)
    {
        checking = on;
        for (QWidget* field :
             std::initializer_list<QWidget*>{service, region, username, password, showPassword})
            field->setEnabled(!on);
        progress->setVisible(on);
        progressText->setVisible(on);
        updateButton();
    }

    void updateButton() const
    {
        signIn->setEnabled(!checking && !usernameOf(*username).empty() && !password->text().isEmpty());
    }

    void clearFields() const
    {
        clearSecret(*password);
        clearSecret(*username);
        showPassword->setChecked(false);
    }
};

SignInDialog::SignInDialog(QWidget* parent) : QDialog{parent}, impl_{std::make_unique<Impl>()}
{
    Impl& my = *impl_;
    setWindowTitle(tr("Sign in to Tidewell"));
    setModal(false);

    auto* intro =
        wrappedLabel(tr("Use the account that publishes the readings: the one signed in on the phone that "
                        "receives the sensor. A follower's account does not work. Sharing must be turned on "
                        "in the sensor app, with at least one follower."),
                     this);

    my.service = new QComboBox{this};
    my.service->addItem(QStringLiteral("Dexcom Share"), QString::fromUtf8(rawValue(GlucoseProvider::dexcom)));
    my.service->setAccessibleName(tr("Glucose service"));
    my.region = new QComboBox{this};
    for (const Choice& choice : dexcomRegions)
        my.region->addItem(tr(choice.title), QString::fromLatin1(choice.code));
    my.region->setAccessibleName(tr("Region of the account"));
    my.username = new QLineEdit{this};
    my.username->setAccessibleName(tr("User name"));
    my.username->setPlaceholderText(tr("User name, e-mail address, or phone number with +"));
    my.username->setMaxLength(256);
    my.username->setInputMethodHints(Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText);
    my.password = new QLineEdit{this};
    my.password->setAccessibleName(tr("Password"));
    my.password->setEchoMode(QLineEdit::Password);
    my.password->setMaxLength(1024);
    my.password->setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhHiddenText | Qt::ImhNoAutoUppercase |
                                     Qt::ImhNoPredictiveText);
    my.showPassword = new QCheckBox{tr("S&how password"), this};

    auto* form = new QFormLayout;
    form->addRow(tr("Ser&vice:"), my.service);
    form->addRow(tr("&Region:"), my.region);
    form->addRow(tr("&User name:"), my.username);
    form->addRow(tr("&Password:"), my.password);
    form->addRow(QString{}, my.showPassword);

    my.problem = new QFrame{this};
    my.problem->setFrameShape(QFrame::StyledPanel);
    my.problemTitle = wrappedLabel({}, my.problem);
    QFont strong = my.problemTitle->font();
    strong.setBold(true);
    my.problemTitle->setFont(strong);
    my.problemDetail = wrappedLabel({}, my.problem);
    my.problemHint = wrappedLabel({}, my.problem);
    auto* problemLayout = new QVBoxLayout{my.problem};
    for (QLabel* label : {my.problemTitle, my.problemDetail, my.problemHint}) {
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        problemLayout->addWidget(label);
    }

    my.progress = new QProgressBar{this};
    my.progress->setRange(0, 0);
    my.progress->setTextVisible(false);
    my.progress->setAccessibleName(tr("Checking the account"));
    my.progressText = wrappedLabel(tr("Checking the account…"), this);

    auto* buttons = new QDialogButtonBox{this};
    my.signIn = buttons->addButton(tr("&Sign in"), QDialogButtonBox::AcceptRole);
    my.signIn->setDefault(true);
    QPushButton* cancel = buttons->addButton(tr("&Cancel"), QDialogButtonBox::RejectRole);
    cancel->setAutoDefault(false);

    auto* layout = new QVBoxLayout{this};
    layout->setSizeConstraint(QLayout::SetFixedSize);  // Grows and shrinks with what is shown.
    intro->setMinimumWidth(textWidth);
    layout->addWidget(intro);
    layout->addLayout(form);
    layout->addWidget(my.problem);
    layout->addWidget(my.progressText);
    layout->addWidget(my.progress);
    layout->addStretch();
    layout->addWidget(buttons);
    setTabOrder(my.showPassword, my.signIn);

    connect(my.showPassword, &QCheckBox::toggled, this,
            [this](bool on) { impl_->password->setEchoMode(on ? QLineEdit::Normal : QLineEdit::Password); });
    const auto edited = [this] { impl_->updateButton(); };
    connect(my.username, &QLineEdit::textChanged, this, edited);
    connect(my.password, &QLineEdit::textChanged, this, edited);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (impl_->checking)
            return;
        GlucoseAccountConfiguration account;
        account.provider = GlucoseProvider::dexcom;
        account.username = usernameOf(*impl_->username);
        account.password = passwordOf(*impl_->password);
        account.region = impl_->region->currentData().toString().toStdString();
        impl_->clearProblem();
        if (impl_->submit)
            impl_->submit(std::move(account));
    });
    my.clearProblem();
    my.setChecking(false);
}

SignInDialog::~SignInDialog() { impl_->clearFields(); }

void SignInDialog::onSubmit(Submit handler) { impl_->submit = std::move(handler); }

void SignInDialog::onCancel(std::function<void()> handler) { impl_->cancel = std::move(handler); }

void SignInDialog::present(const GlucoseAccountConfiguration& account)
{
    if (!isVisible()) {
        impl_->finished = false;
        impl_->clearProblem();
        impl_->setChecking(false);
        impl_->username->setText(QString::fromStdString(account.username));
        const int region = impl_->region->findData(QString::fromStdString(account.region));
        impl_->region->setCurrentIndex(std::max(region, 0));
        (account.username.empty() ? impl_->username : impl_->password)->setFocus();
    }
    show();
    raise();
    activateWindow();
}

void SignInDialog::showProgress()
{
    impl_->clearProblem();
    impl_->setChecking(true);
}

void SignInDialog::showError(const QString& title, const QString& detail, const QString& hint)
{
    impl_->setChecking(false);
    const std::array<std::pair<QLabel*, const QString*>, 3> lines{
        {{impl_->problemTitle, &title}, {impl_->problemDetail, &detail}, {impl_->problemHint, &hint}}};
    for (const auto& [label, text] : lines) {
        label->setText(*text);
        label->setVisible(!text->isEmpty());
    }
    impl_->problem->setAccessibleName(title);
    impl_->problem->setAccessibleDescription(detail + u' ' + hint);
    impl_->problem->show();
    impl_->password->setFocus();
    impl_->password->selectAll();
}

void SignInDialog::finish()
{
    impl_->finished = true;
    accept();
}

void SignInDialog::done(int result)
{
    impl_->clearFields();
    impl_->clearProblem();
    impl_->setChecking(false);
    QDialog::done(result);
    if (!std::exchange(impl_->finished, false) && impl_->cancel)
        impl_->cancel();
}

}  // namespace tidewell
