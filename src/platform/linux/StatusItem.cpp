#include "platform/linux/StatusItem.h"

#include <QCoreApplication>
#include <QCursor>
#include <QDBusConnection>
#include <QGuiApplication>
#include <QIcon>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <atomic>

#include "platform/linux/Background.h"
#include "platform/linux/BusConnection.h"
#include "platform/linux/DBusMenu.h"
#include "platform/linux/MotionPreference.h"
#include "platform/linux/StatusHost.h"
#include "platform/linux/StatusIconFiles.h"
#include "platform/linux/StatusNotifierItem.h"
#include "platform/linux/StatusWatcher.h"
#include "support/Log.h"
#include "ui/DisplayText.h"
#include "ui/StatusMenu.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

const Log log{"StatusItem"};
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuPath = QStringLiteral("/MenuBar");

/// Between two attempts to reach the bus, or to register with a service that refuses; doubled each time up to
/// the last.
constexpr std::chrono::milliseconds firstRetry{10'000};
constexpr std::chrono::milliseconds lastRetry{300'000};

/// A bus that lives greets within a millisecond.
constexpr std::chrono::milliseconds busGreetingWait{1000};

/// What is over sooner causes no traffic at all, and nobody could have read it.
constexpr std::chrono::milliseconds activityDelay{1000};
/// Between two eighths of a turn.
constexpr std::chrono::milliseconds turnInterval{1000};

/// Some panels take a tooltip's title as text and some as markup; this reads the same in both.
QString neutralTitle(const std::string& title)
{
    return displayText(title).replace(u'&', u'+').replace(u'<', u'‹').replace(u'>', u'›');
}

QString markup(const std::string& text, std::string_view lineBreak)
{
    const QLatin1String replacement{lineBreak.data(), static_cast<qsizetype>(lineBreak.size())};
    return displayText(text).toHtmlEscaped().replace(u'\n', replacement);
}

/// Worth the panel's notice: the person has to act, or the value is in the red.
bool needsAttention(const StatusItemContent& content)
{
    return content.iconState == StatusBarIconState::attention || content.look == StatusButtonLook::redFill;
}

}  // namespace

StatusItemTime eventLoopTime()
{
    return {.now =
                [] {
                    const auto now = std::chrono::steady_clock::now().time_since_epoch();
                    return std::chrono::duration_cast<std::chrono::milliseconds>(now);
                },
            .after = [](std::chrono::milliseconds delay,
                        std::function<void()> work) { QTimer::singleShot(delay, qApp, std::move(work)); }};
}

struct StatusItem::Impl : std::enable_shared_from_this<Impl> {
    explicit Impl(StatusItemOptions chosen) : options{std::move(chosen)} {}

    StatusItemOptions options;
    std::function<void(MenuCommand)> command{};
    std::function<GlucoseGraphContent()> graph{};
    std::function<void(QPoint)> activate{};
    std::function<void()> registered{};
    std::function<void()> absent{};
    /// Outlives what calls it back; calls that wait in the event loop go with it.
    QObject loop{};

    StatusItemContent content{};
    bool hasContent = false;
    std::optional<std::chrono::milliseconds> lastUpdate{};
    std::optional<std::chrono::milliseconds> pendingUpdate{};  ///< When the next one is due.
    std::optional<std::chrono::milliseconds> activitySince{};
    std::optional<bool> reducedMotion{};  ///< Empty while nobody has said.
    bool askedForMotion = false;

    std::shared_ptr<void> connecting{};
    std::optional<QDBusConnection> bus{};
    std::unique_ptr<StatusNotifierItem> item{};
    std::unique_ptr<DBusMenu> busMenu{};
    std::unique_ptr<StatusWatcher> watcher{};
    std::unique_ptr<MotionPreference> motion{};
    std::optional<StatusHost> host{};  ///< While a panel is there.
    bool accepted = false;             ///< By that panel.
    bool panelShows = true;            ///< Unless it says that it only collects items.
    std::chrono::milliseconds retryDelay = firstRetry;
    std::chrono::milliseconds busRetryDelay = firstRetry;
    bool busMissed = false;        ///< And said so.
    unsigned panelGeneration = 0;  ///< Distinguishes what was begun before the panel came or went.

    std::unique_ptr<StatusMenu> ownMenu{};
    std::unique_ptr<QSystemTrayIcon> legacyTray{};
    std::shared_ptr<void> trayQuestion{};  ///< Whether the tray can be made without waiting.
    std::vector<QImage> legacyPictures{};  ///< That it shows, one for each height.

    bool waitsForIconFile = false;
    StatusIconFiles iconFiles{options.iconFolder, [this] { update(); }};

    ~Impl()
    {
        legacyTray.reset();  // Before the menu that it shows.
        leaveBus();
    }

    void leaveBus()
    {
        if (!bus)
            return;
        watcher.reset();
        motion.reset();
        bus->unregisterObject(itemPath);
        bus->unregisterObject(menuPath);
        item.reset();
        busMenu.reset();
        QDBusConnection::disconnectFromBus(bus->name());
        bus.reset();
    }

    /// Later, from the event loop, as long as this lives.
    template <class Work>
    void soon(Work work)
    {
        QTimer::singleShot(0, &loop, std::move(work));
    }

    void after(std::chrono::milliseconds delay, std::function<void(Impl&)> work)
    {
        options.time.after(delay, [weak = weak_from_this(), work = std::move(work)] {
            if (const auto self = weak.lock())
                work(*self);
        });
    }

    void chosen(MenuCommand what)
    {
        soon([this, what] {
            if (command)
                command(what);
        });
    }

    void clicked(QPoint position)
    {
        soon([this, position] {
            if (activate)
                activate(position);
            else if (ownMenu && ownMenu->isOpen())
                ownMenu->close();
            else
                menu().popUp(position);
        });
    }

    StatusMenu& menu()
    {
        if (!ownMenu) {
            ownMenu = std::make_unique<StatusMenu>(
                StatusMenu::Handlers{.command = [this](MenuCommand what) { chosen(what); },
                                     .graph = [this] { return graph ? graph() : GlucoseGraphContent{}; }});
            ownMenu->setItems(content.menu);
        }
        return *ownMenu;
    }

    void connect()
    {
        const QString address = options.busAddress.isEmpty() ? sessionBusAddress() : options.busAddress;
        connecting = connectToBus(address, [this](std::optional<QDBusConnection> connection) {
            if (connection) {
                busRetryDelay = firstRetry;
                busMissed = false;
                useBus(*connection);
                return;
            }
            if (!std::exchange(busMissed, true))
                log.warning("There is no session bus, so no panel can be asked to show the status item");
            useLegacyTray();
            connectLater();
        });
    }

    void connectLater()
    {
        after(busRetryDelay, [](Impl& self) { self.connect(); });
        busRetryDelay = std::min(busRetryDelay * 2, lastRetry);
    }

    void busLost()
    {
        log.warning("The session bus has gone; looking for it again");
        panelVanished();
        leaveBus();
        connectLater();
    }

    void useBus(const QDBusConnection& connection)
    {
        bus = connection;
        item = std::make_unique<StatusNotifierItem>(menuPath, [this](int x, int y) { clicked({x, y}); });
        busMenu = std::make_unique<DBusMenu>([this](MenuCommand what) { chosen(what); });
        const QDBusConnection::RegisterOptions all = QDBusConnection::ExportAllProperties |
                                                     QDBusConnection::ExportScriptableSlots |
                                                     QDBusConnection::ExportScriptableSignals;
        if (!bus->registerObject(itemPath, item.get(), all) ||
            !bus->registerObject(menuPath, busMenu.get(), all))
            log.error("The status item could not be put on the session bus");
        watcher = std::make_unique<StatusWatcher>(
            *bus, StatusWatcher::Handlers{
                      .appeared = [this](const std::string& process) { panelAppeared(process); },
                      .vanished = [this] { panelVanished(); },
                      .registered =
                          [this] {
                              accepted = true;
                              retryDelay = firstRetry;
                              if (registered)
                                  registered();
                          },
                      .hasHost = [this](bool has) { panelShows = has; },
                      .refused = [this] { registrationRefused(); },
                      .disconnected = [this] { soon([this] { busLost(); }); }});
        watcher->start();
        motion =
            std::make_unique<MotionPreference>(*bus, [this](bool reduced) { setReducedMotion(reduced); });
    }

    void panelAppeared(const std::string& process)
    {
        ++panelGeneration;
        accepted = false;
        panelShows = true;
        legacyTray.reset();
        host = statusHost(process);
        if (options.shape)
            host = withShape(*host, *options.shape);
        log.info("A panel is there: " + (process.empty() ? std::string{"of unknown name"} : process));
        retryDelay = firstRetry;
        if (hasContent)
            update();
        watcher->registerItem();
    }

    void panelVanished()
    {
        const unsigned generation = ++panelGeneration;
        host.reset();
        accepted = false;
        after(options.legacyTrayDelay, [generation](Impl& self) {
            if (generation == self.panelGeneration)
                self.useLegacyTray();
        });
    }

    void registrationRefused()
    {
        log.warning("The panel did not accept the status item; trying again");
        const unsigned generation = panelGeneration;
        after(retryDelay, [generation](Impl& self) {
            if (generation == self.panelGeneration)
                self.watcher->registerItem();
        });
        retryDelay = std::min(retryDelay * 2, lastRetry);
    }

    /// Only asked for once the newer kind has been absent for a while, since the toolkit decides once for the
    /// process which kind it uses. For that it asks the session bus, and waits: one that hangs must not be
    /// asked.
    void useLegacyTray()
    {
        if (legacyTray || QGuiApplication::platformName() != QLatin1String("xcb"))
            return;
        const auto safe = std::make_shared<std::atomic<bool>>(false);
        trayQuestion = runInBackground(
            [safe] {
                const QString address = sessionBusAddress();
                *safe = !busListens(address) || busGreets(address, busGreetingWait);
            },
            [this, safe] {
                if (*safe)
                    showLegacyTray();
                else
                    after(lastRetry, [](Impl& self) {
                        if (!self.host)
                            self.useLegacyTray();
                    });
            });
    }

    /// Shows itself as soon as there is an old X11 tray, now or later.
    void showLegacyTray()
    {
        if (legacyTray || host)
            return;
        legacyTray = std::make_unique<QSystemTrayIcon>();
        legacyPictures.clear();
        QObject::connect(legacyTray.get(), &QSystemTrayIcon::activated, &loop,
                         [this](QSystemTrayIcon::ActivationReason reason) {
                             if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::Context)
                                 clicked(QCursor::pos());
                         });
        if (hasContent)
            update();
        legacyTray->show();
    }

    void present(const StatusItemContent& next)
    {
        if (hasContent && next == content)
            return;
        const auto activityBefore = content.activity;
        content = next;
        hasContent = true;
        if (ownMenu)
            ownMenu->setItems(content.menu);
        if (!content.activity)
            activitySince.reset();
        else if (!activityBefore)
            activitySince = options.time.now();
        updateWhenDue();
    }

    /// How far the sign of the activity has turned; empty without one to show.
    std::optional<int> activityTurn() const
    {
        const auto now = options.time.now();
        if (!activitySince || now < *activitySince + activityDelay || !showsActivity(content))
            return std::nullopt;
        const auto shown = now - *activitySince - activityDelay;
        return reducedMotion.value_or(true) ? 0 : static_cast<int>(shown / turnInterval % 8);
    }

    void updateWhenDue()
    {
        const auto now = options.time.now();
        auto due = lastUpdate ? *lastUpdate + options.updateInterval : now;
        if (activitySince)
            due = std::max(due, *activitySince + activityDelay);
        if (due > now) {
            updateAt(due);
            return;
        }
        pendingUpdate.reset();
        update();
    }

    void updateAt(std::chrono::milliseconds due)
    {
        if (pendingUpdate && *pendingUpdate <= due)
            return;
        pendingUpdate = due;
        after(due - options.time.now(), [due](Impl& self) {
            if (self.pendingUpdate != due)
                return;
            self.pendingUpdate.reset();
            self.updateWhenDue();
        });
    }

    void setReducedMotion(bool reduced)
    {
        if (std::exchange(reducedMotion, reduced) != reduced && activitySince)
            updateWhenDue();
    }

    /// Nobody is asked before there is something to move; until the answer is there, it stands still.
    void askForMotion()
    {
        if (reducedMotion || std::exchange(askedForMotion, true))
            return;
        if (!options.askReducedMotion) {
            reducedMotion = false;
            return;
        }
        options.askReducedMotion([weak = weak_from_this()](bool reduced) {
            if (const auto self = weak.lock(); self && !self->reducedMotion)
                self->setReducedMotion(reduced);
        });
    }

    void lookWhetherAbsent()
    {
        if (host && accepted && panelShows)
            return;
        if (legacyTray && QSystemTrayIcon::isSystemTrayAvailable())
            return;
        absent();
    }

    /// Brings everything that shows the item up to the content. Each part finds out itself what is different.
    void update()
    {
        const auto now = options.time.now();
        if (item && host && host->iconFile &&
            iconFiles.look(filePicture(), now) == StatusIconFiles::State::soon) {
            // All of it follows at once, as soon as the picture is there; without it where that takes long.
            if (!std::exchange(waitsForIconFile, true))
                after(StatusIconFiles::patience, [](Impl& self) {
                    if (std::exchange(self.waitsForIconFile, false))
                        self.update();
                });
            return;
        }
        waitsForIconFile = false;
        lastUpdate = now;
        if (activityTurn()) {
            askForMotion();
            if (reducedMotion == false)
                updateAt(*lastUpdate + turnInterval);
        }
        if (legacyTray)
            updateLegacyTray();
        if (!item || !host)
            return;
        // Translated whole before lines are broken, and then what stands in lines only.
        busMenu->setItems(displayMenu(menuOfLines(displayMenu(content.menu))));
        item->setFace(face());
    }

    ItemFace face()
    {
        ItemFace face;
        face.title = displayText(content.accessibilityLabel);
        if (!content.accessibilityValue.empty())
            face.title += QLatin1String(": ") + displayText(content.accessibilityValue);
        face.status = needsAttention(content) ? QStringLiteral("NeedsAttention") : QStringLiteral("Active");
        for (const int height : host->heights)
            face.pixmaps.append(iconPixmap(paint(host->shape, height)));
        if (host->iconFile) {
            const QImage picture = filePicture();
            if (iconFiles.look(picture, options.time.now()) == StatusIconFiles::State::ready)
                face.iconName = QString::fromStdString(iconFiles.file(picture).string());
            face.label = QString::fromStdString(content.label);
            face.description = face.title + u' ' + displayText(content.accessibilityHelp);
        }
        face.toolTip.title = neutralTitle(content.tooltipTitle);
        face.toolTip.text = markup(content.tooltipText, host->lineBreak);
        return face;
    }

    QImage paint(StatusIconShape shape, int height) const
    {
        return paintStatusIcon(
            content,
            {.shape = shape, .height = height, .scheme = options.scheme, .activityTurn = activityTurn()});
    }

    /// What the icon file has to show.
    QImage filePicture() const { return paint(host->shape, host->heights.back()); }

    void updateLegacyTray()
    {
        std::vector<QImage> pictures;
        for (const int height : {16, 22, 24, 32, 48})
            pictures.push_back(paint(options.shape.value_or(StatusIconShape::stacked), height));
        if (pictures != legacyPictures) {
            QIcon icon;
            for (const QImage& picture : pictures)
                icon.addPixmap(QPixmap::fromImage(picture));
            legacyTray->setIcon(icon);
            legacyPictures = std::move(pictures);
        }
        QString text = displayText(content.tooltipTitle);
        if (!content.tooltipText.empty())
            text += u'\n' + displayText(content.tooltipText);
        legacyTray->setToolTip(text);
    }
};

StatusItem::StatusItem(StatusItemOptions options, QObject* parent)
    : QObject{parent}, impl_{std::make_shared<Impl>(std::move(options))}
{
}

StatusItem::~StatusItem() = default;

void StatusItem::showMenu(QPoint position)
{
    impl_->soon([impl = impl_.get(), position] { impl->menu().popUp(position); });
}

void StatusItem::setGraphSource(std::function<GlucoseGraphContent()> source)
{
    impl_->graph = std::move(source);
}

void StatusItem::graphDidChange()
{
    if (impl_->ownMenu)
        impl_->ownMenu->refreshGraph();
}

void StatusItem::onCommand(std::function<void(MenuCommand)> handler) { impl_->command = std::move(handler); }

void StatusItem::onActivate(std::function<void(QPoint)> handler) { impl_->activate = std::move(handler); }

void StatusItem::onRegistered(std::function<void()> handler) { impl_->registered = std::move(handler); }

void StatusItem::onAbsent(std::function<void()> handler) { impl_->absent = std::move(handler); }

void StatusItem::start()
{
    impl_->connect();
    if (impl_->absent)
        impl_->after(impl_->options.absenceDelay, [](auto& self) { self.lookWhetherAbsent(); });
}

void StatusItem::present(const StatusItemContent& content) { impl_->present(content); }

}  // namespace tidewell
