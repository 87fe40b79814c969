#include "ui/DisplayText.h"

namespace tidewell {

QString displayText(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace tidewell
