#pragma once

#include <QObject>
#include <QString>

#include <filesystem>
#include <vector>

class QLocalServer;

// One Quillmorph per user: the first launch listens on a local socket, and
// later launches hand it their files and exit.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    // "quillmorph-" followed by the user's name, in $XDG_RUNTIME_DIR when set.
    static QString socketName();

    explicit SingleInstance(QString name = socketName(), QObject *parent = nullptr);

    enum class HandOff { handed, noInstance, failed };
    // Sends `paths` (possibly none) to a running instance. noInstance when
    // nobody listens (a stale socket is removed); failed when an instance is
    // there but the files could not be handed over.
    HandOff handOff(const std::vector<std::filesystem::path> &paths, int timeoutMs = 2000);

    // Becomes the running instance; false when the socket cannot be made.
    bool listen();

Q_SIGNALS:
    // A later launch's files, as one open event (empty: only raise the window).
    void received(const std::vector<std::filesystem::path> &paths);

private:
    void readConnection();

    QString name;
    QLocalServer *server = nullptr;
};
