#pragma once

#include <QCoreApplication>
#include <QTranslator>

namespace tidewell {

/// While it lives, every text of the core is shown in brackets: what shows up without them was not
/// translated.
class MarkingTranslator final : public QTranslator {
public:
    MarkingTranslator() { QCoreApplication::installTranslator(this); }
    ~MarkingTranslator() override { QCoreApplication::removeTranslator(this); }
    MarkingTranslator(const MarkingTranslator&) = delete;
    MarkingTranslator& operator=(const MarkingTranslator&) = delete;
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* /*context*/, const char* source,
                                    const char* /*disambiguation*/, int /*n*/) const override
    {
        return QStringLiteral("[%1]").arg(QString::fromUtf8(source));
    }
};

}  // namespace tidewell
