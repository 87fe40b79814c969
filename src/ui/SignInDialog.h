#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <vector>

#include "app/SignInAdvice.h"
#include "config/AppConfiguration.h"
#include "sources/LibreLinkUpAPI.h"

namespace tidewell {

/// Asks for the account of a glucose service, and for the person to follow where an account has several.
///
/// It only asks: who shows it checks the account and answers with showProgress(), then showProblem(),
/// showPeople() or finish(). Not modal: show it with present(), never exec(). The fields are cleared whenever
/// it closes, so that no password stays in a widget. Main thread.
class SignInDialog final : public QDialog {
    Q_OBJECT
public:
    /// Gets each submitted account: trimmed user name, password as it was typed, region code, no person. The
    /// password is empty when the stored one of that account is meant.
    using Submit = std::function<void(GlucoseAccountConfiguration)>;
    /// Gets the person who was chosen of those that showPeople() offered.
    using Choose = std::function<void(LibreConnection)>;

    explicit SignInDialog(QWidget* parent = nullptr);
    ~SignInDialog() override;

    void onSubmit(Submit handler);
    void onChoose(Choose handler);
    /// Called when the person goes from the choice back to the account.
    void onBack(std::function<void()> handler);
    /// Called when the person closes the dialog, also while an account is being checked; not by finish().
    void onCancel(std::function<void()> handler);

    /// Shows and raises the dialog with the stored account: service, region and user name are filled in, its
    /// person is marked when there is a choice. Of its password counts only that there is one: it need not
    /// be typed again.
    void present(const GlucoseAccountConfiguration& account = {});

    /// The account is being checked or stored: fields are locked, Esc still cancels.
    void showProgress();
    /// That failed: says so, opens the fields again, with the cursor where it helps.
    void showProblem(const SignInProblem& problem);
    /// The account works: asks whose readings to show. Only the person who was followed before is marked, or
    /// one who is alone; the button decides in any case. With nobody, the only way is back: showProblem()
    /// says why.
    void showPeople(const std::vector<LibreConnection>& people);
    /// The account works: closes.
    void finish();

protected:
    void done(int result) override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
