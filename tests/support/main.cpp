#include "support/test_environment.h"

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    ::testing::InitGoogleMock(&argc, argv);
    MdToolsTest::createWorkDirectory();
    const int result = RUN_ALL_TESTS();
    MdToolsTest::removeWorkDirectory();
    return result;
}
