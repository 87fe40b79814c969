#include "program/TermsController.h"

#include "app/TermsAgreement.h"

namespace tidewell {

TermsController::TermsController(Core& core) : core_{core} {}

TermsController::~TermsController() { delete dialog_; }

void TermsController::checkAgreement()
{
    if (!hasAcceptedCurrentTerms(core_.defaults()))
        open(hasAcceptedTerms(core_.defaults()) ? TermsDialog::Purpose::acceptAgain
                                                : TermsDialog::Purpose::accept);
}

bool TermsController::showPendingAgreement()
{
    if (core_.isDemonstration() || !core_.configuration().account() ||
        hasAcceptedCurrentTerms(core_.defaults()))
        return false;
    checkAgreement();
    return true;
}

void TermsController::show()
{
    if (!showPendingAgreement())
        open(TermsDialog::Purpose::read);
}

void TermsController::open(TermsDialog::Purpose purpose)
{
    if (dialog_ && purpose_ != purpose)
        delete std::exchange(dialog_, nullptr);
    if (!dialog_) {
        purpose_ = purpose;
        dialog_ = new TermsDialog{purpose,
                                  {.accepted =
                                       [this] {
                                           acceptTerms(core_.defaults(), core_.clock().now());
                                           core_.termsDidChange();
                                       },
                                   .closed = {}}};
        dialog_->setAttribute(Qt::WA_DeleteOnClose);
    }
    dialog_->open();
}

}  // namespace tidewell
