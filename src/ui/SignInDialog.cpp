#include "ui/SignInDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "config/GlucoseProvider.h"
#include "ui/PersonName.h"

namespace tidewell {
namespace {

struct Choice {
    const char* code;
    const char* title;
};

constexpr int textWidth = 400;  // Pixels; about sixty characters to a line.
/// Of the list of people: it looks like a list even with one, and scrolls beyond a handful.
constexpr int fewestRows = 2;
constexpr int mostRows = 6;

constexpr std::array dexcomRegions{
    Choice{"us", QT_TRANSLATE_NOOP("SignInDialog", "United States")},
    Choice{"ous", QT_TRANSLATE_NOOP("SignInDialog", "Outside the United States")},
    Choice{"jp", QT_TRANSLATE_NOOP("SignInDialog", "Japan")},
};

/// By title.
constexpr std::array libreLinkUpRegions{
    Choice{"ap", QT_TRANSLATE_NOOP("SignInDialog", "Asia and Pacific")},
    Choice{"au", QT_TRANSLATE_NOOP("SignInDialog", "Australia")},
    Choice{"ca", QT_TRANSLATE_NOOP("SignInDialog", "Canada")},
    Choice{"cn", QT_TRANSLATE_NOOP("SignInDialog", "China")},
    Choice{"eu", QT_TRANSLATE_NOOP("SignInDialog", "Europe")},
    Choice{"eu2", QT_TRANSLATE_NOOP("SignInDialog", "Europe 2")},
    Choice{"fr", QT_TRANSLATE_NOOP("SignInDialog", "France")},
    Choice{"de", QT_TRANSLATE_NOOP("SignInDialog", "Germany")},
    Choice{"jp", QT_TRANSLATE_NOOP("SignInDialog", "Japan")},
    Choice{"la", QT_TRANSLATE_NOOP("SignInDialog", "Latin America")},
    Choice{"ru", QT_TRANSLATE_NOOP("SignInDialog", "Russia")},
    Choice{"ae", QT_TRANSLATE_NOOP("SignInDialog", "United Arab Emirates")},
    Choice{"us", QT_TRANSLATE_NOOP("SignInDialog", "United States")},
};

/// What a service calls things.
struct ServiceTexts {
    const char* name;
    const char* intro;
    const char* usernameLabel;
    const char* usernameName;
    const char* usernamePlaceholder;
    std::span<const Choice> regions;
    const char* defaultRegion;  ///< When the system's country is none of the regions.
};

const ServiceTexts& textsOf(GlucoseProvider provider)
{
    static constexpr ServiceTexts dexcom{
        .name = "Dexcom Share",
        .intro = QT_TRANSLATE_NOOP(
            "SignInDialog",
            "Use the account that publishes the readings: the one signed in on the phone that receives the "
            "sensor. A follower's account does not work. Sharing must be turned on in the sensor app, with "
            "at least one follower."),
        .usernameLabel = QT_TRANSLATE_NOOP("SignInDialog", "&User name:"),
        .usernameName = QT_TRANSLATE_NOOP("SignInDialog", "User name"),
        .usernamePlaceholder =
            QT_TRANSLATE_NOOP("SignInDialog", "User name, e-mail address, or phone number with +"),
        .regions = dexcomRegions,
        .defaultRegion = "us",
    };
    static constexpr ServiceTexts libreLinkUp{
        .name = "LibreLinkUp",
        .intro = QT_TRANSLATE_NOOP(
            "SignInDialog",
            "Use a follower's account: the one signed in to the LibreLinkUp app. Whoever wears the sensor "
            "must have invited it in the Libre app, under the connected apps. If that is you, invite "
            "yourself. When you are not sure of the region, choose a near one: the service knows the right "
            "one."),
        .usernameLabel = QT_TRANSLATE_NOOP("SignInDialog", "&E-mail:"),
        .usernameName = QT_TRANSLATE_NOOP("SignInDialog", "E-mail"),
        .usernamePlaceholder = QT_TRANSLATE_NOOP("SignInDialog", "E-mail address of the follower"),
        .regions = libreLinkUpRegions,
        .defaultRegion = "eu",
    };
    switch (provider) {
    case GlucoseProvider::dexcom: return dexcom;
    case GlucoseProvider::libreLinkUp: return libreLinkUp;
    }
    std::unreachable();
}

/// A list in which the first arrow key takes the person who has the focus, not the one after: nobody is
/// selected before that.
class PeopleList final : public QListWidget {
public:
    using QListWidget::QListWidget;

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        const bool arrow = event->key() == Qt::Key_Down || event->key() == Qt::Key_Up;
        if (arrow && count() > 0 && selectedItems().isEmpty())
            setCurrentRow(std::max(currentRow(), 0));
        else
            QListWidget::keyPressEvent(event);
    }
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
    Choose choose{};
    std::function<void()> back{};
    std::function<void()> cancel{};

    QWidget* accountPage = nullptr;
    QLabel* intro = nullptr;
    QComboBox* service = nullptr;
    QComboBox* region = nullptr;
    QLabel* usernameLabel = nullptr;
    QLineEdit* username = nullptr;
    QLineEdit* password = nullptr;
    QCheckBox* showPassword = nullptr;

    QWidget* peoplePage = nullptr;
    QLabel* question = nullptr;
    QLabel* sharedWith = nullptr;
    QListWidget* list = nullptr;

    QFrame* problem = nullptr;
    QLabel* problemTitle = nullptr;
    QLabel* problemDetail = nullptr;
    QLabel* problemHint = nullptr;
    QProgressBar* progress = nullptr;
    QLabel* progressText = nullptr;
    QPushButton* signIn = nullptr;
    QPushButton* follow = nullptr;
    QPushButton* goBack = nullptr;

    GlucoseAccountConfiguration stored{};  ///< As presented, without its password ...
    bool passwordIsStored = false;         ///< ... of which only this is kept.
    std::vector<LibreConnection> people{};
    bool checking = false;
    bool finished = false;

    [[nodiscard]] GlucoseProvider provider() const
    {
        return allGlucoseProviders.at(static_cast<std::size_t>(std::max(service->currentIndex(), 0)));
    }

    [[nodiscard]] bool choosing() const { return !peoplePage->isHidden(); }

    void setProvider(GlucoseProvider wanted)
    {
        const auto at = std::ranges::find(allGlucoseProviders, wanted);
        service->setCurrentIndex(static_cast<int>(at - allGlucoseProviders.begin()));
        providerChanged();
    }

    /// Shows the texts and the regions of the chosen service.
    void providerChanged()
    {
        const ServiceTexts& texts = textsOf(provider());
        intro->setText(tr(texts.intro));
        usernameLabel->setText(tr(texts.usernameLabel));
        username->setAccessibleName(tr(texts.usernameName));
        username->setPlaceholderText(tr(texts.usernamePlaceholder));
        region->clear();
        for (const Choice& choice : texts.regions)
            region->addItem(tr(choice.title), QString::fromLatin1(choice.code));
        const QString country = QLocale::territoryToCode(QLocale::system().territory()).toLower();
        const int likely = provider() == GlucoseProvider::libreLinkUp ? region->findData(country) : -1;
        region->setCurrentIndex(likely >= 0 ? likely
                                            : region->findData(QString::fromLatin1(texts.defaultRegion)));
        clearProblem();
        updateButtons();
    }

    /// The page with the account, or the one with the people.
    void showPage(bool withPeople)
    {
        accountPage->setVisible(!withPeople);
        peoplePage->setVisible(withPeople);
        signIn->setVisible(!withPeople);
        follow->setVisible(withPeople && !people.empty());
        goBack->setVisible(withPeople);
        question->setVisible(!people.empty());
        sharedWith->setVisible(!people.empty());
        list->setVisible(!people.empty());
        // The one that the Enter key presses from anywhere.
        (withPeople ? people.empty() ? goBack : follow : signIn)->setDefault(true);
        progressText->setText(withPeople ? tr("Saving the choice…") : tr("Checking the account…"));
        clearProblem();
        setChecking(false);
    }

    void fillList(const std::vector<LibreConnection>& offered)
    {
        people = offered;
        list->clear();
        for (const LibreConnection& person : people) {
            const QString name = personName(person.displayName(), person.patientId);
            const bool alone = std::ranges::count(people, name, [](const LibreConnection& one) {
                                   return personName(one.displayName(), one.patientId);
                               }) == 1;
            list->addItem(alone ? name : personNameWithID(person.displayName(), person.patientId));
        }
        const int rowHeight = list->fontMetrics().height() * 8 / 5;  // Room for a finger or a careless hand.
        for (int row = 0; row < list->count(); ++row)
            list->item(row)->setSizeHint({0, rowHeight});
        list->setFixedHeight(std::clamp(list->count(), fewestRows, mostRows) * rowHeight +
                             2 * list->frameWidth());
        const auto known = std::ranges::find(people, stored.patientID, &LibreConnection::patientId);
        if (known != people.end())
            list->setCurrentRow(static_cast<int>(known - people.begin()));
        else if (people.size() == 1)
            list->setCurrentRow(0);
    }

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
             std::initializer_list<QWidget*>{service, region, username, password, showPassword, list, goBack})
            field->setEnabled(!on);
        progress->setVisible(on);
        progressText->setVisible(on);
        updateButtons();
    }

    /// Whether the account in the fields is the stored one, whose password can be used again.
    [[nodiscard]] bool isStored() const
    {
        return passwordIsStored && provider() == stored.provider && usernameOf(*username) == stored.username;
    }

    void updateButtons() const
    {
        password->setPlaceholderText(isStored() ? tr("Leave empty to use the stored password") : QString{});
        signIn->setEnabled(!checking && !usernameOf(*username).empty() &&
                           (!password->text().isEmpty() || isStored()));
        follow->setEnabled(!checking && !list->selectedItems().isEmpty());
    }

    void clearFields()
    {
        clearSecret(*password);
        clearSecret(*username);
        showPassword->setChecked(false);
        people.clear();
        list->clear();
        sharedWith->clear();
        stored = {};
        passwordIsStored = false;
    }

    void accepted()
    {
        if (checking)
            return;
        if (choosing()) {
            const int row = list->currentRow();
            if (list->selectedItems().isEmpty() || row < 0)
                return;
            const LibreConnection person = people.at(static_cast<std::size_t>(row));
            clearProblem();
            if (choose)
                choose(person);
            return;
        }
        GlucoseAccountConfiguration account;
        account.provider = provider();
        account.username = usernameOf(*username);
        account.password = passwordOf(*password);
        account.region = region->currentData().toString().toStdString();
        clearProblem();
        if (submit)
            submit(std::move(account));
    }

    void makeAccountPage(QWidget* parent);
    void makePeoplePage(QWidget* parent);
    void makeProblem(QWidget* parent);
};

void SignInDialog::Impl::makeAccountPage(QWidget* parent)
{
    accountPage = new QWidget{parent};
    intro = wrappedLabel({}, accountPage);
    intro->setMinimumWidth(textWidth);
    service = new QComboBox{accountPage};
    for (const GlucoseProvider one : allGlucoseProviders)
        service->addItem(QString::fromUtf8(textsOf(one).name));
    service->setAccessibleName(tr("Glucose service"));
    region = new QComboBox{accountPage};
    region->setAccessibleName(tr("Region of the account"));
    region->setMaxVisibleItems(static_cast<int>(libreLinkUpRegions.size()));
    username = new QLineEdit{accountPage};
    username->setMaxLength(256);
    username->setInputMethodHints(Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText);
    password = new QLineEdit{accountPage};
    password->setAccessibleName(tr("Password"));
    password->setEchoMode(QLineEdit::Password);
    password->setMaxLength(1024);
    password->setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhHiddenText | Qt::ImhNoAutoUppercase |
                                  Qt::ImhNoPredictiveText);
    showPassword = new QCheckBox{tr("S&how password"), accountPage};

    auto* form = new QFormLayout;
    form->addRow(tr("Ser&vice:"), service);
    form->addRow(tr("&Region:"), region);
    form->addRow(QStringLiteral("&U"), username);  // Named with the service.
    usernameLabel = qobject_cast<QLabel*>(form->labelForField(username));
    form->addRow(tr("&Password:"), password);
    form->addRow(QString{}, showPassword);

    auto* layout = new QVBoxLayout{accountPage};
    layout->setContentsMargins({});
    layout->addWidget(intro);
    layout->addLayout(form);
}

void SignInDialog::Impl::makePeoplePage(QWidget* parent)
{
    peoplePage = new QWidget{parent};
    peoplePage->setMinimumWidth(textWidth);
    question = wrappedLabel(tr("&Whose readings do you want to see?"), peoplePage);
    QFont strong = question->font();
    strong.setBold(true);
    question->setFont(strong);
    sharedWith = wrappedLabel({}, peoplePage);
    list = new PeopleList{peoplePage};
    list->setAccessibleName(tr("People who share their readings with you"));
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setTextElideMode(Qt::ElideRight);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setUniformItemSizes(true);
    list->setTabKeyNavigation(false);
    question->setBuddy(list);

    auto* layout = new QVBoxLayout{peoplePage};
    layout->setContentsMargins({});
    layout->addWidget(question);
    layout->addWidget(sharedWith);
    layout->addWidget(list);
}

void SignInDialog::Impl::makeProblem(QWidget* parent)
{
    problem = new QFrame{parent};
    problem->setFrameShape(QFrame::StyledPanel);
    problemTitle = wrappedLabel({}, problem);
    QFont strong = problemTitle->font();
    strong.setBold(true);
    problemTitle->setFont(strong);
    problemDetail = wrappedLabel({}, problem);
    problemHint = wrappedLabel({}, problem);
    auto* layout = new QVBoxLayout{problem};
    for (QLabel* label : {problemTitle, problemDetail, problemHint}) {
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout->addWidget(label);
    }
}

SignInDialog::SignInDialog(QWidget* parent) : QDialog{parent}, impl_{std::make_unique<Impl>()}
{
    Impl& my = *impl_;
    setWindowTitle(tr("Sign in to Tidewell"));
    setModal(false);
    my.makeAccountPage(this);
    my.makePeoplePage(this);
    my.makeProblem(this);
    my.progress = new QProgressBar{this};
    my.progress->setRange(0, 0);
    my.progress->setTextVisible(false);
    my.progress->setAccessibleName(tr("Checking the account"));
    my.progressText = wrappedLabel({}, this);

    auto* buttons = new QDialogButtonBox{this};
    my.signIn = buttons->addButton(tr("&Sign in"), QDialogButtonBox::AcceptRole);
    my.follow = buttons->addButton(tr("&Follow"), QDialogButtonBox::AcceptRole);
    my.goBack = buttons->addButton(tr("&Back"), QDialogButtonBox::ActionRole);
    QPushButton* cancel = buttons->addButton(tr("&Cancel"), QDialogButtonBox::RejectRole);
    cancel->setAutoDefault(false);

    auto* layout = new QVBoxLayout{this};
    layout->setSizeConstraint(QLayout::SetFixedSize);  // Grows and shrinks with what is shown.
    layout->addWidget(my.accountPage);
    layout->addWidget(my.peoplePage);
    layout->addWidget(my.problem);
    layout->addWidget(my.progressText);
    layout->addWidget(my.progress);
    layout->addStretch();
    layout->addWidget(buttons);
    const std::array<QWidget*, 10> order{my.service, my.region, my.username, my.password, my.showPassword,
                                         my.list,    my.follow, my.signIn,   my.goBack,   cancel};
    for (std::size_t i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));

    connect(my.showPassword, &QCheckBox::toggled, this,
            [this](bool on) { impl_->password->setEchoMode(on ? QLineEdit::Normal : QLineEdit::Password); });
    const auto edited = [this] { impl_->updateButtons(); };
    connect(my.username, &QLineEdit::textChanged, this, edited);
    connect(my.password, &QLineEdit::textChanged, this, edited);
    connect(my.list, &QListWidget::itemSelectionChanged, this, edited);
    connect(my.service, &QComboBox::currentIndexChanged, this, [this] { impl_->providerChanged(); });
    connect(my.goBack, &QPushButton::clicked, this, [this] {
        impl_->showPage(false);
        impl_->username->setFocus();
        if (impl_->back)
            impl_->back();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { impl_->accepted(); });
    my.setProvider(GlucoseProvider::dexcom);
    my.showPage(false);
}

SignInDialog::~SignInDialog() { impl_->clearFields(); }

void SignInDialog::onSubmit(Submit handler) { impl_->submit = std::move(handler); }

void SignInDialog::onChoose(Choose handler) { impl_->choose = std::move(handler); }

void SignInDialog::onBack(std::function<void()> handler) { impl_->back = std::move(handler); }

void SignInDialog::onCancel(std::function<void()> handler) { impl_->cancel = std::move(handler); }

void SignInDialog::present(const GlucoseAccountConfiguration& account)
{
    if (!isVisible()) {
        impl_->finished = false;
        impl_->stored = account;
        impl_->stored.password = {};
        impl_->passwordIsStored = !account.password.empty();
        impl_->setProvider(account.provider);
        if (const int region = impl_->region->findData(QString::fromStdString(account.region)); region >= 0)
            impl_->region->setCurrentIndex(region);
        impl_->username->setText(QString::fromStdString(account.username));
        impl_->showPage(false);
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
    if (impl_->choosing()) {
        (impl_->people.empty() ? static_cast<QWidget*>(impl_->goBack) : impl_->list)->setFocus();
        return;
    }
    impl_->password->setFocus();
    impl_->password->selectAll();
}

void SignInDialog::showPeople(const std::vector<LibreConnection>& people)
{
    impl_->fillList(people);
    impl_->sharedWith->setText(
        tr("Shared with %1:").arg(QString::fromStdString(usernameOf(*impl_->username))));
    impl_->showPage(true);
    (people.empty() ? static_cast<QWidget*>(impl_->goBack) : impl_->list)->setFocus();
}

void SignInDialog::finish()
{
    impl_->finished = true;
    accept();
}

void SignInDialog::done(int result)
{
    impl_->clearFields();
    impl_->showPage(false);
    QDialog::done(result);
    if (!std::exchange(impl_->finished, false) && impl_->cancel)
        impl_->cancel();
}

}  // namespace tidewell
