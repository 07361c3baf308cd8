#include "Revealer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QString>

#include <algorithm>

namespace fs = std::filesystem;

FileManagerRevealer::FileManagerRevealer(FolderOpener openFolder, QObject *parent)
    : QObject(parent), openFolder(std::move(openFolder))
{
    if (!this->openFolder)
        this->openFolder = [](const QUrl &folder) { QDesktopServices::openUrl(folder); };
}

void FileManagerRevealer::reveal(const std::vector<fs::path> &files, quint64 event)
{
    // Folders in the order their first file came.
    std::vector<std::pair<fs::path, QStringList>> folders;
    for (const auto &file : files) {
        const fs::path parent = file.parent_path();
        auto found =
            std::find_if(folders.begin(), folders.end(), [&](const auto &f) { return f.first == parent; });
        if (found == folders.end())
            found = folders.insert(folders.end(), {parent, {}});
        found->second
            << QUrl::fromLocalFile(QString::fromStdString(file.string())).toString(QUrl::FullyEncoded);
    }
    for (const auto &[parent, uris] : folders) {
        const QUrl folder = QUrl::fromLocalFile(QString::fromStdString(parent.string()));
        const bool first = event == 0 || opened.insert({event, folder.toString()}).second;
        showItems(folder, uris, first);
    }
}

void FileManagerRevealer::showItems(const QUrl &folder, const QStringList &uris, bool mayOpen)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        if (mayOpen)
            openFolder(folder);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << uris << QString();
    // Asynchronous, so a slow or absent file manager never blocks the window.
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 5000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, folder, mayOpen](QDBusPendingCallWatcher *done) {
                if (QDBusPendingReply<> reply = *done; reply.isError() && mayOpen)
                    openFolder(folder);
                done->deleteLater();
            });
}
