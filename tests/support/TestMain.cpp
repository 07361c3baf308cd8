#include "TestSupport.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

// Engine completions arrive through the Qt event loop, so every test program
// has an application object.
int main(int argc, char **argv)
{
    testing_support::usePrivateLog();
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
