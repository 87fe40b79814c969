#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

#include "sources/DexcomAPI.h"
#include "sources/GlucoseReading.h"

namespace tidewell {

// What Dexcom Share's answers say. Pure functions of the body's text, which may be anything at all.

/// A read answer that holds at least one reading.
struct DexcomReadings {
    std::vector<GlucoseReading> readings{};  ///< In the service's order, newest first by custom only.
    std::size_t duplicates = 0;  ///< Left out: the same reading again, uploaded by a second device.
    std::size_t unreadable = 0;  ///< Left out: not a reading, or not a possible one.
};

/// The readings of a read answer.
///
/// One element that cannot be read is left out and counted, so that it does not hide the others; when none
/// can be read, the answer fails with the first one's fault. As unreadable counts what cannot have been
/// measured: a value up to 12 or over 1000 mg/dL (up to 12 were old receivers' error numbers), and a time
/// more than 90 minutes after `now`, which would stay the newest and pass for fresh until then.
[[nodiscard]] std::expected<DexcomReadings, DexcomError> dexcomReadings(std::string_view body, Date now);

/// Leaves out every reading that equals the last kept one in value and trend and is at most 30 s older.
/// Returns how many.
std::size_t removeCloseDuplicates(std::vector<GlucoseReading>& readings);

/// The account or session id of a sign-in answer, without the quotes around it: a part of `body`.
[[nodiscard]] std::string_view dexcomId(std::string_view body);
/// What the service sends for "no such id".
inline constexpr std::string_view nullDexcomId = "00000000-0000-0000-0000-000000000000";

/// The "Code" of an error answer when it is one that decides what happens next; else empty. Of the general
/// SSO_InternalError only those count whose message speaks of a refused sign-in.
[[nodiscard]] std::string dexcomErrorCode(std::string_view body);

}  // namespace tidewell
