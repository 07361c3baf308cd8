#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// Every modal question the workflow asks goes through this one interface:
// the app answers it with real widgets, tests with a script.
class Prompter {
public:
    struct Alert {
        enum class Style { warning, informational };
        // What the question is about, for a prompter that answers without a person
        // (the companion answers clash and "Try anyway" questions from its options).
        enum class Topic { other, refusal, unknownKind, clash, password, notice };
        Style style = Style::warning;
        Topic topic = Topic::other;
        std::string file; // the name of the file the question is about, when there is one
        std::string message;
        std::string informative;
        std::vector<std::string> buttons; // in order; the first is the default
        std::string suppressionTitle;     // a check box under the text, when not empty
        bool passwordField = false;       // a masked field, focused when the alert opens
    };

    struct Answer {
        int button = -1;         // index into Alert::buttons; -1 when closed another way
        bool suppressed = false; // the check box's state
        std::string text{};      // the password field's text
    };

    virtual ~Prompter() = default;

    // Shows the alert and returns when the user has answered.
    virtual Answer run(const Alert &alert) = 0;

    // Offers the open panel without blocking; `completion` gets the chosen
    // files, or none when the user cancelled.
    virtual void chooseFiles(std::function<void(std::vector<std::filesystem::path>)> completion) = 0;
};
