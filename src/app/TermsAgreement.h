#pragma once

#include <span>
#include <string_view>

#include "config/UserDefaults.h"

namespace tidewell {

/// Of the terms of use below; a change of their meaning gives them a new one.
inline constexpr std::string_view currentTermsVersion = "1";

/// Stands for the accepted version where the bookkeeping was lost: some version was accepted.
inline constexpr std::string_view unknownTermsVersion = "unknown";

struct TermsSection {
    std::string_view title;
    std::string_view text;  ///< One paragraph or more, separated by an empty line. Plain text.
};

/// The terms of use, in English; whoever shows them translates section by section.
[[nodiscard]] std::span<const TermsSection> termsOfUse();

/// Whether the person accepted the current terms.
[[nodiscard]] bool hasAcceptedCurrentTerms(const UserDefaults& defaults);
/// Whether the person ever accepted terms, of whatever version.
[[nodiscard]] bool hasAcceptedTerms(const UserDefaults& defaults);
/// Notes the current version, and when.
void acceptTerms(UserDefaults& defaults, Date now);

}  // namespace tidewell
