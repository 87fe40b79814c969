#include "program/PictureApplication.h"

#include <QGuiApplication>

#include "program/Process.h"
#include "support/Log.h"

namespace tidewell {

namespace {

const Log pictureLog{"PictureApplication"};

}  // namespace

std::unique_ptr<QCoreApplication> makePictureApplication()
{
    auto& [count, values] = processArguments();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // What the toolkit misses of a desktop is nothing that a picture needs.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
        pictureLog.debug(text.toStdString());
    });
    return std::make_unique<QGuiApplication>(count, values);
}

}  // namespace tidewell
