#include "ui/SpokenStatusItem.h"

#include <QAccessible>

#include "ui/DisplayText.h"
#include "ui/SpokenWidget.h"

namespace tidewell {

SpokenStatusItem::SpokenStatusItem(std::function<void()> press) : press_{std::move(press)}
{
    setObjectName(QStringLiteral("statusBarButton"));
    announceStatusItem(this);
}

SpokenStatusItem::~SpokenStatusItem() { announceStatusItem(nullptr); }

void SpokenStatusItem::present(const StatusItemContent& content)
{
    const QString name = displayText(content.accessibilityLabel);
    QString description = displayText(content.accessibilityValue);
    if (!description.isEmpty())
        description += u' ';
    description += displayText(content.accessibilityHelp);
    if (name == name_ && description == description_)
        return;
    name_ = name;
    description_ = description;
    if (QAccessible::isActive()) {
        QAccessibleEvent changed{this, QAccessible::DescriptionChanged};
        QAccessible::updateAccessibility(&changed);
    }
}

}  // namespace tidewell
