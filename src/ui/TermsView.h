#pragma once

#include <QTextEdit>

namespace tidewell {

/// The terms of use, to be read: scrolls by keyboard, and can be copied from. Tab leaves it. Main thread.
class TermsView final : public QTextEdit {
    Q_OBJECT
public:
    explicit TermsView(QWidget* parent = nullptr);
};

/// "Version 1"
[[nodiscard]] QString termsVersionText();

}  // namespace tidewell
