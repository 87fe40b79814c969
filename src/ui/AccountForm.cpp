#include "ui/AccountForm.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "config/GlucoseProvider.h"
#include "config/LocaleDefaults.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

struct Choice {
    const char* code;
    const char* title;
};

constexpr std::array dexcomRegions{
    Choice{"us", QT_TRANSLATE_NOOP("tidewell::AccountForm", "United States")},
    Choice{"ous", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Outside the United States")},
    Choice{"jp", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Japan")},
};

/// By title.
constexpr std::array libreLinkUpRegions{
    Choice{"ap", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Asia and Pacific")},
    Choice{"au", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Australia")},
    Choice{"ca", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Canada")},
    Choice{"cn", QT_TRANSLATE_NOOP("tidewell::AccountForm", "China")},
    Choice{"eu", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Europe")},
    Choice{"eu2", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Europe 2")},
    Choice{"fr", QT_TRANSLATE_NOOP("tidewell::AccountForm", "France")},
    Choice{"de", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Germany")},
    Choice{"jp", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Japan")},
    Choice{"la", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Latin America")},
    Choice{"ru", QT_TRANSLATE_NOOP("tidewell::AccountForm", "Russia")},
    Choice{"ae", QT_TRANSLATE_NOOP("tidewell::AccountForm", "United Arab Emirates")},
    Choice{"us", QT_TRANSLATE_NOOP("tidewell::AccountForm", "United States")},
};

/// What a service calls things.
struct ServiceTexts {
    const char* name;
    const char* intro;
    const char* usernameLabel;
    const char* usernameName;
    const char* usernameHint;
    std::span<const Choice> regions;
};

const ServiceTexts& textsOf(GlucoseProvider provider)
{
    static constexpr ServiceTexts dexcom{
        .name = "Dexcom Share",
        .intro = QT_TRANSLATE_NOOP(
            "tidewell::AccountForm",
            "Use the account that publishes the readings: the one signed in on the phone that receives the "
            "sensor. A follower's account does not work. Sharing must be turned on in the sensor app, with "
            "at least one follower."),
        .usernameLabel = QT_TRANSLATE_NOOP("tidewell::AccountForm", "&User name:"),
        .usernameName = QT_TRANSLATE_NOOP("tidewell::AccountForm", "User name"),
        .usernameHint = QT_TRANSLATE_NOOP(
            "tidewell::AccountForm", "User name, e-mail address, or phone number with + and country code"),
        .regions = dexcomRegions,
    };
    static constexpr ServiceTexts libreLinkUp{
        .name = "LibreLinkUp",
        .intro = QT_TRANSLATE_NOOP(
            "tidewell::AccountForm",
            "Use a follower's account: the one signed in to the LibreLinkUp app. Whoever wears the sensor "
            "must have invited it in the Libre app, under the connected apps. If that is you, invite "
            "yourself. When you are not sure of the region, choose a near one: the service knows the right "
            "one."),
        .usernameLabel = QT_TRANSLATE_NOOP("tidewell::AccountForm", "&E-mail:"),
        .usernameName = QT_TRANSLATE_NOOP("tidewell::AccountForm", "E-mail"),
        .usernameHint =
            QT_TRANSLATE_NOOP("tidewell::AccountForm", "The follower's address, as in the LibreLinkUp app"),
        .regions = libreLinkUpRegions,
    };
    switch (provider) {
    case GlucoseProvider::dexcom: return dexcom;
    case GlucoseProvider::libreLinkUp: return libreLinkUp;
    }
    std::unreachable();
}

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

}  // namespace

struct AccountForm::Impl {
    std::function<void()> edited{};
    bool filling = false;  ///< The fields are being filled, nobody types.

    QLabel* intro = nullptr;
    QComboBox* service = nullptr;
    QComboBox* region = nullptr;
    QLabel* usernameLabel = nullptr;
    QLineEdit* username = nullptr;
    QLabel* usernameHint = nullptr;
    QLineEdit* password = nullptr;
    QLabel* passwordHint = nullptr;
    QCheckBox* showPassword = nullptr;

    GlucoseAccountConfiguration known{};  ///< As it was filled in, without its password ...
    bool hasPassword = false;             ///< ... of which only this is kept.

    [[nodiscard]] GlucoseProvider provider() const
    {
        return allGlucoseProviders.at(static_cast<std::size_t>(std::max(service->currentIndex(), 0)));
    }

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
        usernameHint->setText(tr(texts.usernameHint));
        username->setAccessibleDescription(usernameHint->text());
        region->clear();
        for (const Choice& choice : texts.regions)
            region->addItem(tr(choice.title), QString::fromLatin1(choice.code));
        const QString country = QLocale::territoryToCode(QLocale::system().territory());
        setRegion(usualRegion(provider(), country.toStdString()));
    }

    void setRegion(std::string_view code) const
    {
        const int at = region->findData(QString::fromUtf8(code.data(), static_cast<qsizetype>(code.size())));
        if (at >= 0)
            region->setCurrentIndex(at);
    }

    /// Whether the account in the fields is the one whose password is known.
    [[nodiscard]] bool isKnown() const
    {
        return hasPassword && provider() == known.provider && usernameOf(*username) == known.username;
    }

    void changed()
    {
        passwordHint->setVisible(isKnown());
        password->setAccessibleDescription(isKnown() ? passwordHint->text() : QString{});
        if (!filling && edited)
            edited();
    }
};

AccountForm::AccountForm(QWidget* parent) : QWidget{parent}, impl_{std::make_unique<Impl>()}
{
    Impl& my = *impl_;
    my.intro = wrappedLabel({}, this);
    my.service = new QComboBox{this};
    for (const GlucoseProvider one : allGlucoseProviders)
        my.service->addItem(QString::fromUtf8(textsOf(one).name));
    my.service->setAccessibleName(tr("Glucose service"));
    my.region = new QComboBox{this};
    my.region->setAccessibleName(tr("Region of the account"));
    my.region->setMaxVisibleItems(static_cast<int>(libreLinkUpRegions.size()));
    my.username = new QLineEdit{this};
    my.username->setMaxLength(256);
    my.username->setInputMethodHints(Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText);
    my.usernameHint = wrappedLabel({}, this);
    my.password = new QLineEdit{this};
    my.password->setAccessibleName(tr("Password"));
    my.password->setEchoMode(QLineEdit::Password);
    my.password->setMaxLength(1024);
    my.password->setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhHiddenText | Qt::ImhNoAutoUppercase |
                                     Qt::ImhNoPredictiveText);
    my.passwordHint = wrappedLabel(tr("Leave empty to use the stored password."), this);
    my.showPassword = new QCheckBox{tr("S&how password"), this};

    // A grid gives a hint that wraps the height of its width, which a form does not.
    auto* const form = new QGridLayout;
    form->setColumnStretch(1, 1);
    const auto addField = [&](const QString& title, QWidget* field, QLabel* hint) {
        auto* const label = new QLabel{title, this};
        label->setBuddy(field);
        const int row = form->rowCount();
        form->addWidget(label, row, 0);
        form->addWidget(field, row, 1);
        if (hint)
            form->addWidget(hint, row + 1, 1);
        return label;
    };
    addField(tr("Ser&vice:"), my.service, nullptr);
    addField(tr("&Region:"), my.region, nullptr);
    my.usernameLabel = addField({}, my.username, my.usernameHint);  // Named with the service.
    addField(tr("&Password:"), my.password, my.passwordHint);
    form->addWidget(my.showPassword, form->rowCount(), 1);
    for (QLabel* hint : {my.usernameHint, my.passwordHint})
        makeQuiet(*hint);
    auto* const layout = new QVBoxLayout{this};
    layout->setContentsMargins({});
    layout->addWidget(my.intro);
    layout->addLayout(form);

    connect(my.showPassword, &QCheckBox::toggled, this,
            [this](bool on) { impl_->password->setEchoMode(on ? QLineEdit::Normal : QLineEdit::Password); });
    for (QLineEdit* edit : {my.username, my.password})
        connect(edit, &QLineEdit::textChanged, this, [this] { impl_->changed(); });
    connect(my.region, &QComboBox::currentIndexChanged, this, [this] { impl_->changed(); });
    connect(my.service, &QComboBox::currentIndexChanged, this, [this] {
        const bool nested = std::exchange(impl_->filling, true);
        impl_->providerChanged();
        impl_->filling = nested;
        impl_->changed();
    });
    fill({}, false);
}

AccountForm::~AccountForm() { clear(); }

void AccountForm::onEdited(std::function<void()> handler) { impl_->edited = std::move(handler); }

void AccountForm::fill(const GlucoseAccountConfiguration& account, bool hasPassword)
{
    Impl& my = *impl_;
    my.filling = true;
    my.known = account;
    my.known.password = {};
    my.hasPassword = hasPassword;
    my.setProvider(account.provider);
    my.setRegion(account.region);
    my.username->setText(QString::fromStdString(account.username));
    clearSecret(*my.password);
    my.showPassword->setChecked(false);
    my.changed();
    my.filling = false;
}

GlucoseAccountConfiguration AccountForm::account() const
{
    GlucoseAccountConfiguration account;
    account.provider = impl_->provider();
    account.username = usernameOf(*impl_->username);
    account.password = passwordOf(*impl_->password);
    account.region = impl_->region->currentData().toString().toStdString();
    return account;
}

bool AccountForm::isComplete() const
{
    return !usernameOf(*impl_->username).empty() && (!impl_->password->text().isEmpty() || impl_->isKnown());
}

void AccountForm::setLocked(bool locked)
{
    for (QWidget* field : std::initializer_list<QWidget*>{impl_->service, impl_->region, impl_->username,
                                                          impl_->password, impl_->showPassword})
        field->setEnabled(!locked);
}

void AccountForm::setIntroduced(bool introduced) { impl_->intro->setVisible(introduced); }

void AccountForm::focusMissing()
{
    (usernameOf(*impl_->username).empty() ? impl_->username : impl_->password)->setFocus();
}

void AccountForm::focusPassword()
{
    impl_->password->setFocus();
    impl_->password->selectAll();
}

void AccountForm::clear()
{
    Impl& my = *impl_;
    my.filling = true;
    for (QLineEdit* edit : {my.password, my.username})
        clearSecret(*edit);
    my.showPassword->setChecked(false);
    my.known = {};
    my.hasPassword = false;
    my.filling = false;
}

QString serviceTitle(GlucoseProvider provider) { return QString::fromUtf8(textsOf(provider).name); }

QString regionTitle(GlucoseProvider provider, std::string_view code)
{
    // Two names of Dexcom's bases that are accepted as well.
    if (provider == GlucoseProvider::dexcom)
        code = code == "eu" ? "ous" : code == "apac" ? "jp" : code;
    for (const Choice& choice : textsOf(provider).regions)
        if (choice.code == code)
            return AccountForm::tr(choice.title);
    return QString::fromUtf8(code.data(), static_cast<qsizetype>(code.size()));
}

}  // namespace tidewell
