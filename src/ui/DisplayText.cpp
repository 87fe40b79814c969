#include "ui/DisplayText.h"

#include <QCoreApplication>
#include <QLocale>
#include <algorithm>
#include <array>
#include <optional>
#include <unordered_map>

#include "ui/CoreTexts.h"
#include "ui/Translations.h"

namespace tidewell {
namespace {

/// Longer than any text of the core: what is longer comes from elsewhere.
constexpr std::size_t longestText = 2048;
/// A text in a text in a text.
constexpr int deepest = 3;
/// So many sentences of a text are looked at, and so many in a row may be one source.
constexpr std::size_t mostSentences = 64;
constexpr std::size_t longestRun = 6;
/// With fewer letters than this, a source that begins with a gap fits too much: there it takes numbers only.
constexpr std::size_t tellingLetters = 12;

QString text(std::string_view words)
{
    return QString::fromUtf8(words.data(), static_cast<qsizetype>(words.size()));
}

QString translation(const char* source) { return QCoreApplication::translate("Core", source); }

bool isGap(std::string_view source, std::size_t at)
{
    return source[at] == '%' && at + 1 < source.size() && source[at + 1] >= '1' && source[at + 1] <= '9';
}

/// A source with gaps.
struct Pattern {
    const char* source;
    std::vector<std::string_view> parts{};  ///< What stands around the gaps; one more than there are gaps.
    std::vector<int> gaps{};                ///< Their numbers, in the order of the source.
    std::size_t letters = 0;                ///< Of all parts.
    bool endsOpen = false;                  ///< "…: %1", where whole sentences may follow.

    explicit Pattern(const char* from) : source{from}
    {
        const std::string_view all{from};
        std::size_t begin = 0;
        for (std::size_t at = 0; at < all.size(); ++at)
            if (isGap(all, at)) {
                parts.push_back(all.substr(begin, at - begin));
                gaps.push_back(all[at + 1] - '0');
                begin = at + 2;
            }
        parts.push_back(all.substr(begin));
        for (const std::string_view part : parts)
            letters += part.size();
        endsOpen = parts.size() == 2 && parts[1].empty() && parts[0].ends_with(": ");
    }

    /// What fills the gaps; empty when the text is another one.
    [[nodiscard]] std::optional<std::vector<std::string_view>> fillings(std::string_view whole) const
    {
        if (!whole.starts_with(parts.front()) || !whole.ends_with(parts.back()))
            return std::nullopt;
        std::vector<std::string_view> found;
        std::size_t at = parts.front().size();
        for (std::size_t i = 1; i < parts.size(); ++i) {
            const std::size_t end = i + 1 == parts.size()
                                        ? whole.size() - std::min(whole.size(), parts[i].size())
                                        : whole.find(parts[i], at + 1);
            if (end == std::string_view::npos || end <= at)
                return std::nullopt;
            found.push_back(whole.substr(at, end - at));
            if (!mayFill(found.back()))
                return std::nullopt;
            at = end + parts[i].size();
        }
        const bool needsNumber = parts.front().empty() && letters < tellingLetters;
        return needsNumber && !beginsWithNumber(found.front()) ? std::nullopt
                                                               : std::optional{std::move(found)};
    }

private:
    [[nodiscard]] bool mayFill(std::string_view filling) const
    {
        return !filling.contains('\n') && (endsOpen || !(filling.contains(". ") || filling.contains("  ")));
    }

    static bool beginsWithNumber(std::string_view filling)
    {
        for (const std::string_view sign : {"+", "−", "±"})
            if (filling.starts_with(sign))
                return true;
        return filling.front() >= '0' && filling.front() <= '9';
    }
};

/// The sources, so that each text is compared with few of them.
class Sources {
public:
    Sources()
    {
        for (const char* const source : coreTexts()) {
            Pattern pattern{source};
            if (pattern.gaps.empty())
                fixed_.emplace(source, source);
            else
                patterns_[firstByte(pattern.parts.front())].push_back(std::move(pattern));
        }
        for (auto& list : patterns_)
            std::ranges::sort(list, std::greater{}, &Pattern::letters);
    }

    [[nodiscard]] const char* fixed(std::string_view whole) const
    {
        const auto found = fixed_.find(whole);
        return found == fixed_.end() ? nullptr : found->second;
    }

    /// The one with the most letters that fits.
    [[nodiscard]] std::optional<std::pair<const Pattern*, std::vector<std::string_view>>> pattern(
        std::string_view whole) const
    {
        for (const std::size_t list : {firstByte(whole), noByte})
            for (const Pattern& one : patterns_[list])
                if (auto fillings = one.fillings(whole))
                    return std::pair{&one, std::move(*fillings)};
        return std::nullopt;
    }

private:
    static constexpr std::size_t noByte = 256;  ///< Of sources that begin with a gap.
    static std::size_t firstByte(std::string_view words)
    {
        return words.empty() ? noByte : static_cast<unsigned char>(words.front());
    }

    std::unordered_map<std::string_view, const char*> fixed_{};
    std::array<std::vector<Pattern>, noByte + 1> patterns_{};
};

QString shown(std::string_view whole, int depth);

QString filled(const Pattern& pattern, const std::vector<std::string_view>& fillings, int depth)
{
    const QString form = translation(pattern.source);
    QString answer;
    for (qsizetype i = 0; i < form.size(); ++i) {
        const auto gap = form[i] == u'%' && i + 1 < form.size()
                             ? std::ranges::find(pattern.gaps, form[i + 1].digitValue())
                             : pattern.gaps.end();
        if (gap == pattern.gaps.end()) {
            answer += form[i];
            continue;
        }
        answer += shown(fillings[static_cast<std::size_t>(gap - pattern.gaps.begin())], depth + 1);
        ++i;
    }
    return answer;
}

/// A text that is one source, also where a full stop was put behind it.
std::optional<QString> known(std::string_view whole, int depth)
{
    static const Sources sources;
    if (const char* const fixed = sources.fixed(whole))
        return translation(fixed);
    if (const auto found = sources.pattern(whole))
        return filled(*found->first, found->second, depth);
    if (whole.size() > 1 && whole.ends_with('.') && !whole.ends_with(".."))
        if (auto inner = known(whole.substr(0, whole.size() - 1), depth))
            return *inner + u'.';
    return std::nullopt;
}

struct Sentence {
    std::size_t begin;
    std::size_t end;   ///< Where the space after it begins.
    std::size_t next;  ///< Where the next one begins.
};

/// Split behind full stops, at line feeds, and at two spaces.
std::vector<Sentence> sentences(std::string_view whole)
{
    std::vector<Sentence> found;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < whole.size() && found.size() < mostSentences; ++at) {
        const bool stop = whole[at] == '.' && at + 1 < whole.size() && whole[at + 1] == ' ';
        const bool space = whole[at] == '\n' || whole.substr(at, 2) == "  ";
        if (!stop && !space)
            continue;
        const std::size_t end = stop ? at + 1 : at;
        const std::size_t next = std::min(whole.find_first_not_of(" \n", end), whole.size());
        if (end > begin)
            found.push_back({begin, end, next});
        begin = next;
        at = next - 1;
    }
    if (begin < whole.size())
        found.push_back({begin, whole.size(), whole.size()});
    return found;
}

/// The longest runs of sentences that are known; what is not stays as it is.
QString shownSentences(std::string_view whole, int depth)
{
    const auto parts = sentences(whole);
    if (parts.empty())
        return text(whole);
    QString answer = text(whole.substr(0, parts.front().begin));
    for (std::size_t i = 0; i < parts.size();) {
        std::size_t run = std::min(longestRun, parts.size() - i);
        std::optional<QString> words;
        for (; run > 0 && !words; --run)
            words = known(whole.substr(parts[i].begin, parts[i + run - 1].end - parts[i].begin), depth);
        const Sentence& last = parts[i + run];
        answer += words ? *words : text(whole.substr(last.begin, last.end - last.begin));
        answer += text(whole.substr(last.end, last.next - last.end));
        i += run + 1;
    }
    return answer;
}

QString shown(std::string_view whole, int depth)
{
    if (whole.empty() || whole.size() > longestText || depth > deepest)
        return text(whole);
    if (auto words = known(whole, depth))
        return *words;
    return shownSentences(whole, depth);
}

}  // namespace

QString displayText(std::string_view text) { return shown(text, 0); }

std::string displayString(std::string_view text) { return displayText(text).toStdString(); }

std::vector<MenuItem> displayMenu(std::vector<MenuItem> items)
{
    for (MenuItem& item : items) {
        item.title = displayString(item.title);
        for (std::string& line : item.details)
            line = displayString(line);
        item.accessibleText = displayString(item.accessibleText);
        item.children = displayMenu(std::move(item.children));
    }
    return items;
}

QString displayDate(QDate date, QString format)
{
    const QLocale locale = displayLocale();
    if (locale.language() == QLocale::German)
        format.replace(QStringLiteral("d MMM"), QStringLiteral("d. MMM"));
    return locale.toString(date, format);
}

}  // namespace tidewell
