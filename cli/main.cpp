#include "Companion.h"
#include "settings/Settings.h"

#include <QCoreApplication>
#include <QThread>

#include <iostream>

#include <malloc.h>

int main(int argc, char **argv)
{
    // A graphic is drawn in-process into buffers of tens of megabytes. glibc
    // would raise its mmap threshold after the first is freed and keep the
    // next ones in its heaps, one per thread, long after: over an archive the
    // companion grew to several times what one drawing needs. A fixed
    // threshold hands every large buffer back when it is freed.
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    mallopt(M_ARENA_MAX, 2);
    QCoreApplication app(argc, argv);
    const auto parsed =
        parseArguments(std::vector<std::string>(argv + 1, argv + argc), QThread::idealThreadCount());
    if (std::holds_alternative<HelpRequest>(parsed)) {
        std::cout << usageText();
        return 0;
    }
    if (const auto *usage = std::get_if<UsageError>(&parsed)) {
        std::cerr << "quillmorph-convert: " << usage->message << "\n\n" << usageText();
        return 2;
    }
    TerminalPasswordSource passwords;
    Companion companion(std::get<CompanionOptions>(parsed), Settings::shared(), passwords, std::cout);
    if (std::get<CompanionOptions>(parsed).dryRun)
        return companion.dryRun();
    QObject::connect(
        &companion, &Companion::finished, &app, [](int status) { QCoreApplication::exit(status); },
        Qt::QueuedConnection);
    companion.start();
    return app.exec();
}
