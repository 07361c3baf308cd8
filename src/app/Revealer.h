#pragma once

#include <QObject>
#include <QUrl>

#include <filesystem>
#include <functional>

// Shows a finished output to the user in their file manager.
class Revealer {
public:
    virtual ~Revealer() = default;
    virtual void reveal(const std::filesystem::path &file) = 0;
};

// Asks the desktop's file manager, over D-Bus, to show the file selected
// (org.freedesktop.FileManager1.ShowItems); when no file manager answers,
// opens the folder that holds the file instead.
class FileManagerRevealer : public QObject, public Revealer {
    Q_OBJECT
public:
    using FolderOpener = std::function<void(const QUrl &folder)>;

    // `openFolder` is the fallback; by default the desktop's URL handler.
    explicit FileManagerRevealer(FolderOpener openFolder = {}, QObject *parent = nullptr);

    void reveal(const std::filesystem::path &file) override;

private:
    FolderOpener openFolder;
};
