#include "TestSupport.h"
#include "app/Revealer.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>

namespace fs = std::filesystem;
using namespace testing_support;

// Runs under dbus-run-session: a private bus, with no file manager until
// the second test starts a fake one.

TEST(Revealer, OpensTheFolderWhenNoFileManagerAnswers)
{
    ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()) << "run this under dbus-run-session";
    std::vector<QUrl> opened;
    FileManagerRevealer revealer([&](const QUrl &folder) { opened.push_back(folder); });
    revealer.reveal("/archive/letters/Letter (1).odt");
    ASSERT_TRUE(waitUntil([&] { return !opened.empty(); }, 10));
    EXPECT_EQ(opened, std::vector<QUrl> {QUrl::fromLocalFile("/archive/letters")});
}

TEST(Revealer, AsksTheFileManagerToShowTheFileSelected)
{
    TempDir dir;
    const fs::path record = dir / "calls";
    QProcess fake;
    fake.start(QStringLiteral(FAKE_FILEMANAGER), {QString::fromStdString(record.string())});
    ASSERT_TRUE(fake.waitForStarted());
    QDBusConnectionInterface *names = QDBusConnection::sessionBus().interface();
    ASSERT_TRUE(waitUntil([&] { return names->isServiceRegistered("org.freedesktop.FileManager1").value(); }, 10));

    bool fellBack = false;
    FileManagerRevealer revealer([&](const QUrl &) { fellBack = true; });
    revealer.reveal(dir / "Letter (1).odt");
    ASSERT_TRUE(waitUntil([&] { return fs::exists(record); }, 10));
    const std::string expected = QUrl::fromLocalFile(QString::fromStdString((dir / "Letter (1).odt").string()))
                                     .toString(QUrl::FullyEncoded)
                                     .toStdString();
    EXPECT_EQ(readFile(record), expected + " startup=\n");
    EXPECT_NE(expected.find("Letter%20(1).odt"), std::string::npos);
    waitUntil([] { return false; }, 0.2);
    EXPECT_FALSE(fellBack);
    fake.kill();
    fake.waitForFinished();
}
