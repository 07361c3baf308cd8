#include "Companion.h"
#include "settings/Settings.h"

#include <QCoreApplication>
#include <QThread>

#include <iostream>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const auto parsed = parseArguments(std::vector<std::string>(argv + 1, argv + argc), QThread::idealThreadCount());
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
    QObject::connect(&companion, &Companion::finished, &app, [](int status) { QCoreApplication::exit(status); },
                     Qt::QueuedConnection);
    companion.start();
    return app.exec();
}
