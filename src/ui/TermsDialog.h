#pragma once

#include <QDialog>
#include <functional>
#include <memory>

namespace tidewell {

/// The terms of use. Asks for them to be accepted, or only shows them. Not modal; Escape closes it without an
/// answer, and closing never ends the program. Main thread.
class TermsDialog final : public QDialog {
    Q_OBJECT
public:
    struct Handlers {
        std::function<void()> accepted;
        std::function<void()> closed;  ///< Without an answer.
    };
    /// Why they are shown.
    enum class Purpose {
        accept,       ///< They were never accepted: nothing is fetched until then.
        acceptAgain,  ///< They have changed since; everything goes on meanwhile.
        acceptAnew,   ///< Whether they were accepted was lost; everything goes on meanwhile.
        read          ///< From the settings: there is nothing to accept.
    };
    TermsDialog(Purpose purpose, Handlers handlers);
    ~TermsDialog() override;

    /// Shows it, and brings it to the front.
    void open() override;

protected:
    void done(int result) override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
