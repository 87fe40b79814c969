#include "config/UserDefaults.h"

#include <cmath>
#include <utility>

#include "config/AsideFile.h"
#include "support/AtomicFile.h"

namespace tidewell {

namespace {

constexpr std::size_t longestFile = 1 << 20;

/// Takes `key` over from one object to the other, its absence included.
void takeOver(json::object& to, const json::object& from, const std::string& key)
{
    if (const json::value* value = from.if_contains(key))
        to[key] = *value;
    else
        to.erase(key);
}

/// The values in the file; absent without a file; bad_message when they do not decode.
std::expected<std::optional<json::object>, std::error_code> readValues(const std::filesystem::path& file)
{
    const auto damaged = std::unexpected{std::make_error_code(std::errc::bad_message)};
    const auto content = readFile(file, longestFile);
    if (!content && content.error() == std::errc::file_too_large)
        return damaged;
    if (!content)
        return std::unexpected{content.error()};
    if (!*content)
        return std::optional<json::object>{};
    auto values = parseUserDefaults(**content);
    if (!values)
        return damaged;
    return std::optional{std::move(*values)};
}

}  // namespace

std::expected<json::object, JsonError> parseUserDefaults(std::string_view text)
{
    auto document = parseJson(text, {.bytes = longestFile});
    if (!document)
        return std::unexpected{std::move(document.error())};
    json::object* object = document->if_object();
    if (!object)
        return std::unexpected{JsonError{"The document is not an object"}};
    return std::move(*object);
}

UserDefaults::UserDefaults(std::filesystem::path file) : file_{std::move(file)} {}

std::error_code UserDefaults::load()
{
    if (file_.empty())
        return {};
    auto values = readValues(file_);
    if (!values)
        return values.error();  // What is held stays: a file that cannot be read just now forgets nothing.
    json::object loaded;
    if (*values)
        loaded = std::move(**values);
    const std::scoped_lock lock{mutex_};
    for (const std::string& key : changed_)
        takeOver(loaded, values_, key);
    values_ = std::move(loaded);
    return {};
}

std::error_code UserDefaults::save()
{
    std::set<std::string> changed;
    json::object values;
    {
        const std::scoped_lock lock{mutex_};
        if (changed_.empty() || file_.empty())
            return {};
        changed.swap(changed_);
        values = values_;
    }
    const std::error_code error = write(values, changed);
    const std::scoped_lock lock{mutex_};
    if (error) {
        changed_.merge(changed);
        return error;
    }
    for (const std::string& key : changed_)
        takeOver(values, values_, key);
    values_ = std::move(values);
    return {};
}

std::error_code UserDefaults::trySave() const
{
    if (file_.empty())
        return {};
    if (const auto error = makePrivateFolder(file_.parent_path()))
        return error;
    if (const auto present = readValues(file_); !present && present.error() != std::errc::bad_message)
        return present.error();
    std::filesystem::path beside = file_;
    beside += ".try";
    const auto error = writeFileAtomically(beside, "{}\n");
    std::error_code ignored;
    std::filesystem::remove(beside, ignored);
    return error;
}

/// Leaves in `values` what stands in the file afterwards.
std::error_code UserDefaults::write(json::object& values, const std::set<std::string>& changed) const
{
    if (const auto error = makePrivateFolder(file_.parent_path()))
        return error;
    auto present = readValues(file_);
    const bool damaged = !present && present.error() == std::errc::bad_message;
    if (!present && !damaged)
        return present.error();
    if (present && *present) {
        for (const std::string& key : changed)
            takeOver(**present, values, key);
        values = std::move(**present);
    }
    std::filesystem::path aside;
    if (damaged) {
        aside = file_;
        aside += ".unreadable";
        auto kept = keepAside(file_, aside);
        if (!kept)
            return kept.error();
        aside = std::move(*kept);
    }
    const auto error = writeFileAtomically(file_, prettyJson(values));
    if (error && damaged) {
        std::error_code ignored;
        std::filesystem::remove(aside, ignored);
    }
    return error;
}

bool UserDefaults::boolean(std::string_view key) const
{
    const std::scoped_lock lock{mutex_};
    const json::value* value = values_.if_contains(key);
    const bool* flag = value ? value->if_bool() : nullptr;
    return flag && *flag;
}

std::optional<Date> UserDefaults::date(std::string_view key) const
{
    const std::scoped_lock lock{mutex_};
    const json::value* value = values_.if_contains(key);
    const auto seconds = value ? numberOf(*value) : std::nullopt;
    if (!seconds || !std::isfinite(*seconds))
        return std::nullopt;
    return dateFromUnix(*seconds);
}

std::optional<std::string> UserDefaults::text(std::string_view key) const
{
    const std::scoped_lock lock{mutex_};
    const json::value* value = values_.if_contains(key);
    const json::string* text = value ? value->if_string() : nullptr;
    if (!text)
        return std::nullopt;
    return std::string{text->begin(), text->end()};
}

void UserDefaults::set(std::string_view key, bool value) { store(key, value); }

void UserDefaults::set(std::string_view key, Date value)
{
    if (std::isfinite(unixSeconds(value)))
        store(key, unixSeconds(value));
    else
        remove(key);
}

void UserDefaults::set(std::string_view key, std::string value) { store(key, json::value(value)); }

void UserDefaults::remove(std::string_view key) { store(key, std::nullopt); }

void UserDefaults::store(std::string_view key, std::optional<json::value> value)
{
    std::function<void()> handler;
    {
        const std::scoped_lock lock{mutex_};
        const json::value* present = values_.if_contains(key);
        if (value ? present && *present == *value : !present)
            return;
        if (value)
            values_[key] = std::move(*value);
        else
            values_.erase(key);
        changed_.emplace(key);
        handler = handler_;
    }
    if (handler)
        handler();
}

void UserDefaults::setChangeHandler(std::function<void()> handler)
{
    const std::scoped_lock lock{mutex_};
    handler_ = std::move(handler);
}

}  // namespace tidewell
