#include "AppDelegate.h"
#include "MainWindow.h"
#include "Revealer.h"
#include "SingleInstance.h"
#include "WidgetPrompter.h"
#include "settings/Settings.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>

namespace fs = std::filesystem;

int main(int argc, char **argv)
{
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i)
        files.push_back(fs::absolute(argv[i]));

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quillmorph"));
    QApplication::setDesktopFileName(QStringLiteral("quillmorph"));
    QApplication::setQuitOnLastWindowClosed(false);

    SingleInstance instance;
    switch (instance.handOff(files)) {
    case SingleInstance::HandOff::handed:
        return 0;
    case SingleInstance::HandOff::failed:
        std::fprintf(stderr, "quillmorph: Quillmorph is running but did not take the files; try again.\n");
        return 1;
    case SingleInstance::HandOff::noInstance:
        break;
    }
    instance.listen();

    WidgetPrompter prompter;
    FileManagerRevealer revealer;
    AppDelegate delegate(prompter, revealer, Settings::shared());
    QObject::connect(&delegate, &AppDelegate::readyToQuit, &app, &QApplication::quit, Qt::QueuedConnection);
    QObject::connect(&instance, &SingleInstance::received, &delegate,
                     [&delegate](const std::vector<fs::path> &paths) {
                         if (MainWindow *window = delegate.mainWindow()) {
                             window->show();
                             window->raise();
                             window->activateWindow();
                         }
                         if (!paths.empty())
                             delegate.applicationOpen(paths);
                     });

    // The launch's files form the first open event, ahead of the open panel.
    if (!files.empty())
        QTimer::singleShot(0, &delegate, [&delegate, files] { delegate.applicationOpen(files); });
    delegate.applicationDidFinishLaunching();
    return app.exec();
}
