#pragma once

#include <cstdio>
#include <cstdlib>
#include <source_location>

namespace tidewell {

/// Stops the program, which libFuzzer records as a finding, when something does not hold.
inline void require(bool holds, const char* what, std::source_location at = std::source_location::current())
{
    if (holds)
        return;
    std::fprintf(stderr, "%s:%u: does not hold: %s\n", at.file_name(), static_cast<unsigned>(at.line()),
                 what);
    std::abort();
}

}  // namespace tidewell
