#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QThread>

#include "TestBus.h"

namespace tidewell {

/// A secret service with one locked item and a dialog that the test answers. It runs on a thread of its own,
/// so that the test may wait for the store meanwhile.
class FakeSecretService final : public QDBusVirtualObject {
public:
    FakeSecretService(TestBus& bus, QByteArray content);
    ~FakeSecretService() override;

    struct Counts {
        int prompts = 0;
        int dismissals = 0;
        int searches = 0;
        int sessionsOpen = 0;
    };
    [[nodiscard]] Counts counts() const;
    /// From now on no item is found, and the question for the default collection is refused or answered with
    /// none.
    void findNothing(bool refusesAlias);
    /// As a person would, when the dialog is open: unlocks, or closes it.
    void answerPrompt(bool unlock);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    QVariantList answerTo(const QDBusMessage& message);

    mutable std::mutex lock_{};
    QByteArray content_;
    Counts counts_{};
    bool locked_ = true;
    bool findsNothing_ = false;
    bool refusesAlias_ = false;
    QThread thread_{};
    QDBusConnection connection_;
};

}  // namespace tidewell
