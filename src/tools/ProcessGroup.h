#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

// Runs a program that may hang, in a process group of its own, so that
// ending it ends every process it started (LibreOffice is a shell script,
// a launcher and the office itself).
namespace ConversionTools {

struct GroupOutcome {
    std::string stdout;
    std::string stderr;
    int status = 0;         // the exit status, or the number of the signal that ended it
    bool signalled = false; // ended by a signal, ours or another's
    bool killed = false;    // ended by us because `shouldKill` said so
};

// Runs `executable` with stdin from /dev/null and both pipes drained.
// `shouldKill` is asked at least every `tick` while the program runs; when it
// returns true the whole group gets SIGKILL. Whatever the group leaves
// behind once its leader has exited is killed too, so no stray child keeps
// the pipes open. Logs the command line and the outcome like run().
// Throws PlatformError when the program cannot start.
GroupOutcome runAsGroup(const std::filesystem::path &executable, const std::vector<std::string> &args,
                        const std::string &label, const std::function<bool()> &shouldKill,
                        std::chrono::milliseconds tick = std::chrono::milliseconds(100));

} // namespace ConversionTools
