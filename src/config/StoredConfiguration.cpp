#include "config/StoredConfiguration.h"

#include <fmt/format.h>

#include <utility>

#include "config/AppSettingsKeys.h"
#include "config/AsideFile.h"
#include "support/AtomicFile.h"
#include "support/Log.h"

namespace tidewell {

namespace {

using Account = GlucoseAccountConfiguration;
using Places = ConfigurationManager::Places;

constexpr std::string_view keychainService = "Tidewell.account";
/// A document takes about one kilobyte.
constexpr std::size_t longestDocument = 1 << 20;

std::string keychainAccount(const Account& account)
{
    return fmt::format("{}:{}", rawValue(account.provider), account.username);
}

/// Whether both are one account to the secret store, whatever else differs.
bool sameIdentity(const std::optional<Account>& left, const std::optional<Account>& right)
{
    return left && right && left->provider == right->provider && left->username == right->username;
}

ConfigurationProblem documentProblem(std::string message)
{
    return {.error = {.kind = ConfigurationError::Kind::invalidConfiguration}, .message = std::move(message)};
}

ConfigurationProblem keychainProblem(std::int32_t status, std::string_view what)
{
    return {.error = {.kind = ConfigurationError::Kind::keychainError, .status = status},
            .message = fmt::format("{}: {}.", what, keychainStatusText(status))};
}

StoredOutcome failure(ConfigurationProblem problem) { return {.problem = std::move(problem)}; }

/// The document on the disk.
struct Document {
    std::optional<AppConfiguration> configuration{};  ///< Empty without a document, and for a damaged one.
    std::string damage{};  ///< What is wrong with the content; empty when nothing is.
};

/// Fails when there is something that cannot be read at all.
std::expected<Document, std::error_code> readDocument(const std::filesystem::path& file)
{
    auto content = readFile(file, longestDocument);
    if (!content && content.error() == std::errc::file_too_large)
        return Document{.damage = "It is too large"};
    if (!content)
        return std::unexpected{content.error()};
    if (!*content)
        return Document{};
    const auto document = parseJson(**content, {.bytes = longestDocument});
    wipe((*content)->data(), (*content)->size());
    if (!document)
        return Document{.damage = document.error().message};
    auto configuration = readAppConfiguration(*document);
    if (!configuration)
        return Document{.damage = std::move(configuration.error().message)};
    return Document{.configuration = std::move(*configuration)};
}

/// The text of the document, without the password. Empty when it would not say the same when it is read
/// again, as with a name that is not UTF-8.
std::optional<std::string> documentText(const HeldConfiguration& held)
{
    AppConfiguration configuration{.account = held.account.value_or(Account{}), .app = held.settings};
    configuration.account.password = SecretText{};
    std::string text = prettyJson(encode(configuration));
    const auto document = parseJson(text, {.bytes = longestDocument});
    if (!document || decodeAppConfiguration(*document) != configuration)
        return std::nullopt;
    return text;
}

std::error_code writeDocument(const std::filesystem::path& file, std::string_view text)
{
    if (const auto error = makePrivateFolder(file.parent_path()))
        return error;
    return writeFileAtomically(file, text);
}

/// Replaces a document that does not decode, which keeps
/// a second name; a failure leaves only the old document.
std::error_code replaceDamagedDocument(const std::filesystem::path& file, std::string_view text)
{
    const auto name = fmt::format("{}.unreadable-{}{}", file.stem().string(), writtenAtText(file),
                                  file.extension().string());
    const auto aside = keepAside(file, file.parent_path() / name);
    if (!aside)
        return aside.error();
    const auto error = writeDocument(file, text);
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(*aside, ignored);
    } else {
        Log{"ConfigurationManager"}.warning(
            fmt::format("The document that could not be read is kept as {}", aside->string()));
    }
    return error;
}

/// What the document says, in the program's form: an account without a username is none.
HeldConfiguration heldForm(AppConfiguration configuration)
{
    HeldConfiguration held{.settings = std::move(configuration.app)};
    if (!configuration.account.username.empty())
        held.account = std::move(configuration.account);
    return held;
}

/// Completes the account with its password from the secret store. While the store does not answer, the
/// password held so far serves on, if it is of the same account.
std::optional<ConfigurationProblem> fetchPassword(const Places& places, const HeldConfiguration& before,
                                                  Account& account)
{
    KeychainLookup lookup = places.keychain->read(keychainService, keychainAccount(account));
    if (auto* found = std::get_if<SecretText>(&lookup)) {
        account.password = std::move(*found);
        return std::nullopt;
    }
    if (std::holds_alternative<KeychainItemNotFound>(lookup))
        return keychainProblem(keychainStatus::itemNotFound, "Sign in again, since there is no password");
    if (sameIdentity(before.account, account))
        account.password = before.account->password;
    return keychainProblem(std::get<KeychainFailure>(lookup).status, "The password could not be read");
}

/// A password in the secret store that can be put back to what it was.
class PasswordChange {
public:
    /// Writes the password of `account`, or says why it could not.
    static std::expected<PasswordChange, ConfigurationProblem> make(const Places& places,
                                                                    const Account& account)
    {
        PasswordChange change{places.keychain, keychainAccount(account)};
        change.former_ = places.keychain->read(keychainService, change.name_);
        const auto* unknown = std::get_if<KeychainFailure>(&change.former_);
        const auto status = unknown ? unknown->status
                                    : places.keychain->write(keychainService, change.name_, account.password);
        if (status != keychainStatus::success)
            return std::unexpected{keychainProblem(status, "The password could not be stored")};
        return change;
    }

    void undo() const
    {
        const auto* former = std::get_if<SecretText>(&former_);
        const auto status = former ? keychain_->write(keychainService, name_, *former)
                                   : keychain_->remove(keychainService, name_);
        if (status != keychainStatus::success)
            Log{"ConfigurationManager"}.error(
                fmt::format("The former password could not be put back: {}", keychainStatusText(status)));
    }

private:
    PasswordChange(std::shared_ptr<KeychainItemStoring> keychain, std::string name)
        : keychain_{std::move(keychain)}, name_{std::move(name)}
    {
    }
    std::shared_ptr<KeychainItemStoring> keychain_;
    std::string name_;
    KeychainLookup former_;
};

/// Moves a password that stands in the document into the secret
/// store. The document loses it only after the store has it.
std::optional<ConfigurationProblem> movePassword(const Places& places, const HeldConfiguration& held)
{
    const auto stands = fmt::format("The password stands in clear text in {} and could not be moved",
                                    places.document.string());
    const auto status =
        places.keychain->write(keychainService, keychainAccount(*held.account), held.account->password);
    if (status != keychainStatus::success)
        return keychainProblem(status, stands);
    const auto text = documentText(held);
    const auto error =
        text ? writeDocument(places.document, *text) : std::make_error_code(std::errc::bad_message);
    if (error)
        return documentProblem(fmt::format("{}: {}.", stands, error.message()));
    return std::nullopt;
}

ConfigurationProblem unreadable(const std::filesystem::path& file, const std::error_code& error)
{
    return documentProblem(
        fmt::format("The configuration file {} cannot be read: {}.", file.string(), error.message()));
}

}  // namespace

StoredOutcome loadStored(const Places& places, const HeldConfiguration& held)
{
    auto document = readDocument(places.document);
    if (!document)
        return failure(unreadable(places.document, document.error()));
    if (!document->damage.empty()) {
        return failure(
            documentProblem(fmt::format("The configuration file {} is damaged and was left as it is: {}.",
                                        places.document.string(), document->damage)));
    }
    StoredOutcome outcome{.held = document->configuration ? heldForm(std::move(*document->configuration))
                                                          : HeldConfiguration{}};
    if (auto& account = outcome.held->account)
        outcome.problem = account->password.empty() ? fetchPassword(places, held, *account)
                                                    : movePassword(places, *outcome.held);
    outcome.succeeded = !outcome.problem;
    return outcome;
}

StoredOutcome saveStored(const Places& places, const HeldConfiguration& held, ConfigurationEdit edit)
{
    auto document = readDocument(places.document);
    if (!document)
        return failure(unreadable(places.document, document.error()));

    const HeldConfiguration before =
        document->configuration ? heldForm(std::move(*document->configuration)) : held;
    HeldConfiguration after = before;
    after.settings = withChanges(after.settings, edit.formerSettings, edit.settings);
    if (edit.replacesAccount) {
        after.account = std::move(edit.account);
        if (after.account && after.account->username.empty())
            after.account.reset();
        // Somebody wrote the password of this account into the document by hand, and it was not loaded since.
        if (after.account && after.account->password.empty() && sameIdentity(before.account, after.account))
            after.account->password = before.account->password;
    }
    const auto text = documentText(after);
    if (!text)
        return failure(
            documentProblem("The configuration could not be saved: a text in it is not valid UTF-8, or a "
                            "number not finite."));

    std::optional<PasswordChange> passwordChange;
    const bool passwordGiven = after.account && !after.account->password.empty();
    const bool passwordInDocument =
        document->configuration && before.account && !before.account->password.empty();
    if (passwordGiven && (edit.replacesAccount || passwordInDocument)) {
        auto change = PasswordChange::make(places, *after.account);
        if (!change)
            return failure(std::move(change.error()));
        passwordChange.emplace(std::move(*change));
    }

    const auto error = document->damage.empty() ? writeDocument(places.document, *text)
                                                : replaceDamagedDocument(places.document, *text);
    if (error) {
        if (passwordChange)
            passwordChange->undo();
        return failure(documentProblem(fmt::format("The configuration could not be saved to {}: {}.",
                                                   places.document.string(), error.message())));
    }

    StoredOutcome outcome{.succeeded = true};
    if (before.account && !sameIdentity(before.account, after.account)) {
        const auto status = places.keychain->remove(keychainService, keychainAccount(*before.account));
        if (status != keychainStatus::success && status != keychainStatus::itemNotFound)
            outcome.problem =
                keychainProblem(status, "The password of the former account could not be removed");
    }
    if (after.account && after.account->password.empty()) {
        if (sameIdentity(held.account, after.account) && !held.account->password.empty())
            after.account->password = held.account->password;
        else if (auto problem = fetchPassword(places, held, *after.account))
            outcome.problem = std::move(problem);
    }
    outcome.held = std::move(after);
    return outcome;
}

}  // namespace tidewell
