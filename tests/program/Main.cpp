#include <gtest/gtest.h>

#include "platform/linux/DesktopHelper.h"

/// Like the program itself, since what is tested here starts itself once more to ask the desktop.
int main(int count, char** values)
{
    tidewell::beDesktopHelperWhenAsked(count, values);
    testing::InitGoogleTest(&count, values);
    return RUN_ALL_TESTS();
}
