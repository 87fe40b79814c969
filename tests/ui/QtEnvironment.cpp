#include <gtest/gtest.h>
#include <QApplication>
#include <QLocale>
#include <cstdlib>

#include "ui/SpokenWidget.h"

namespace {

/// The application object that every widget and font needs, for as long as the tests run.
class QtEnvironment final : public testing::Environment {
public:
    void SetUp() override
    {
        // The texts of the windows are compared, whatever language the tester speaks.
        ::setenv("LC_ALL", "C.UTF-8", 1);
        ::unsetenv("LANGUAGE");
        QLocale::setDefault(QLocale::c());
        application_ = std::make_unique<QApplication>(count_, arguments_);
        tidewell::installSpokenWidgets();
    }
    void TearDown() override { application_.reset(); }

private:
    int count_ = 1;
    char name_[5] = "test";
    char* arguments_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_{};
};

[[maybe_unused]] const auto* environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace
