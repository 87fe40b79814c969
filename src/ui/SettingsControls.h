#pragma once

#include <QComboBox>
#include <QDialog>
#include <QFrame>
#include <QPointer>
#include <QTimeEdit>
#include <functional>
#include <vector>

#include "ui/SpokenWidget.h"

class QBoxLayout;
class QLabel;

namespace tidewell {

// What the pages of the settings are made of. Main thread.

/// Picks one of a list. What is shown changes without a call to anybody, and never under the hand of the
/// person: while the list is open it stays as it is.
///
/// The wheel scrolls the page and picks nothing. What is typed is looked for in the opened list, and taken
/// with Enter, so that "180" does not pass through 108.
class SettingsComboBox final : public QComboBox {
    Q_OBJECT
public:
    explicit SettingsComboBox(QWidget* parent);

    struct Entry {
        QString label{};
        QVariant value{};
        bool operator==(const Entry&) const = default;
    };
    /// Shows that entry of those; none of them when no entry has the value.
    void present(const std::vector<Entry>& entries, const QVariant& value);
    /// Called with the value that the person picks, also when it is the one that is shown. After that list
    /// has closed, `stale` when something was presented meanwhile.
    void onPicked(std::function<void(const QVariant&)> handler);
    void onStale(std::function<void()> handler);

    void showPopup() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] bool isOpen() const;
    std::vector<Entry> entries_;
    std::function<void()> stale_;
    bool wasOpened_ = false;
    bool isStale_ = false;
};

/// A time of day. What is being typed stays until Enter, Tab or another step ends it; Escape takes it back.
/// The wheel scrolls the page.
class SettingsTimeEdit final : public QTimeEdit {
    Q_OBJECT
public:
    explicit SettingsTimeEdit(QWidget* parent);
    /// Shows that time without a call to anybody, unless another one is being typed.
    void present(QTime time);
    void onPicked(std::function<void(QTime)> handler);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    [[nodiscard]] QString textOf(QTime time) const;
};

/// Something that has to be noticed: a sign, and the words beside it. Hidden while there are none.
class SettingsNotice final : public QFrame, public SpokenWidget {
    Q_OBJECT
public:
    enum class Weight { information, good, caution, problem };
    explicit SettingsNotice(QWidget* parent);
    void present(Weight weight, const QString& words);
    /// Below the words.
    void addBelow(QWidget* widget);
    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Note; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void showSign();
    Weight weight_ = Weight::information;
    QLabel* sign_ = nullptr;
    QLabel* words_ = nullptr;
    QBoxLayout* column_ = nullptr;
};

/// "Problem", "Caution" and so on.
[[nodiscard]] QString settingsWeightText(SettingsNotice::Weight weight);
[[nodiscard]] QIcon settingsWeightIcon(SettingsNotice::Weight weight, const QWidget& widget);

/// A field below its label, so that both have room in any language. Gives the label.
QLabel* addField(QBoxLayout& layout, const QString& title, QWidget& field);

/// What is asked before something goes for good.
struct SettingsQuestion {
    QString title{};
    QString question{};
    QString consequences{};
    QString action{};          ///< Of the button that does it.
    QString choice{};          ///< Of a check box, off at first; empty: there is none.
    QWidget* about = nullptr;  ///< The window that it belongs to.
};
/// Asks it. Cancel is the default, and what Escape means. Calls `confirmed` with the check box's state.
QPointer<QDialog> ask(const SettingsQuestion& question, std::function<void(bool)> confirmed);

}  // namespace tidewell
