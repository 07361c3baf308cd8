#include "SingleInstance.h"

#include <QDataStream>
#include <QLocalServer>
#include <QLocalSocket>
#include <QtEndian>

#include <memory>

#include <pwd.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// File names are bytes on Linux and need not be UTF-8: they travel as such.
QByteArray encode(const std::vector<fs::path> &paths)
{
    QByteArray message;
    QDataStream out(&message, QIODevice::WriteOnly);
    QList<QByteArray> list;
    for (const auto &path : paths)
        list.append(QByteArray::fromStdString(path.native()));
    out << list;
    return message;
}

} // namespace

QString SingleInstance::socketName()
{
    const passwd *user = getpwuid(getuid());
    const QString name = QStringLiteral("quillmorph-") +
                         (user ? QString::fromLocal8Bit(user->pw_name) : QString::number(getuid()));
    // The session's own runtime folder, where one exists: a test or a second
    // desktop session that sets its own never meets another Quillmorph.
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && runtime.startsWith('/'))
        return QString::fromLocal8Bit(runtime) + QLatin1Char('/') + name;
    return name;
}

SingleInstance::SingleInstance(QString name, QObject *parent) : QObject(parent), name(std::move(name)) {}

SingleInstance::HandOff SingleInstance::handOff(const std::vector<fs::path> &paths, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(name);
    if (!socket.waitForConnected(timeoutMs)) {
        const auto error = socket.error();
        if (error == QLocalSocket::ConnectionRefusedError || error == QLocalSocket::ServerNotFoundError) {
            // Nobody listens: the socket is stale, left by an instance that died.
            QLocalServer::removeServer(name);
            return HandOff::noInstance;
        }
        // Somebody is there but slow: its socket is not ours to take.
        return HandOff::failed;
    }
    const QByteArray message = encode(paths);
    QDataStream out(&socket);
    out << static_cast<quint32>(message.size());
    socket.write(message);
    if (!socket.waitForBytesWritten(timeoutMs))
        return HandOff::failed;
    // The running instance answers once it has taken the files; silence means they may be lost.
    if (!socket.waitForReadyRead(timeoutMs) || !socket.readAll().startsWith("ok"))
        return HandOff::failed;
    socket.disconnectFromServer();
    return HandOff::handed;
}

bool SingleInstance::listen()
{
    server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(name)) {
        QLocalServer::removeServer(name);
        if (!server->listen(name))
            return false;
    }
    connect(server, &QLocalServer::newConnection, this, &SingleInstance::readConnection);
    return true;
}

void SingleInstance::readConnection()
{
    while (QLocalSocket *socket = server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        auto buffer = std::make_shared<QByteArray>();
        connect(socket, &QLocalSocket::readyRead, this, [this, socket, buffer] {
            buffer->append(socket->readAll());
            if (buffer->size() < 4)
                return;
            const quint32 size = qFromBigEndian<quint32>(buffer->constData());
            if (static_cast<quint64>(buffer->size()) < 4u + size)
                return;
            QDataStream decode(buffer->mid(4, size));
            QList<QByteArray> list;
            decode >> list;
            buffer->clear();
            std::vector<fs::path> paths;
            for (const QByteArray &path : list)
                paths.emplace_back(path.toStdString());
            socket->write("ok");
            socket->flush();
            // Taken up from the event loop, never from inside this socket's
            // handler: the intake may open a question whose nested loop sees
            // this socket close and deleted.
            QMetaObject::invokeMethod(
                this, [this, paths] { Q_EMIT received(paths); }, Qt::QueuedConnection);
        });
    }
}
