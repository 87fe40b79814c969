#pragma once

#include <QWidget>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sources/LibreLinkUpAPI.h"

class QLabel;
class QListWidget;

namespace tidewell {

/// Asks whose readings to show, of those who share with an account. Main thread.
class PeopleForm final : public QWidget {
    Q_OBJECT
public:
    explicit PeopleForm(QWidget* parent = nullptr);

    /// Called when the person chooses somebody else.
    void onChosen(std::function<void()> handler);

    /// Offers these people; `patientID` is marked, if it is one of them. `account` is shared with.
    void setPeople(const std::vector<LibreConnection>& people, const std::optional<std::string>& patientID,
                   const QString& account);
    /// Who is marked.
    [[nodiscard]] const LibreConnection* chosen() const;

    void setLocked(bool locked);
    void focusList();
    void clear();

private:
    /// Says what is to be done while nobody is chosen.
    void hint();
    void mark(const std::optional<std::string>& patientID);

    std::function<void()> chosenHandler_{};
    std::vector<LibreConnection> people_{};
    bool filling_ = false;
    QLabel* question_ = nullptr;
    QLabel* sharedWith_ = nullptr;
    QListWidget* list_ = nullptr;
    QLabel* hint_ = nullptr;
};

}  // namespace tidewell
