#include "ui/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

namespace tidewell {
namespace {

/// The languages that there is a catalogue for, beside English.
constexpr auto catalogues = std::to_array<const char*>({"de"});

QLocale& spokenLocale()
{
    static QLocale locale = QLocale::c();
    return locale;
}

/// Knows a class by its name alone as well: the toolkit asks with the namespace, and texts outside of classes
/// are marked without.
class Catalogue final : public QTranslator {
public:
    using QTranslator::QTranslator;
    [[nodiscard]] QString translate(const char* context, const char* source, const char* disambiguation,
                                    int n) const override
    {
        const QString found = QTranslator::translate(context, source, disambiguation, n);
        constexpr std::string_view prefix = "tidewell::";
        return found.isNull() && std::string_view{context}.starts_with(prefix)
                   ? QTranslator::translate(context + prefix.size(), source, disambiguation, n)
                   : found;
    }
};

/// The first of the locale's languages that the program speaks; English when it speaks none of them.
QString chosenLanguage(const QLocale& locale)
{
    const auto known = translatedLanguages();
    for (const QString& language : locale.uiLanguages())
        if (const QString code = language.section(u'-', 0, 0); std::ranges::find(known, code) != known.end())
            return code;
    return known.front();
}

}  // namespace

std::vector<QString> translatedLanguages()
{
    std::vector<QString> languages{QStringLiteral("en")};
    for (const char* const language : catalogues)
        languages.push_back(QString::fromLatin1(language));
    return languages;
}

std::unique_ptr<QTranslator> programTranslator(const QString& language)
{
    auto translator = std::make_unique<Catalogue>();
    if (!translator->load(QStringLiteral("tidewell_") + language, QStringLiteral(":/translations")))
        return nullptr;
    return translator;
}

void installTranslations(const QLocale& locale)
{
    qDeleteAll(QCoreApplication::instance()->findChildren<QTranslator*>(Qt::FindDirectChildrenOnly));
    spokenLocale() = QLocale::c();
    const QString language = chosenLanguage(locale);
    if (language == QLatin1String("en"))
        return;
    const auto install = [](std::unique_ptr<QTranslator> translator) {
        translator->setParent(QCoreApplication::instance());
        QCoreApplication::installTranslator(translator.release());
    };
    auto toolkit = std::make_unique<QTranslator>();
    if (toolkit->load(QStringLiteral("qtbase_") + language,
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        install(std::move(toolkit));
    if (auto own = programTranslator(language)) {
        install(std::move(own));
        spokenLocale() = locale.language() == QLocale{language}.language()
                             ? QLocale{locale.language(), locale.territory()}
                             : QLocale{language};
    }
}

QLocale displayLocale() { return spokenLocale(); }

}  // namespace tidewell
