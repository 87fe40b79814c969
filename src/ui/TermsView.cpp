#include "ui/TermsView.h"

#include <QTextBlock>
#include <QTextCursor>

#include "app/TermsAgreement.h"
#include "ui/DisplayText.h"

namespace tidewell {
namespace {

constexpr int shownLines = 10;

}  // namespace

TermsView::TermsView(QWidget* parent) : QTextEdit{parent}
{
    setObjectName(QStringLiteral("termsOfUse"));
    setAccessibleName(tr("Terms of use"));
    setReadOnly(true);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setMinimumHeight(shownLines * fontMetrics().height());
    document()->setDocumentMargin(fontMetrics().height() * 0.75);

    const double gap = fontMetrics().height() * 0.5;
    QTextBlockFormat headingBlock;
    headingBlock.setTopMargin(gap);
    headingBlock.setHeadingLevel(2);
    QTextBlockFormat paragraphBlock;
    paragraphBlock.setTopMargin(gap / 3);
    paragraphBlock.setBottomMargin(gap / 3);
    paragraphBlock.setLineHeight(115, QTextBlockFormat::ProportionalHeight);
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);

    QTextCursor cursor{document()};
    bool first = true;
    for (const auto& [title, text] : termsOfUse()) {
        if (!std::exchange(first, false))
            cursor.insertBlock();
        cursor.setBlockFormat(headingBlock);
        cursor.insertText(displayText(title), bold);
        for (const QString& paragraph : displayText(text).split(QStringLiteral("\n\n"))) {
            cursor.insertBlock(paragraphBlock, {});
            cursor.insertText(paragraph, {});
        }
    }
    moveCursor(QTextCursor::Start);
}

QString termsVersionText()
{
    return TermsView::tr("Version %1")
        .arg(QString::fromUtf8(currentTermsVersion.data(),
                               static_cast<qsizetype>(currentTermsVersion.size())));
}

}  // namespace tidewell
