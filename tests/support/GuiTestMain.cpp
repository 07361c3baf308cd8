#include "TestSupport.h"

#include <QApplication>

#include <gtest/gtest.h>

// Widget tests need a QApplication; ctest runs them with QT_QPA_PLATFORM=offscreen.
int main(int argc, char **argv)
{
    testing_support::usePrivateLog();
    // Also when ctest lists the tests at build time, with no display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
