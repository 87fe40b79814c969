#pragma once

#include <QDialog>
#include <functional>
#include <memory>

#include "config/AppConfiguration.h"

namespace tidewell {

/// Asks for the account of a glucose service.
///
/// It only asks: who shows it checks the account and answers with showProgress(), then showError() or
/// finish(). Not modal: show it with present(), never exec(). The fields are cleared whenever it closes, so
/// that no password stays in a widget. Main thread.
class SignInDialog final : public QDialog {
    Q_OBJECT
public:
    /// Gets each submitted account, complete: trimmed user name, password as it was typed, region code.
    using Submit = std::function<void(GlucoseAccountConfiguration)>;

    explicit SignInDialog(QWidget* parent = nullptr);
    ~SignInDialog() override;

    void onSubmit(Submit handler);
    /// Called when the person closes the dialog, also while an account is being checked; not by finish().
    void onCancel(std::function<void()> handler);

    /// Shows and raises the dialog, user name and region taken from `account`; its password is ignored.
    void present(const GlucoseAccountConfiguration& account = {});

    /// The account is being checked: fields are locked, Esc still cancels.
    void showProgress();
    /// The check failed: says so, opens the fields again and puts the cursor into the password. Plain text.
    void showError(const QString& title, const QString& detail, const QString& hint);
    /// The account works: closes.
    void finish();

protected:
    void done(int result) override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
