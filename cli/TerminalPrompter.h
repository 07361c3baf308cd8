#pragma once

#include "Terminal.h"
#include "workflow/Prompter.h"

#include <functional>
#include <optional>
#include <string>

// The companion's answers to the workflow's questions: what a person would
// choose in the app comes from the command line (--replace, --try-unknown,
// --password) or the terminal, and what the app shows as a warning becomes the
// file's failure line.
class TerminalPrompter : public Prompter {
public:
    struct Choices {
        bool replace = false;
        bool skipExisting = false;
        bool tryUnknown = false;
        std::optional<std::string> password;
    };
    // `failed` and `skipped` get the file's name and the reason.
    using Report = std::function<void(const std::string &, const std::string &)>;

    TerminalPrompter(Choices choices, PasswordSource &passwords, Report failed, Report skipped);

    Answer run(const Alert &alert) override;
    void chooseFiles(std::function<void(std::vector<std::filesystem::path>)> completion) override;

private:
    Choices choices;
    PasswordSource &passwords;
    Report failed;
    Report skipped;
};
