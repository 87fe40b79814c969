#pragma once

#include <QCoreApplication>
#include <memory>

namespace tidewell {

/// The application object of a command that makes pictures: they need fonts, which the toolkit has with a
/// display only, or with the one that needs none. Made before there are other threads.
[[nodiscard]] std::unique_ptr<QCoreApplication> makePictureApplication();

}  // namespace tidewell
