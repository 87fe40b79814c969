#pragma once

#include <QString>
#include <string_view>

namespace tidewell {

/// What to call a person whose readings are shared: one line of text that is safe to show and to print.
///
/// The name is what a service says, and may be anything: control characters, line breaks and marks that turn
/// the direction of what follows are left out, and it ends after 80 characters with an ellipsis. Without a
/// name it is "No name" and the end of the id. Any thread.
[[nodiscard]] QString personName(std::string_view name, std::string_view patientID);

/// The same with the end of the id: for two people of one name.
[[nodiscard]] QString personNameWithID(std::string_view name, std::string_view patientID);

}  // namespace tidewell
