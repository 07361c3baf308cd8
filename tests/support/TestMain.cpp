#include <QCoreApplication>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

// Engine completions arrive through the Qt event loop, so every test program
// has an application object.
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
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
