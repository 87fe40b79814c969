#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string_view>

#include "config/AppConfiguration.h"

namespace tidewell {

/// The fields of an account: service, region, user name and password, and what to use there. Checks nothing.
/// Main thread.
class AccountForm final : public QWidget {
    Q_OBJECT
public:
    explicit AccountForm(QWidget* parent = nullptr);
    /// Empties the fields, the password's memory included.
    ~AccountForm() override;

    /// Called after each change that the person makes.
    void onEdited(std::function<void()> handler);

    /// Fills the fields, except the password, which is emptied: `hasPassword` says that one is known for this
    /// account and need not be typed again. A region that the service does not have becomes the one that is
    /// usual where the system's locale is.
    void fill(const GlucoseAccountConfiguration& account, bool hasPassword);
    /// As it stands there: trimmed user name, password as it was typed, no person. An empty password is the
    /// known one of that account.
    [[nodiscard]] GlucoseAccountConfiguration account() const;
    /// There is a user name, and a password that is typed or known.
    [[nodiscard]] bool isComplete() const;

    void setLocked(bool locked);
    /// Says what account the service wants; without, there is room for what else says it.
    void setIntroduced(bool introduced);
    /// Puts the cursor where something is missing: into the user name, else the password.
    void focusMissing();
    /// The password is to be typed again, or mended.
    void focusPassword();
    /// Empties user name and password, and forgets what was filled in.
    void clear();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// "Dexcom Share" and so on.
[[nodiscard]] QString serviceTitle(GlucoseProvider provider);
/// "Outside the United States" and so on; the code itself when the service has no such region.
[[nodiscard]] QString regionTitle(GlucoseProvider provider, std::string_view code);

}  // namespace tidewell
