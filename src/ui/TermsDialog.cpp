#include "ui/TermsDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <utility>

#include "ui/TermsView.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

QString introduction(TermsDialog::Purpose purpose)
{
    switch (purpose) {
    case TermsDialog::Purpose::accept:
        return TermsDialog::tr(
            "Please read the terms of use. Until you accept them, Tidewell asks for no readings.");
    case TermsDialog::Purpose::acceptAgain:
        return TermsDialog::tr(
            "The terms of use have changed. Please read them. Tidewell goes on meanwhile.");
    case TermsDialog::Purpose::acceptAnew:
        return TermsDialog::tr(
            "Tidewell does not know whether you accepted these terms. Please accept them once more.");
    case TermsDialog::Purpose::read: return {};
    }
    std::unreachable();
}

}  // namespace

struct TermsDialog::Impl {
    Handlers handlers;
    TermsView* terms = nullptr;
    QPushButton* last = nullptr;  ///< Accept, or Close.
};

TermsDialog::TermsDialog(Purpose purpose, Handlers handlers)
    : impl_{std::make_unique<Impl>(Impl{.handlers = std::move(handlers)})}
{
    setObjectName(QStringLiteral("termsDialog"));
    setWindowTitle(tr("Terms of use"));
    setModal(false);
    auto* const layout = new QVBoxLayout{this};
    const bool reads = purpose == Purpose::read;
    if (!reads)
        layout->addWidget(wrappedLabel(introduction(purpose), this));
    impl_->terms = new TermsView{this};
    layout->addWidget(impl_->terms, 1);
    auto* const version = wrappedLabel(termsVersionText(), this);
    makeQuiet(*version);
    layout->addWidget(version);
    auto* const buttons = new QDialogButtonBox{this};
    if (reads) {
        impl_->last = buttons->addButton(tr("&Close"), QDialogButtonBox::RejectRole);
    } else {
        impl_->last = buttons->addButton(tr("&Accept"), QDialogButtonBox::AcceptRole);
        buttons->addButton(tr("&Not now"), QDialogButtonBox::RejectRole)->setAutoDefault(false);
    }
    impl_->last->setDefault(true);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    const QSize wanted = QSize{34, 34} * fontMetrics().height();
    resize(screen() ? wanted.boundedTo(screen()->availableSize() * 9 / 10) : wanted);
}

TermsDialog::~TermsDialog() = default;

void TermsDialog::open()
{
    if (!isVisible()) {
        show();
        impl_->terms->setFocus();
    }
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void TermsDialog::done(int result)
{
    QDialog::done(result);
    // The handler may take this dialog down.
    const auto handler = result == Accepted ? impl_->handlers.accepted : impl_->handlers.closed;
    if (handler)
        handler();
}

}  // namespace tidewell
