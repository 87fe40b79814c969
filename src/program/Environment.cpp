#include "program/Environment.h"

#include <cstdlib>

#include "config/FileKeychainItemStore.h"
#include "config/MemoryKeychainItemStore.h"
#include "platform/linux/KeychainItemStore.h"
#include "support/AtomicFile.h"
#include "support/Log.h"
#include "support/Sha256.h"

namespace tidewell {

namespace {

const Log environmentLog{"Environment"};

void makeFolder(const std::filesystem::path& folder)
{
    if (const auto error = makePrivateFolder(folder))
        environmentLog.warning("Cannot make the folder " + folder.string() + ": " + error.message());
    else
        removeStrayTemporaries(folder);
}

/// Why there is none; else it is in `environment`, whose folders are known.
std::optional<CommandError> chooseKeychain(Environment& environment)
{
    const char* chosen = std::getenv("TIDEWELL_KEYCHAIN");
    const std::string_view name = chosen ? chosen : "secret-service";
    if (name.empty() || name == "secret-service")
        environment.keychain = std::make_shared<KeychainItemStore>();
    else if (name == "file") {
        const auto file = environment.folders.state / "keychain.json";
        environmentLog.warning("Passwords are kept in the owner-only file " + file.string() +
                               ", because TIDEWELL_KEYCHAIN=file asks for it.");
        environment.keychain = std::make_shared<FileKeychainItemStore>(file);
        environment.keychainFile = file;
    } else {
        return CommandError{
            ExitCode::usage,
            "TIDEWELL_KEYCHAIN must be \"secret-service\" or \"file\"; it is something else."};
    }
    return std::nullopt;
}

}  // namespace

std::expected<std::unique_ptr<DemoFolder>, std::string> DemoFolder::make()
{
    std::error_code error;
    auto base = std::filesystem::temp_directory_path(error);
    if (error)
        base = "/tmp";
    std::string pattern = (base / "tidewell-demo-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        return std::unexpected("Cannot make a temporary folder in " + base.string() + ".");
    return std::unique_ptr<DemoFolder>(new DemoFolder(pattern));
}

DemoFolder::~DemoFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string sharingProfile(const Environment& environment)
{
    std::string text;
    // None of them holds a zero.
    const auto add = [&text](std::string_view part) { text.append(part).push_back('\0'); };
    add(environment.folders.configuration.string());
    add(environment.folders.state.string());
    const ServiceEndpoints& endpoints = environment.endpoints;
    for (const auto& [region, endpoint] : endpoints.dexcom) {
        add(region);
        add(endpoint.base);
        add(endpoint.applicationId);
    }
    for (const auto& [region, base] : endpoints.libreLinkUp) {
        add(region);
        add(base);
    }
    add(endpoints.libreLinkUpIdentity.version);
    add(endpoints.libreLinkUpIdentity.product);
    add(endpoints.libreLinkUpIdentity.userAgent);
    return sha256Hex(text);
}

std::string sharingAccount(const Environment& environment, const GlucoseAccountConfiguration& account)
{
    std::string text = sharingProfile(environment);
    for (const std::string_view part :
         {rawValue(account.provider), std::string_view{account.username}, std::string_view{account.region}}) {
        text.push_back('\0');
        text.append(part);
    }
    text.push_back('\0');
    return sha256Hex(text + account.patientID.value_or(std::string{}));
}

std::string bookkeepingProblem(const std::filesystem::path& file, std::error_code error)
{
    const bool damaged = error == std::errc::bad_message;
    return "The bookkeeping in " + file.string() + " cannot be read and counts as empty: " +
           (damaged ? "it is damaged, and is set aside when it is written next" : error.message()) + ".";
}

std::string bookkeepingNotSaved(const std::filesystem::path& file, std::error_code error)
{
    return file.string() + " could not be written: " + error.message() +
           ".\nA snooze and accepted terms may be forgotten when Tidewell ends.\n"
           "Mend the permissions of the folder, or make room on the disk.";
}

std::expected<Environment, CommandError> standardEnvironment()
{
    const auto folders = standardFolders();
    if (!folders)
        return std::unexpected(
            CommandError{ExitCode::failure,
                         "You have no home folder: HOME is not set, and the user data base names none."});
    Environment environment;
    environment.folders = *folders;
    makeFolder(folders->configuration);
    makeFolder(folders->state);

    if (auto problem = chooseKeychain(environment))
        return std::unexpected(*std::move(problem));

    const char* named = std::getenv("TIDEWELL_ENDPOINTS");
    auto endpoints = ServiceEndpoints::load(
        named && *named ? std::optional<std::filesystem::path>{named} : std::nullopt, folders->configuration);
    if (!endpoints)
        return std::unexpected(CommandError{ExitCode::failure, endpoints.error()});
    environment.endpoints = std::move(*endpoints);
    return environment;
}

std::expected<Environment, CommandError> demoEnvironment(const Clock& clock, std::string scenario)
{
    const auto fail = [](std::string message) {
        return std::unexpected(CommandError{ExitCode::failure, std::move(message)});
    };
    Environment environment;
    auto temporary = DemoFolder::make();
    if (!temporary)
        return fail(temporary.error());
    environment.temporary = std::move(*temporary);
    environment.folders = Folders::below(environment.temporary->path());
    makeFolder(environment.folders.configuration);
    makeFolder(environment.folders.state);
    environment.keychain = std::make_shared<MemoryKeychainItemStore>();
    auto demo = DemoService::start(clock, {.scenario = std::move(scenario)});
    if (!demo)
        return fail(demo.error());
    environment.demo = std::move(*demo);
    auto endpoints = ServiceEndpoints::parse(environment.demo->endpointsDocument());
    if (!endpoints)
        return fail(endpoints.error());
    environment.endpoints = std::move(*endpoints);
    return environment;
}

}  // namespace tidewell
