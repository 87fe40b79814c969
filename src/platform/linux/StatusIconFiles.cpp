#include "platform/linux/StatusIconFiles.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

#include "support/AtomicFile.h"
#include "support/Log.h"

namespace tidewell {
namespace {

const Log log{"StatusItem"};
constexpr std::string_view prefix = "icon-";
constexpr std::string_view suffix = ".png";

QByteArray png(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer{&bytes};
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

/// One name for one picture, so that a panel sees a new name exactly when the picture is another.
std::string nameOf(const QImage& image)
{
    const QByteArrayView bits{image.constBits(), image.sizeInBytes()};
    const QByteArray hash = QCryptographicHash::hash(bits.toByteArray(), QCryptographicHash::Sha1).toHex();
    return std::string{prefix} + hash.left(16).toStdString() + std::string{suffix};
}

/// All but the newest; also those of earlier runs.
void removeOldIcons(const std::filesystem::path& folder)
{
    std::vector<std::pair<std::filesystem::file_time_type, std::filesystem::path>> icons;
    std::error_code error;
    std::filesystem::directory_iterator entry{folder, error};
    for (; !error && entry != std::filesystem::directory_iterator{}; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        std::error_code unknown;
        const auto time = entry->last_write_time(unknown);
        if (!unknown && name.starts_with(prefix) && name.ends_with(suffix))
            icons.emplace_back(time, entry->path());
    }
    std::ranges::sort(icons, std::greater{});
    for (std::size_t i = StatusIconFiles::kept; i < icons.size(); ++i)
        std::filesystem::remove(icons[i].second, error);
}

}  // namespace

StatusIconFiles::StatusIconFiles(std::filesystem::path folder, std::function<void()> changed,
                                 Background background)
    : folder_{std::move(folder)}, changed_{std::move(changed)}, background_{std::move(background)}
{
}

std::filesystem::path StatusIconFiles::file(const QImage& picture) const { return folder_ / nameOf(picture); }

StatusIconFiles::State StatusIconFiles::look(const QImage& picture, std::chrono::milliseconds now)
{
    if (folder_.empty())
        return State::missing;
    const std::string name = nameOf(picture);
    if (std::ranges::find(ready_, name) != ready_.end())
        return State::ready;
    if (!writing_ && (!failedAt_ || now >= *failedAt_ + retryInterval))
        write(picture, name, now);
    return writing_ && now < writingSince_ + patience ? State::soon : State::missing;
}

void StatusIconFiles::write(const QImage& picture, const std::string& name, std::chrono::milliseconds now)
{
    writingSince_ = now;
    const auto failed = std::make_shared<std::atomic<bool>>(false);
    writing_ = background_(
        [picture, file = folder_ / name, failed] {
            const QByteArray bytes = png(picture);
            *failed = makePrivateFolder(file.parent_path()) ||
                      writeFileAtomically(file, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
            removeOldIcons(file.parent_path());
        },
        [this, name, failed] {
            writing_.reset();
            if (*failed) {
                if (!failedAt_)
                    log.warning("The status icon cannot be written for the panel; it gets pixels instead");
                failedAt_ = writingSince_;
            } else {
                failedAt_.reset();
                ready_.push_back(name);
                if (ready_.size() > kept / 2)
                    ready_.pop_front();
            }
            changed_();
        });
}

}  // namespace tidewell
