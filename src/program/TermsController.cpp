#include "program/TermsController.h"

#include "app/TermsAgreement.h"

namespace tidewell {

namespace {

TermsDialog::Purpose purposeOf(const UserDefaults& defaults)
{
    if (!hasAcceptedTerms(defaults))
        return TermsDialog::Purpose::accept;
    return defaults.text(acceptedTermsVersionKey) == unknownTermsVersion ? TermsDialog::Purpose::acceptAnew
                                                                         : TermsDialog::Purpose::acceptAgain;
}

}  // namespace

TermsController::TermsController(Core& core) : core_{core} {}

TermsController::~TermsController() { delete dialog_; }

void TermsController::checkAgreement()
{
    if (!hasAcceptedCurrentTerms(core_.defaults()))
        open(purposeOf(core_.defaults()));
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
