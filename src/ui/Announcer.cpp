#include "ui/Announcer.h"

namespace tidewell {

Announcer::Announcer(QWidget* parent) : QWidget{parent}
{
    setObjectName(QStringLiteral("announcer"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    setGeometry(0, 0, 1, 1);  // Who is not to be seen at all is not in the tree either.
}

void Announcer::say(const QString& text)
{
    if (text.isEmpty() || !isVisible())
        return;
    setSpokenName(*this, text);
    QAccessibleEvent appeared{this, QAccessible::ObjectShow};
    QAccessible::updateAccessibility(&appeared);
}

}  // namespace tidewell
