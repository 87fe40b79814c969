#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace tidewell {

/// The longest entry that JsonEntries takes.
inline constexpr std::size_t longestJsonEntry = 64 * 1024;
/// And the longest document but for its entries.
inline constexpr std::size_t longestJsonSkeleton = 16 * 1024 * 1024;

/// Cuts the JSON form of an export into its entries, so that a large one need not be held whole.
class JsonEntries {
public:
    /// Called with each object or array two levels below the root. False ends the reading.
    using Sink = std::function<bool(std::size_t line, std::string_view entry)>;
    explicit JsonEntries(Sink sink) : sink_{std::move(sink)} {}

    /// False when it is too deep or too long to be an export, or the sink ended it.
    [[nodiscard]] bool take(char c);

    /// The document with 0 in the place of each entry.
    [[nodiscard]] const std::string& skeleton() const { return skeleton_; }
    [[nodiscard]] std::size_t entries() const { return entries_; }

private:
    void keep(char c, bool inEntry) { (inEntry ? entry_ : skeleton_) += c; }
    [[nodiscard]] bool isShort() const;

    Sink sink_;
    std::string skeleton_;
    std::string entry_;
    std::string stack_;  ///< The brackets that are open.
    bool inString_ = false;
    bool escaped_ = false;
    std::size_t line_ = 1;
    std::size_t entryLine_ = 1;
    std::size_t entries_ = 0;
};

}  // namespace tidewell
