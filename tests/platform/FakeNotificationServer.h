#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QList>
#include <QVariant>
#include <map>
#include <optional>
#include <vector>

#include "TestBus.h"

namespace tidewell {

/// Answers calls on a bus as a table says, under any names; keeps those that it has no answer for.
class FakeService : public QDBusVirtualObject {
public:
    /// Takes every path, and the names.
    FakeService(TestBus& bus, const QStringList& names);
    ~FakeService() override;

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

    /// What a call of the method is answered with; properties as "interface.name", settings of Xfce by path.
    std::map<QString, QVariant> answers{};
    QDBusConnection connection;

protected:
    /// True when the call was dealt with.
    virtual bool handle(const QDBusMessage&) { return false; }

private:
    QStringList names_;
};

/// A notification server that does as the test says.
class FakeNotificationServer final : public FakeService {
public:
    enum class Mood { answers, refuses, hangs, talksNonsense, dies };

    explicit FakeNotificationServer(TestBus& bus, QStringList announced = {"body", "actions"});

    /// As a person would. To the one who posted alone, as some servers do.
    void invoke(unsigned id, const QString& action);
    /// Works again after having hung: answers what has come meanwhile.
    void recover();

    struct Posted {
        QString summary, body, icon, client;
        QStringList actions;
        QVariantMap hints;
        int timeout = 0;
        unsigned id = 0;
    };
    std::vector<Posted> posted{};
    QList<unsigned> closed{};
    int questions = 0;  ///< How often its capabilities were asked for.
    Mood mood = Mood::answers;
    Mood moodForNotify = Mood::answers;  ///< Only for posting.
    unsigned nextID = 7;

private:
    bool handle(const QDBusMessage& message) override;
    void answer(const QDBusMessage& message);
    void die();

    QStringList announced_;
    QString client_{};
    std::vector<QDBusMessage> waiting_{};
};

}  // namespace tidewell
