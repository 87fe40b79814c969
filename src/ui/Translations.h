#pragma once

#include <QLocale>
#include <QString>
#include <QTranslator>
#include <memory>
#include <vector>

namespace tidewell {

/// The languages that the program speaks, as ISO 639 codes; English first.
[[nodiscard]] std::vector<QString> translatedLanguages();

/// This program's own texts in one of those languages; empty for English, which needs none.
[[nodiscard]] std::unique_ptr<QTranslator> programTranslator(const QString& language);

/// Installs this program's and the toolkit's own texts in the first of the locale's languages that there is,
/// for the life of the application object, in place of those that it installed before. English needs none.
/// After the application was made, and before its windows are.
void installTranslations(const QLocale& locale);

/// For dates in texts: the locale of the language that is spoken. English keeps the forms of the C locale.
[[nodiscard]] QLocale displayLocale();

}  // namespace tidewell
