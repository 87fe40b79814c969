#pragma once

#include <QObject>
#include <functional>

#include "statusbar/StatusItemContent.h"

namespace tidewell {

/// The status item as assistive technology finds it: a button below the application, "statusBarButton", that
/// says the reading and opens the menu. A panel draws the item in a process of its own and tells little or
/// nothing of it. There is one at a time. Main thread; needs installSpokenWidgets().
class SpokenStatusItem final : public QObject {
    Q_OBJECT
public:
    /// `press` is called when the button is pressed.
    explicit SpokenStatusItem(std::function<void()> press);
    ~SpokenStatusItem() override;

    /// Says this from now on; without a change, or a listener, it costs nothing.
    void present(const StatusItemContent& content);

    [[nodiscard]] const QString& name() const { return name_; }
    /// The spoken text, and what the button is for.
    [[nodiscard]] const QString& description() const { return description_; }
    void press() const { press_(); }

private:
    std::function<void()> press_;
    QString name_;
    QString description_;
};

}  // namespace tidewell
