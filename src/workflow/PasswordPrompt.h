#pragma once

#include <optional>
#include <string>

class Prompter;

// Asks for an encrypted document's password in a modal alert.
namespace PasswordPrompt {

// The text typed (empty included) after "OK"; nothing after "Cancel".
std::optional<std::string> ask(const std::string &name, bool retry, Prompter &prompter);

} // namespace PasswordPrompt
