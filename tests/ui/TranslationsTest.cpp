#include "ui/Translations.h"

#include <gtest/gtest.h>
#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <algorithm>

#include "ui/DisplayText.h"

namespace tidewell {
namespace {

struct Entry {
    QString context, source, translation;
    bool unfinished = false;
};

std::vector<Entry> catalogue(const QString& language)
{
    QFile file{QStringLiteral(TIDEWELL_SOURCES "/ui/translations/tidewell_%1.ts").arg(language)};
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << language.toStdString();
    QXmlStreamReader xml{&file};
    std::vector<Entry> entries;
    QString context;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("name"))
            context = xml.readElementText();
        else if (xml.name() == QLatin1String("source"))
            entries.push_back({context, xml.readElementText(), {}});
        else if (xml.name() == QLatin1String("translation")) {
            entries.back().unfinished = xml.attributes().hasAttribute(QStringLiteral("type"));
            entries.back().translation = xml.readElementText();
        }
    }
    EXPECT_FALSE(xml.hasError());
    return entries;
}

/// The arguments of a text, sorted.
QStringList arguments(const QString& text)
{
    static const QRegularExpression argument{QStringLiteral("%(\\d|p|n)")};
    QStringList found;
    for (auto matches = argument.globalMatch(text); matches.hasNext();)
        found << matches.next().captured();
    found.sort();
    return found;
}

qsizetype mnemonics(QString text)
{
    static const QRegularExpression mnemonic{QStringLiteral("&\\w"),
                                             QRegularExpression::UseUnicodePropertiesOption};
    return text.remove(QStringLiteral("&&")).count(mnemonic);
}

TEST(Translations, keepWhatTheProgramNeedsInATextForEveryLanguage)
{
    const auto languages = translatedLanguages();
    ASSERT_EQ(languages.front(), QStringLiteral("en"));
    for (auto language = languages.begin() + 1; language != languages.end(); ++language) {
        const auto entries = catalogue(*language);
        EXPECT_GT(entries.size(), 900U);
        for (const auto& [context, source, translation, unfinished] : entries) {
            const testing::ScopedTrace trace{__FILE__, __LINE__,
                                             QStringLiteral("%1: %2").arg(context, source).toStdString()};
            EXPECT_FALSE(unfinished || translation.isEmpty());
            EXPECT_EQ(arguments(translation), arguments(source));
            EXPECT_EQ(mnemonics(translation), mnemonics(source));
            for (const QChar end : {QChar{u'…'}, QChar{u':'}})
                EXPECT_EQ(translation.endsWith(end), source.endsWith(end));
            EXPECT_EQ(translation.endsWith(u' '), source.endsWith(u' '));
            EXPECT_EQ(translation.count(u'\n'), source.count(u'\n'));
        }
    }
}

TEST(Translations, areInstalledInTheFirstLanguageOfTheLocaleThatThereIs)
{
    struct Case {
        const char* locale;
        const char* quit;
        const char* spoken;
    };
    for (const auto& [locale, quit, spoken] :
         {Case{"de_AT", "Beenden", "de_AT"}, Case{"fr_FR", "Quit", "C"}, Case{"de_DE", "Beenden", "de_DE"},
          Case{"en_GB", "Quit", "C"}}) {
        installTranslations(QLocale{QLatin1String{locale}});
        EXPECT_EQ(displayText("Quit").toStdString(), quit) << locale;
        EXPECT_EQ(displayLocale().name().toStdString(), spoken) << locale;
    }
}

}  // namespace
}  // namespace tidewell
