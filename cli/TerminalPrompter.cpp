#include "TerminalPrompter.h"

TerminalPrompter::TerminalPrompter(Choices choices, PasswordSource &passwords, Report failed, Report skipped)
    : choices(std::move(choices)), passwords(passwords), failed(std::move(failed)),
      skipped(std::move(skipped))
{
}

Prompter::Answer TerminalPrompter::run(const Alert &alert)
{
    using Topic = Alert::Topic;
    constexpr int first = 0;
    constexpr int second = 1;
    switch (alert.topic) {
    case Topic::refusal:
        failed(alert.file,
               alert.informative.empty() ? alert.message : alert.message + " " + alert.informative);
        return {.button = first};
    case Topic::unknownKind:
        if (choices.tryUnknown)
            return {.button = first};
        skipped(alert.file, "unknown type");
        return {.button = second};
    case Topic::clash:
        // Keep Both, or Replace when asked for on the command line; an output that is
        // older than its input, under --skip-existing, is made again in its place.
        return {.button = choices.replace || choices.skipExisting ? second : first};
    case Topic::password: {
        const bool retry = alert.style == Alert::Style::warning;
        auto password = choices.password ? choices.password : passwords.ask(alert.file, retry);
        if (!password) {
            skipped(alert.file, "no password given");
            return {.button = second};
        }
        return {.button = first, .suppressed = false, .text = *password};
    }
    case Topic::notice:
    case Topic::other:
        break;
    }
    return {.button = first};
}

void TerminalPrompter::chooseFiles(std::function<void(std::vector<std::filesystem::path>)> completion)
{
    completion({});
}
