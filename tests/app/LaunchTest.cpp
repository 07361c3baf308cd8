#include "FakeTools.h"
#include "ScriptedPrompter.h"
#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "app/SingleInstance.h"
#include "settings/Settings.h"
#include "app/SettingsWindowController.h"
#include "tools/ConversionTools.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QLocalServer>
#include <QMenu>
#include <QMenuBar>
#include <QTreeWidget>
#include <QTimer>
#include <QUuid>

#include <cstring>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

class Launch : public ::testing::Test {
protected:
    Launch()
        : settings(std::make_unique<QSettings>(QString::fromStdString(tools.work("settings.conf").string()),
                                               QSettings::IniFormat)),
          delegate(prompter, revealer, settings)
    {
    }
    FakeTools tools;
    Settings settings;
    ScriptedPrompter prompter;
    RecordingRevealer revealer;
    AppDelegate delegate;
};

QStringList menuItems(QMenu *menu)
{
    QStringList items;
    for (QAction *action : menu->actions())
        items << (action->isSeparator()
                      ? QStringLiteral("---")
                      : action->text() + (action->shortcut().isEmpty()
                                              ? QString()
                                              : " [" + action->shortcut().toString() + "]"));
    return items;
}

} // namespace

TEST_F(Launch, WithoutFilesTheOpenPanelIsOfferedOnce)
{
    const LogTail tail;
    delegate.applicationDidFinishLaunching();
    ASSERT_TRUE(waitUntil([&] { return prompter.panelsOffered > 0; }, 5));
    waitUntil([] { return false; }, 0.1);
    EXPECT_EQ(prompter.panelsOffered, 1);
    EXPECT_EQ(tail.messagesContaining("launch: "),
              std::vector<std::string>{
                  "launch: didFinishLaunching (bundle=" + ConversionTools::programPath().string() + ")"});
    ASSERT_NE(delegate.mainWindow(), nullptr);
    EXPECT_EQ(delegate.mainWindow()->windowTitle(), "Quillmorph");
    EXPECT_TRUE(delegate.mainWindow()->isVisible());
    // Cancelling the panel leaves everything as it was.
    prompter.panelCompletion({});
    EXPECT_TRUE(delegate.mainWindow()->isVisible());
}

TEST_F(Launch, FilesArrivingFirstSuppressThePanel)
{
    writeFile(tools.work("Letter.wpd"), std::vector<std::uint8_t>{0xFF, 0x57, 0x50, 0x43});
    tools.add("wpd2odt", "eval out=\\${$#}; printf x > \"$out\"");
    QTimer::singleShot(0, &delegate, [this] { delegate.applicationOpen({tools.work("Letter.wpd")}); });
    delegate.applicationDidFinishLaunching();
    ASSERT_TRUE(waitUntil([&] { return revealer.revealed.size() == 1; }));
    EXPECT_EQ(prompter.panelsOffered, 0);
    auto *list = delegate.mainWindow()->conversionList();
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->topLevelItem(0)->text(0), "Letter.wpd");
    EXPECT_EQ(list->topLevelItem(0)->text(2), "Letter.odt");
}

TEST_F(Launch, PanelChoicesAreOpenedLikeAnOpenEvent)
{
    delegate.chooseAndConvert();
    ASSERT_EQ(prompter.panelsOffered, 1);
    const LogTail tail;
    prompter.panelCompletion({tools.work("missing.wpd")});
    EXPECT_TRUE(delegate.didOpen);
    EXPECT_EQ(tail.messagesContaining("open"),
              std::vector<std::string>{"open: " + tools.work("missing.wpd").string()})
        << "the panel has no openEvent line";
    ASSERT_EQ(prompter.shown.size(), 1u);
    EXPECT_EQ(prompter.shown[0].alert.message, "I could not read missing.wpd.");
}

TEST_F(Launch, MenusFollowLinuxConventions)
{
    delegate.applicationDidFinishLaunching();
    const QList<QAction *> top = delegate.mainWindow()->menuBar()->actions();
    ASSERT_EQ(top.size(), 3);
    EXPECT_EQ(top[0]->text(), "Quillmorph");
    EXPECT_EQ(menuItems(top[0]->menu()), (QStringList{"About Quillmorph", "---", "Settings\u2026 [Ctrl+,]",
                                                      "---", "Quit Quillmorph [Ctrl+Q]"}));
    EXPECT_EQ(top[1]->text(), "File");
    EXPECT_EQ(menuItems(top[1]->menu()), (QStringList{"Open\u2026 [Ctrl+O]", "---", "Close [Ctrl+W]"}));
    EXPECT_EQ(top[2]->text(), "Help");
    EXPECT_EQ(menuItems(top[2]->menu()), (QStringList{"Quillmorph Help [F1]"}));

    top[0]->menu()->actions()[2]->trigger();
    ASSERT_NE(delegate.settingsController, nullptr);
    top[2]->menu()->actions()[0]->trigger();
    ASSERT_NE(delegate.helpController, nullptr);
    auto *help = delegate.helpController.get();
    top[2]->menu()->actions()[0]->trigger();
    EXPECT_EQ(delegate.helpController.get(), help) << "made once and kept";
}

TEST_F(Launch, ClosingTheMainWindowQuits)
{
    delegate.applicationDidFinishLaunching();
    bool ready = false;
    QObject::connect(&delegate, &AppDelegate::readyToQuit, [&] { ready = true; });
    delegate.showSettings();
    delegate.mainWindow()->close();
    EXPECT_TRUE(delegate.isQuitting());
    EXPECT_TRUE(ready);
    EXPECT_FALSE(delegate.settingsController->window()->isVisible()) << "every window hides at once";
}

TEST(SingleInstanceTest, ALaterLaunchHandsItsFilesToTheFirst)
{
    const QString name = "quillmorph-test-" + QUuid::createUuid().toString(QUuid::Id128);
    SingleInstance first(name);
    ASSERT_TRUE(first.listen());
    std::vector<std::vector<fs::path>> events;
    QObject::connect(&first, &SingleInstance::received, [&](const auto &paths) { events.push_back(paths); });

    const std::vector<fs::path> files{"/archive/Letter.wpd", "/archive/caf\xe9 \"x\".wpd",
                                      "/archive/two\nlines"};
    bool handed = false;
    // The hand-off blocks until answered, so it runs beside the first instance's event loop.
    std::thread later([&] {
        SingleInstance second(name);
        handed = second.handOff(files) == SingleInstance::HandOff::handed;
    });
    ASSERT_TRUE(waitUntil([&] { return !events.empty(); }, 10));
    later.join();
    EXPECT_TRUE(handed);
    ASSERT_EQ(events.size(), 1u) << "one open event";
    EXPECT_EQ(events[0], files) << "names that are not UTF-8 arrive byte for byte";
}

// A socket file of this name that no Quillmorph answers on: bound and closed, as a crashed instance
// leaves it, or listening but never accepting. Returns the descriptor (-1 when closed) and the path.
std::pair<int, QString> unansweredSocket(const QString &name, bool listening)
{
    QLocalServer probe;
    EXPECT_TRUE(probe.listen(name));
    const QString path = probe.fullServerName();
    probe.close();
    int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.toLocal8Bit().constData(), sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    if (listening) {
        EXPECT_EQ(::listen(fd, 4), 0); // connections wait in the backlog, unanswered
    } else {
        ::close(fd);
        fd = -1;
    }
    EXPECT_TRUE(fs::exists(path.toStdString()));
    return {fd, path};
}

TEST(SingleInstanceTest, AStaleSocketIsReplaced)
{
    const QString name = "quillmorph-test-" + QUuid::createUuid().toString(QUuid::Id128);
    unansweredSocket(name, false);
    SingleInstance launch(name);
    EXPECT_EQ(launch.handOff({"/a.wpd"}, 500), SingleInstance::HandOff::noInstance);
    EXPECT_TRUE(launch.listen());
}

// An instance that is there but does not answer in time keeps its socket: the
// later launch fails instead of taking the place of a live Quillmorph.
TEST(SingleInstanceTest, ASilentLiveInstanceKeepsItsSocket)
{
    const QString name = "quillmorph-test-" + QUuid::createUuid().toString(QUuid::Id128);
    const auto [fd, path] = unansweredSocket(name, true);
    SingleInstance launch(name);
    EXPECT_EQ(launch.handOff({"/a.wpd"}, 300), SingleInstance::HandOff::failed);
    EXPECT_TRUE(fs::exists(path.toStdString())) << "a live instance's socket was removed";
    ::close(fd);
    ::unlink(path.toLocal8Bit().constData());
}

TEST(SingleInstanceTest, TheSocketLivesInTheSessionRuntimeFolder)
{
    const QByteArray saved = qgetenv("XDG_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", "/run/user/4242");
    EXPECT_TRUE(SingleInstance::socketName().startsWith("/run/user/4242/quillmorph-"));
    qunsetenv("XDG_RUNTIME_DIR");
    EXPECT_TRUE(SingleInstance::socketName().startsWith("quillmorph-"));
    if (!saved.isEmpty())
        qputenv("XDG_RUNTIME_DIR", saved);
}
