#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QImage>
#include <QList>
#include <QObject>
#include <QString>
#include <functional>

namespace tidewell {

/// A picture as the bus carries it: ARGB, straight alpha, the most significant byte first.
struct IconPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes{};
    bool operator==(const IconPixmap&) const = default;
};
[[nodiscard]] IconPixmap iconPixmap(const QImage& image);

struct ItemToolTip {
    QString iconName{};
    QList<tidewell::IconPixmap> icon{};
    QString title{};
    QString text{};  ///< Markup.
    bool operator==(const ItemToolTip&) const = default;
};

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& value);
QDBusArgument& operator<<(QDBusArgument& argument, const ItemToolTip& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, ItemToolTip& value);

/// What panels can read of the item.
struct ItemFace {
    QString title{};
    QString status = QStringLiteral("Passive");
    QString iconName{};  ///< Wins over the pictures wherever both are given.
    QList<tidewell::IconPixmap> pixmaps{};
    ItemToolTip toolTip{};
    QString label{};
    QString description{};  ///< Of the picture, to be spoken; for panels that ask for it.
};

/// The exported object: answers panels from the face that it was given, and tells them what changed. Main
/// thread.
class StatusNotifierItem final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(uint WindowId READ windowId)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(QList<tidewell::IconPixmap> IconPixmap READ pixmaps)
    Q_PROPERTY(QString OverlayIconName READ noText)
    Q_PROPERTY(QList<tidewell::IconPixmap> OverlayIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionIconName READ iconName)
    Q_PROPERTY(QList<tidewell::IconPixmap> AttentionIconPixmap READ pixmaps)
    Q_PROPERTY(QString AttentionMovieName READ noText)
    Q_PROPERTY(tidewell::ItemToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
    Q_PROPERTY(QString IconThemePath READ noText)
    // What a screen reader says of the picture; of panels that ask for it.
    Q_PROPERTY(QString IconAccessibleDesc READ description)
    Q_PROPERTY(QString AttentionAccessibleDesc READ description)
    Q_PROPERTY(QString XAyatanaLabel READ label)
    Q_PROPERTY(QString XAyatanaLabelGuide READ labelGuide)
    Q_PROPERTY(uint XAyatanaOrderingIndex READ orderingIndex)

public:
    /// `activated` gets the position of a click; it is called while the panel waits for the answer.
    StatusNotifierItem(QString menuPath, std::function<void(int x, int y)> activated);

    /// Takes over what panels see and signals exactly what is different.
    void setFace(const ItemFace& face);

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const { return QStringLiteral("tidewell"); }
    QString title() const { return face_.title; }
    QString status() const { return face_.status; }
    uint windowId() const { return 0; }
    QString iconName() const { return face_.iconName; }
    QList<tidewell::IconPixmap> pixmaps() const { return face_.pixmaps; }
    tidewell::ItemToolTip toolTip() const { return face_.toolTip; }
    /// Never: a click asks for our own menu, which has the graph; the panel's own comes by the other button.
    bool itemIsMenu() const { return false; }
    QDBusObjectPath menu() const { return QDBusObjectPath{menuPath_}; }
    QString label() const { return face_.label; }
    QString description() const { return face_.description; }
    QString labelGuide() const;
    uint orderingIndex() const { return 0; }
    QString noText() const { return {}; }
    QList<tidewell::IconPixmap> noPixmaps() const { return {}; }

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(int x, int y) { activated_(x, y); }
    Q_SCRIPTABLE void ContextMenu(int x, int y) { activated_(x, y); }
    // Known calls that have no meaning here; panels log an error when they are missing.
    Q_SCRIPTABLE void SecondaryActivate(int /*x*/, int /*y*/) {}
    Q_SCRIPTABLE void Scroll(int /*delta*/, const QString& /*orientation*/) {}
    // The toolkit's public interface takes such a token from the environment alone, and that must not change
    // while other threads read it.
    Q_SCRIPTABLE void ProvideXdgActivationToken(const QString& /*token*/) {}

Q_SIGNALS:
    Q_SCRIPTABLE void NewTitle();
    Q_SCRIPTABLE void NewIcon();
    Q_SCRIPTABLE void NewAttentionIcon();
    Q_SCRIPTABLE void NewToolTip();
    Q_SCRIPTABLE void NewStatus(const QString& status);
    Q_SCRIPTABLE void XAyatanaNewLabel(const QString& label, const QString& guide);

private:
    QString menuPath_;
    std::function<void(int, int)> activated_;
    ItemFace face_{};
};

}  // namespace tidewell

Q_DECLARE_METATYPE(tidewell::IconPixmap)
Q_DECLARE_METATYPE(tidewell::ItemToolTip)
