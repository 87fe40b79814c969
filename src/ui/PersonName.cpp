#include "ui/PersonName.h"

#include <QCoreApplication>

namespace tidewell {
namespace {

constexpr qsizetype longestName = 80;
/// Enough to tell two ids apart, as the end of a card number is.
constexpr std::size_t shownEnd = 4;

/// Joiners belong to the spelling of names in several scripts; every other format character only changes how
/// the text around it is shown.
bool isShown(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned: return false;
    case QChar::Other_Format: return character == 0x200C || character == 0x200D;
    default: return true;
    }
}

QString shownName(std::string_view name)
{
    QString shown;
    const QString text =
        QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())).simplified();  // Breaks too.
    qsizetype length = 0;
    for (const char32_t character : text.toUcs4()) {
        if (!isShown(character))
            continue;
        if (++length > longestName)
            return shown + u'…';
        shown += QChar::fromUcs4(character);
    }
    return shown.simplified();
}

QString end(std::string_view patientID)
{
    return QStringLiteral(" (…") +
           shownName(patientID.substr(patientID.size() - std::min(patientID.size(), shownEnd))) + u')';
}

}  // namespace

QString personName(std::string_view name, std::string_view patientID)
{
    const QString shown = shownName(name);
    return shown.isEmpty() ? personNameWithID(name, patientID) : shown;
}

QString personNameWithID(std::string_view name, std::string_view patientID)
{
    const QString shown = shownName(name);
    return (shown.isEmpty() ? QCoreApplication::translate("PersonName", "No name") : shown) + end(patientID);
}

}  // namespace tidewell
