#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// The options of one wpd2odt run, as given on the command line.
class CommandLine {
public:
    class UsageError : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    // Throws UsageError when the arguments do not form a valid command.
    static CommandLine parse(const std::vector<std::string> &arguments);
    static const char *usage();

    bool helpRequested = false;
    bool toStandardOutput = false;
    std::optional<std::string> password;
    std::string source;
    std::string destination;
};
