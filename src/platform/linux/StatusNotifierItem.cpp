#include "platform/linux/StatusNotifierItem.h"

#include <QDBusMetaType>
#include <QtEndian>
#include <utility>

namespace tidewell {

IconPixmap iconPixmap(const QImage& image)
{
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    IconPixmap pixmap{straight.width(), straight.height(), {}};
    const qsizetype row = straight.width() * qsizetype{4};
    pixmap.bytes.resize(row * straight.height());
    for (int y = 0; y < straight.height(); ++y)
        qToBigEndian<quint32>(straight.constScanLine(y), straight.width(), pixmap.bytes.data() + y * row);
    return pixmap;
}

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& value)
{
    argument.beginStructure();
    argument << value.width << value.height << value.bytes;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& value)
{
    argument.beginStructure();
    argument >> value.width >> value.height >> value.bytes;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const ItemToolTip& value)
{
    argument.beginStructure();
    argument << value.iconName << value.icon << value.title << value.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ItemToolTip& value)
{
    argument.beginStructure();
    argument >> value.iconName >> value.icon >> value.title >> value.text;
    argument.endStructure();
    return argument;
}

StatusNotifierItem::StatusNotifierItem(QString menuPath, std::function<void(int, int)> activated)
    : menuPath_{std::move(menuPath)}, activated_{std::move(activated)}
{
    qDBusRegisterMetaType<IconPixmap>();
    qDBusRegisterMetaType<QList<IconPixmap>>();
    qDBusRegisterMetaType<ItemToolTip>();
}

void StatusNotifierItem::setFace(const ItemFace& face)
{
    const ItemFace before = std::exchange(face_, face);
    if (before.iconName != face.iconName || before.pixmaps != face.pixmaps ||
        before.description != face.description) {
        Q_EMIT NewIcon();
        Q_EMIT NewAttentionIcon();
    }
    if (before.label != face.label)
        Q_EMIT XAyatanaNewLabel(face.label, labelGuide());
    if (before.toolTip != face.toolTip)
        Q_EMIT NewToolTip();
    if (before.title != face.title)
        Q_EMIT NewTitle();
    if (before.status != face.status)
        Q_EMIT NewStatus(face.status);
}

QString StatusNotifierItem::labelGuide() const
{
    // The widest label, so that the panel need not move its other items with each value.
    return face_.label.isEmpty() ? QString{} : QStringLiteral("888 ↑↑");
}

}  // namespace tidewell
