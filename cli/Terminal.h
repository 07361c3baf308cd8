#pragma once

#include <optional>
#include <string>

// Where the companion gets a document's password.
class PasswordSource {
public:
    virtual ~PasswordSource() = default;
    // Nothing means: skip this file.
    virtual std::optional<std::string> ask(const std::string &name, bool retry) = 0;
};

// Asks on the terminal without echo when standard input is one; otherwise
// reads one line of standard input. End of input (Ctrl-D) skips the file.
class TerminalPasswordSource : public PasswordSource {
public:
    std::optional<std::string> ask(const std::string &name, bool retry) override;
};
