#include "ui/Announcer.h"

#include <chrono>

namespace tidewell {
namespace {

/// Readers ask for the name after they were told of it, some with a pause.
constexpr auto kept = std::chrono::seconds{5};

}  // namespace

Announcer::Announcer(QWidget* parent) : QWidget{parent}
{
    setObjectName(QStringLiteral("announcer"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    setGeometry(0, 0, 1, 1);  // Who is not to be seen at all is not in the tree either.
    forget_.setObjectName(QStringLiteral("announcerTimer"));
    forget_.setSingleShot(true);
    forget_.setInterval(kept);
    connect(&forget_, &QTimer::timeout, this, [this] { setSpokenName(*this, {}); });
}

void Announcer::say(const QString& text)
{
    if (text.isEmpty() || !isVisible())
        return;
    setSpokenName(*this, text);
    QAccessibleEvent appeared{this, QAccessible::ObjectShow};
    QAccessible::updateAccessibility(&appeared);
    forget_.start();
}

}  // namespace tidewell
