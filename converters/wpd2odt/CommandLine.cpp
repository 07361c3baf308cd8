#include "CommandLine.h"

namespace {

const std::string passwordOption = "--password";

} // namespace

const char *CommandLine::usage()
{
    return "usage: wpd2odt [--stdout] [--password PASSWORD] SOURCE [DEST]";
}

CommandLine CommandLine::parse(const std::vector<std::string> &arguments)
{
    CommandLine line;
    std::vector<std::string> paths;
    bool optionsEnded = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string &argument = arguments[i];
        if (optionsEnded || argument.empty() || argument[0] != '-' || argument == "-") {
            paths.push_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else if (argument == "--help" || argument == "-h") {
            line.helpRequested = true;
        } else if (argument == "--stdout") {
            line.toStandardOutput = true;
        } else if (argument == passwordOption) {
            if (++i == arguments.size())
                throw UsageError("--password needs a value");
            line.password = arguments[i];
        } else if (argument.starts_with(passwordOption + "=")) {
            line.password = argument.substr(passwordOption.size() + 1);
        } else {
            throw UsageError("unknown option " + argument);
        }
    }
    if (line.helpRequested)
        return line;

    // An empty password is what a caller passes when it has none, not a password to try.
    if (line.password && line.password->empty())
        line.password.reset();

    const size_t wanted = line.toStandardOutput ? 1 : 2;
    if (paths.size() < wanted)
        throw UsageError(line.toStandardOutput ? "missing SOURCE" : "missing SOURCE or DEST");
    if (paths.size() > wanted)
        throw UsageError(line.toStandardOutput ? "DEST cannot be given with --stdout" : "too many arguments");
    line.source = paths[0];
    if (!line.toStandardOutput)
        line.destination = paths[1];
    return line;
}
