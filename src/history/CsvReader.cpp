#include "history/CsvReader.h"

#include <algorithm>

namespace tidewell {

namespace {

/// Reports of both makers have rows of some hundred bytes; only notes that people wrote are longer.
constexpr std::size_t longestRecord = 64 * 1024;
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16Marks = "\xFF\xFE\xFF";

bool mayBeSeparator(char c) { return c == ',' || c == ';' || c == '\t'; }

}  // namespace

void CsvReader::feed(std::string_view bytes)
{
    while (!bytes.empty() && !ended_) {
        take(bytes.front());
        bytes.remove_prefix(1);
        takeRun(bytes);
    }
}

/// Takes what goes on within a plain field at once, and removes it from `bytes`.
void CsvReader::takeRun(std::string_view& bytes)
{
    if (ended_ || state_ != State::plain || bytes_ < utf8Mark.size())
        return;
    const auto end = std::ranges::find_if(
        bytes, [](char c) { return mayBeSeparator(c) || c == '\n' || c == '\r' || c == '\0'; });
    const auto length =
        std::min(static_cast<std::size_t>(end - bytes.begin()), longestRecord - record_.size());
    record_.append(bytes.substr(0, length));
    bytes_ += length;
    bytes.remove_prefix(length);
}

void CsvReader::finish()
{
    if (ended_)
        return;
    if (state_ == State::quoted)
        return fail(Problem::unclosedQuote);
    if (!record_.empty())
        endRecord();
    ended_ = true;
}

void CsvReader::take(char c)
{
    ++bytes_;
    if (afterCarriageReturn_) {
        afterCarriageReturn_ = false;
        if (c == '\n')
            return;
    }
    if (c == '\0')
        return fail(Problem::notText);
    if (c == '\n' || c == '\r') {
        if (c == '\r' || !record_.ends_with('\r'))
            ++line_;
        if (state_ != State::quoted) {
            afterCarriageReturn_ = c == '\r';
            return endRecord();
        }
    }
    if (record_.size() == longestRecord)
        return fail(Problem::tooLong);
    record_ += c;
    if (bytes_ == utf8Mark.size() && record_ == utf8Mark) {
        record_.clear();
        state_ = State::fieldStart;
        return;
    }
    if (bytes_ == 2 && utf16Marks.contains(record_))
        return fail(Problem::notText);
    switch (state_) {
    case State::quoted:
        if (c == '"')
            state_ = State::quoteInQuoted;
        break;
    case State::fieldStart:
    case State::plain:
    case State::quoteInQuoted:
        if (c == '"' && state_ != State::plain)
            state_ = State::quoted;
        else if (mayBeSeparator(c) || (c == ' ' && state_ == State::fieldStart))
            state_ = State::fieldStart;
        else
            state_ = State::plain;
        break;
    }
}

void CsvReader::endRecord()
{
    ended_ = !sink_(recordLine_, record_);
    record_.clear();
    state_ = State::fieldStart;
    recordLine_ = line_;
}

void CsvReader::fail(Problem problem)
{
    problem_ = problem;
    ended_ = true;
}

bool splitCsvRecord(std::string_view record, char separator, std::vector<CsvField>& fields)
{
    std::size_t count = 0;
    const auto next = [&]() -> CsvField& {
        if (count == fields.size())
            fields.emplace_back();
        CsvField& field = fields[count++];
        field.text.clear();
        field.quoted = false;
        return field;
    };
    const auto isSpace = [separator](char c) { return c == ' ' || (c == '\t' && separator != '\t'); };

    bool good = true;
    for (std::size_t at = 0; good; ++at) {
        CsvField& field = next();
        while (at < record.size() && isSpace(record[at]))
            ++at;
        if (at < record.size() && record[at] == '"') {
            field.quoted = true;
            for (++at; at < record.size(); ++at) {
                if (record[at] == '"') {
                    ++at;
                    if (at == record.size() || record[at] != '"')
                        break;
                }
                field.text += record[at];
            }
            while (at < record.size() && isSpace(record[at]))
                ++at;
            good = at >= record.size() || record[at] == separator;
        } else {
            const std::size_t end = std::min(record.find(separator, at), record.size());
            std::string_view text = record.substr(at, end - at);
            while (!text.empty() && isSpace(text.back()))
                text.remove_suffix(1);
            good = !text.contains('"');
            field.text = text;
            at = end;
        }
        if (at >= record.size())
            break;
    }
    if (!good)
        --count;
    fields.resize(count);
    return good;
}

std::string csvField(std::string_view text)
{
    const bool plain = text.find_first_of(",;\t\"\r\n") == std::string_view::npos && !text.starts_with(' ') &&
                       !text.ends_with(' ');
    if (plain)
        return std::string{text};
    std::string quoted{'"'};
    for (const char c : text)
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + '"';
}

}  // namespace tidewell
