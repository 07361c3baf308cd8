#include "PasswordPrompt.h"

#include "workflow/Prompter.h"

namespace PasswordPrompt {

std::optional<std::string> ask(const std::string &name, bool retry, Prompter &prompter)
{
    Prompter::Alert alert;
    alert.message = name + " is encrypted.";
    alert.informative = retry ? "Incorrect password entered.\n\nPlease enter the correct password:"
                              : "Please enter the password:";
    alert.style = retry ? Prompter::Alert::Style::warning : Prompter::Alert::Style::informational;
    alert.buttons = {"OK", "Cancel"};
    alert.passwordField = true;
    alert.topic = Prompter::Alert::Topic::password;
    alert.file = name;
    const Prompter::Answer answer = prompter.run(alert);
    if (answer.button != 0)
        return std::nullopt;
    return answer.text;
}

} // namespace PasswordPrompt
