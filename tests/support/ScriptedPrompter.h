#pragma once

#include "workflow/Prompter.h"
#include "app/Revealer.h"

#include <deque>
#include <functional>
#include <string>
#include <vector>

// Answers the workflow's alerts from a script and records what was shown.
class ScriptedPrompter : public Prompter {
public:
    struct Shown {
        Alert alert;
        std::string style() const
        {
            return alert.style == Alert::Style::warning ? "warning" : "informational";
        }
    };

    // Queued answers, taken in order; an alert with no answer left is closed (-1).
    void answer(int button, std::string text = {}, bool suppressed = false)
    {
        answers.push_back({button, suppressed, std::move(text)});
    }
    // Runs before the next alert is answered (e.g. to change a setting meanwhile).
    std::function<void(const Alert &)> onAlert;

    Answer run(const Alert &alert) override
    {
        shown.push_back({alert});
        if (onAlert)
            onAlert(alert);
        if (answers.empty())
            return {};
        Answer next = answers.front();
        answers.pop_front();
        return next;
    }

    void chooseFiles(std::function<void(std::vector<std::filesystem::path>)> completion) override
    {
        ++panelsOffered;
        panelCompletion = std::move(completion);
    }

    std::vector<Shown> shown;
    int panelsOffered = 0;
    std::function<void(std::vector<std::filesystem::path>)> panelCompletion;

private:
    std::deque<Answer> answers;
};

class RecordingRevealer : public Revealer {
public:
    void reveal(const std::vector<std::filesystem::path> &files, quint64) override
    {
        calls.push_back(files);
        revealed.insert(revealed.end(), files.begin(), files.end());
    }
    std::vector<std::filesystem::path> revealed;
    std::vector<std::vector<std::filesystem::path>> calls; // one per reveal
};
