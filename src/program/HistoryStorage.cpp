#include "program/HistoryStorage.h"

#include "support/FileSystem.h"
#include "support/Random.h"

namespace tidewell {

namespace {

struct HistoryStorage {
    explicit HistoryStorage(const Environment& environment)
        : keychain{environment.keychain},
          store{{.root = historyRoot(environment.folders),
                 .files = files,
                 .keychain = *keychain,
                 .random = random}}
    {
    }
    std::shared_ptr<KeychainItemStoring> keychain;
    SystemFileSystem files;
    SystemRandom random;
    GlucoseHistoryStore store;
};

}  // namespace

std::filesystem::path historyRoot(const Folders& folders) { return folders.data / "SavedHistory"; }

std::shared_ptr<GlucoseHistoryStore> makeHistoryStore(const Environment& environment)
{
    const auto storage = std::make_shared<HistoryStorage>(environment);
    return {storage, &storage->store};
}

}  // namespace tidewell
