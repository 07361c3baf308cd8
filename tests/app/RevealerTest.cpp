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

// Five files of one event in two folders: each folder is opened once, not once per file.
TEST(Revealer, OpensEachFolderOnceWhenNoFileManagerAnswers)
{
    ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()) << "run this under dbus-run-session";
    std::vector<QUrl> opened;
    FileManagerRevealer revealer([&](const QUrl &folder) { opened.push_back(folder); });
    revealer.reveal({"/archive/letters/Letter (1).odt", "/archive/letters/B.odt", "/archive/memos/C.odt"}, 7);
    // Later files of the same event open no folder again.
    revealer.reveal({"/archive/letters/D.odt", "/archive/memos/E.odt"}, 7);
    ASSERT_TRUE(waitUntil([&] { return opened.size() >= 2; }, 10));
    waitUntil([] { return false; }, 0.3);
    EXPECT_EQ(opened, (std::vector<QUrl>{QUrl::fromLocalFile("/archive/letters"),
                                         QUrl::fromLocalFile("/archive/memos")}));
}

TEST(Revealer, AsksTheFileManagerToShowTheFileSelected)
{
    TempDir dir;
    const fs::path record = dir / "calls";
    QProcess fake;
    fake.start(QStringLiteral(FAKE_FILEMANAGER), {QString::fromStdString(record.string())});
    ASSERT_TRUE(fake.waitForStarted());
    QDBusConnectionInterface *names = QDBusConnection::sessionBus().interface();
    ASSERT_TRUE(
        waitUntil([&] { return names->isServiceRegistered("org.freedesktop.FileManager1").value(); }, 10));

    bool fellBack = false;
    FileManagerRevealer revealer([&](const QUrl &) { fellBack = true; });
    revealer.reveal({dir / "Letter (1).odt", dir / "Memo.odt"}, 1);
    ASSERT_TRUE(waitUntil([&] { return fs::exists(record); }, 10));
    const auto uri = [&](const std::string &name) {
        return QUrl::fromLocalFile(QString::fromStdString((dir / name).string()))
            .toString(QUrl::FullyEncoded)
            .toStdString();
    };
    const std::string expected = uri("Letter (1).odt");
    waitUntil([] { return false; }, 0.2);
    EXPECT_EQ(readFile(record), expected + " " + uri("Memo.odt") + " startup=\n")
        << "one call for both files";
    EXPECT_NE(expected.find("Letter%20(1).odt"), std::string::npos);
    waitUntil([] { return false; }, 0.2);
    EXPECT_FALSE(fellBack);
    fake.kill();
    fake.waitForFinished();
}
