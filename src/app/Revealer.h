#pragma once

#include <QObject>
#include <QUrl>

#include <filesystem>
#include <functional>
#include <set>
#include <utility>
#include <vector>

// Shows finished outputs to the user in their file manager.
class Revealer {
public:
    virtual ~Revealer() = default;
    // Finished files of one open event (`event`; 0 for none): each folder is
    // shown once, with its files selected.
    virtual void reveal(const std::vector<std::filesystem::path> &files, quint64 event) = 0;
};

// Asks the desktop's file manager, over D-Bus, to show the files selected
// (org.freedesktop.FileManager1.ShowItems, one call per folder); when no file
// manager answers, opens each folder that holds them instead, once.
class FileManagerRevealer : public QObject, public Revealer {
    Q_OBJECT
public:
    using FolderOpener = std::function<void(const QUrl &folder)>;

    // `openFolder` is the fallback; by default the desktop's URL handler.
    explicit FileManagerRevealer(FolderOpener openFolder = {}, QObject *parent = nullptr);

    void reveal(const std::vector<std::filesystem::path> &files, quint64 event) override;

private:
    void showItems(const QUrl &folder, const QStringList &uris, bool mayOpen);

    FolderOpener openFolder;
    // Folders the fallback has opened for an event: each at most once.
    std::set<std::pair<quint64, QString>> opened;
};
