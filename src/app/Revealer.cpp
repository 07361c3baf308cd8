#include "Revealer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QString>

namespace fs = std::filesystem;

FileManagerRevealer::FileManagerRevealer(FolderOpener openFolder, QObject *parent)
    : QObject(parent), openFolder(std::move(openFolder))
{
    if (!this->openFolder)
        this->openFolder = [](const QUrl &folder) { QDesktopServices::openUrl(folder); };
}

void FileManagerRevealer::reveal(const fs::path &file)
{
    const QString path = QString::fromStdString(file.string());
    const QUrl folder = QUrl::fromLocalFile(QString::fromStdString(file.parent_path().string()));
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openFolder(folder);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList {QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)} << QString();
    // Asynchronous, so a slow or absent file manager never blocks the window.
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 5000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, folder](QDBusPendingCallWatcher *done) {
        if (QDBusPendingReply<> reply = *done; reply.isError())
            openFolder(folder);
        done->deleteLater();
    });
}
