#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// The text of a desktop entry file (freedesktop.org Desktop Entry Specification 1.5), changed line by line:
/// what is not spoken of stays as somebody wrote it, comments and other groups too. A value.
class DesktopEntry {
public:
    /// Empty for a text that is none: without the group "Desktop Entry", or with a byte zero.
    [[nodiscard]] static std::optional<DesktopEntry> parse(std::string_view text);

    /// Unescaped, without a locale; of a key that is there twice, the last. Empty without the key.
    [[nodiscard]] std::optional<std::string> value(std::string_view key) const;
    [[nodiscard]] bool flag(std::string_view key, bool otherwise) const;
    /// The parts of a value that is a list; without the key, none.
    [[nodiscard]] std::vector<std::string> list(std::string_view key) const;

    void set(std::string_view key, std::string_view value);
    /// No parts remove the key.
    void set(std::string_view key, const std::vector<std::string>& list);
    void remove(std::string_view key);

    [[nodiscard]] std::string text() const;

private:
    struct Line {
        std::string text;      ///< Without its line feed.
        bool inEntry = false;  ///< In the group "Desktop Entry".
        std::string_view key() const;
    };
    [[nodiscard]] const Line* find(std::string_view key) const;
    void setRaw(std::string_view key, const std::string& value);
    std::vector<Line> lines_;
};

/// The value of Exec for a program and its arguments: quoted, and without meaning to who reads field codes.
[[nodiscard]] std::string execValue(std::span<const std::string> arguments);
/// Back again; field codes are left out. Empty for a value that starts nothing or has an open quote.
[[nodiscard]] std::vector<std::string> execArguments(std::string_view value);

}  // namespace tidewell
