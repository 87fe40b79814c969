#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// Cuts comma-separated text (RFC 4180) into its records, piece by piece. A record ends with LF, CR LF or CR
/// outside of quotes; where a field begins, a comma, a semicolon and a tab count as separators, so that the
/// separator need not be known yet. Skips a byte order mark. Its memory is bounded by the longest record.
class CsvReader {
public:
    /// A record's line is the one that it begins in, from 1. False ends the reading.
    using Sink = std::function<bool(std::size_t line, std::string_view record)>;
    enum class Problem {
        none,
        tooLong,        ///< A record of more than 64 KiB: most likely a quote is not closed.
        unclosedQuote,  ///< The text ends within quotes.
        notText         ///< A NUL, or the byte order mark of UTF-16.
    };

    explicit CsvReader(Sink sink) : sink_{std::move(sink)} {}
    void feed(std::string_view bytes);
    /// The text ends here.
    void finish();
    [[nodiscard]] Problem problem() const { return problem_; }
    /// The line that the record with the problem begins in.
    [[nodiscard]] std::size_t problemLine() const { return recordLine_; }

private:
    enum class State { fieldStart, plain, quoted, quoteInQuoted };
    void take(char c);
    void takeRun(std::string_view& bytes);
    void endRecord();
    void fail(Problem problem);

    Sink sink_;
    std::string record_;
    State state_ = State::fieldStart;
    Problem problem_ = Problem::none;
    bool ended_ = false;
    bool afterCarriageReturn_ = false;
    std::size_t bytes_ = 0;
    std::size_t line_ = 1;
    std::size_t recordLine_ = 1;
};

struct CsvField {
    std::string text{};
    bool quoted = false;
};

/// The fields of a record: quotes taken off, doubled ones halved, unquoted text trimmed of spaces. False for
/// a quote inside an unquoted field and for text behind a closing quote; `fields` then holds what came
/// before. Reuses what `fields` holds.
[[nodiscard]] bool splitCsvRecord(std::string_view record, char separator, std::vector<CsvField>& fields);

/// A field as it stands in a record with commas: quoted when it has to be.
[[nodiscard]] std::string csvField(std::string_view text);

}  // namespace tidewell
