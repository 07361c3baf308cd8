#include <QApplication>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

// Widget tests need a QApplication; ctest runs them with QT_QPA_PLATFORM=offscreen.
// Each test process writes its own log, so tests running side by side never
// read each other's entries.
static void privateLog()
{
    char folder[] = "/tmp/quillmorph-test-log-XXXXXX";
    if (mkdtemp(folder)) {
        setenv("XDG_STATE_HOME", folder, 1);
        static const std::filesystem::path remove = folder;
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(remove, ignored);
        });
    }
}

int main(int argc, char **argv)
{
    privateLog();
    // Also when ctest lists the tests at build time, with no display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
