#pragma once

#include <QPointer>

#include "app/AppDelegate.h"
#include "program/Core.h"
#include "ui/TermsDialog.h"

namespace tidewell {

/// The terms of use: asks for them when the current ones were not accepted, and shows them on request. Main
/// thread.
class TermsController final : public TermsAgreementCoordinating {
public:
    explicit TermsController(Core& core);
    ~TermsController() override;

    void checkAgreement() override;
    bool showPendingAgreement() override;
    /// To accept when that is pending, else to read.
    void show();

private:
    void open(TermsDialog::Purpose purpose);

    Core& core_;
    QPointer<TermsDialog> dialog_;  ///< Gone when it was closed.
    TermsDialog::Purpose purpose_ = TermsDialog::Purpose::read;
};

}  // namespace tidewell
