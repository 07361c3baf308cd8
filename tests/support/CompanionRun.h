#pragma once

#include "Companion.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

// Runs the companion on these arguments to its end and returns its exit
// status; -1 when the arguments are refused or it never finishes.
inline int runCompanion(const std::vector<std::string> &args, Settings &settings, PasswordSource &passwords,
                        std::ostream &out, int defaultJobs = 2, double seconds = 60)
{
    const auto parsed = parseArguments(args, defaultJobs);
    if (!std::holds_alternative<CompanionOptions>(parsed)) {
        ADD_FAILURE() << "arguments refused";
        return -1;
    }
    Companion companion(std::get<CompanionOptions>(parsed), settings, passwords, out);
    if (std::get<CompanionOptions>(parsed).dryRun)
        return companion.dryRun();
    int status = -1;
    QObject::connect(&companion, &Companion::finished, [&](int s) { status = s; });
    companion.start();
    if (!testing_support::waitUntil([&] { return status != -1; }, seconds))
        ADD_FAILURE() << "the companion never finished";
    return status;
}

// Answers the companion's password questions from a script, noting each question ("name" or
// "name (retry)"); no answer left is no password.
class ScriptedPasswords : public PasswordSource {
public:
    explicit ScriptedPasswords(std::deque<std::optional<std::string>> answers) : answers(std::move(answers))
    {
    }
    std::optional<std::string> ask(const std::string &name, bool retry) override
    {
        asked.push_back(name + (retry ? " (retry)" : ""));
        if (answers.empty())
            return std::nullopt;
        auto answer = answers.front();
        answers.pop_front();
        return answer;
    }
    long retries() const
    {
        return std::count_if(asked.begin(), asked.end(),
                             [](const std::string &q) { return q.ends_with(" (retry)"); });
    }
    std::vector<std::string> asked;

private:
    std::deque<std::optional<std::string>> answers;
};
