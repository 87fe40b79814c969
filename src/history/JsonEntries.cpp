#include "history/JsonEntries.h"

namespace tidewell {

bool JsonEntries::take(char c)
{
    if (c == '\n')
        ++line_;
    const bool inEntry = stack_.size() > 2;
    if (!inString_ && !inEntry && (c == ' ' || c == '\n' || c == '\r' || c == '\t'))
        return true;
    if (inString_) {
        keep(c, inEntry);
        if (escaped_)
            escaped_ = false;
        else if (c == '\\')
            escaped_ = true;
        else if (c == '"')
            inString_ = false;
        return isShort();
    }
    inString_ = c == '"';
    if ((c == '{' || c == '[') && stack_.size() == 2) {
        skeleton_ += '0';
        entry_.clear();
        entryLine_ = line_;
    }
    if (c == '{' || c == '[')
        stack_ += c;
    keep(c, stack_.size() > 2);
    if (c == '}' || c == ']') {
        if (stack_.empty())
            return false;
        stack_.pop_back();
        if (inEntry && stack_.size() == 2) {
            ++entries_;
            return sink_(entryLine_, entry_);
        }
    }
    return isShort() && stack_.size() < 16;
}

bool JsonEntries::isShort() const
{
    return entry_.size() <= longestJsonEntry && skeleton_.size() <= longestJsonSkeleton;
}

}  // namespace tidewell
