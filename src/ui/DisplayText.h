#pragma once

#include <QDate>
#include <QString>
#include <string>
#include <string_view>
#include <vector>

#include "statusbar/StatusBarMenu.h"

namespace tidewell {

/// A text of the core as the person reads it, in the language of the translators that are installed. The core
/// speaks English; a text that no translation knows stays as it is. Main thread.
///
/// Knows the fixed texts of coreTexts(), those with something filled in, and several sentences or lines of
/// them in a row. What is filled in is translated as well where it is one of them.
[[nodiscard]] QString displayText(std::string_view text);

/// The same for whoever goes on with the core's own texts.
[[nodiscard]] std::string displayString(std::string_view text);
/// A menu with all its texts as the person reads them.
[[nodiscard]] std::vector<MenuItem> displayMenu(std::vector<MenuItem> items);

/// A date in the language that is spoken; `format` is that of English, as the toolkit writes formats.
[[nodiscard]] QString displayDate(QDate date, QString format);

}  // namespace tidewell
