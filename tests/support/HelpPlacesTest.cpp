#include "TestSupport.h"
#include "settings/Settings.h"
#include "app/HelpWindowController.h"

#include <gtest/gtest.h>

#include <QTextBrowser>

#include <cstdlib>

namespace fs = std::filesystem;
using namespace testing_support;

// Where the settings and the log live depends on the session's environment,
// and both are fixed at their first use: this program sets the environment
// before anything reads it, so it holds this one test.
TEST(HelpPlaces, ThePageNamesTheSettingsFileAndTheLogOfThisSession)
{
    TempDir dir;
    // Characters that mean something in HTML must come through as themselves.
    const fs::path config = dir / "my <config> & more";
    const fs::path state = dir / "state";
    ASSERT_EQ(setenv("XDG_CONFIG_HOME", config.c_str(), 1), 0);
    ASSERT_EQ(setenv("XDG_STATE_HOME", state.c_str(), 1), 0);

    HelpWindowController controller(Settings::shared());
    const QString page = controller.webView->toPlainText();

    const QString settingsFile = QString::fromStdString((config / "Quillmorph" / "Quillmorph.conf").string());
    const QString logFile = QString::fromStdString((state / "Quillmorph" / "Quillmorph.log").string());
    EXPECT_TRUE(page.contains(QStringLiteral("Settings: ") + settingsFile)) << page.toStdString();
    EXPECT_TRUE(page.contains(QStringLiteral("Diagnostic log: ") + logFile)) << page.toStdString();
    EXPECT_FALSE(page.contains(QStringLiteral("~/.config"))) << page.toStdString();
    EXPECT_FALSE(page.contains(QStringLiteral("~/.local"))) << page.toStdString();
    // The rest of the page is still there.
    EXPECT_TRUE(page.contains(QStringLiteral("Keyboard")));
}
