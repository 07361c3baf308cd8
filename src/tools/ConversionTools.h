#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Finds the converters shipped with Quillmorph and runs programs to their end.
// Every call is synchronous and belongs on a worker thread.
namespace ConversionTools {

struct Output {
    std::string stdout;
    std::string stderr;
};

// A regular file the user may execute.
bool isExecutableFile(const std::filesystem::path &path);

// The first executable of: <resources>/Files/<name>, <resources>/<name>,
// <program folder>/Resources/Files/<name>. The resources folder is
// <program folder>/../lib/quillmorph when that folder exists.
std::optional<std::filesystem::path> toolURL(const std::string &name);

// The same search from another program folder (tests, the install layout).
std::optional<std::filesystem::path> toolURL(const std::string &name,
                                             const std::filesystem::path &programFolder);

// <program folder>/../lib/quillmorph when that folder exists (an installed
// program); a program in the build tree has none.
std::optional<std::filesystem::path> resourcesFolder();

// The real path of the running executable.
std::filesystem::path programPath();

// The folder of the running executable (its real path), unless overridden.
std::filesystem::path programFolder();

// Makes toolURL search as if the program lived in `folder`; empty restores
// the real one. For tests that ship their own fake tools.
void overrideProgramFolder(const std::filesystem::path &folder);

// Runs the named tool and returns its standard output whatever its status.
// Throws ConversionError::toolMissing(name), or PlatformError when it cannot start.
std::string runBundled(const std::string &name, const std::vector<std::string> &args);

// The same, with both outputs: our converters say on standard error what
// they could not carry.
Output runBundledCapturing(const std::string &name, const std::vector<std::string> &args);

// Runs a program with stdin from /dev/null, both pipes drained together, and
// logs the command line and the byte counts and exit status. A program ended
// by a signal logs that signal's number as its status.
Output run(const std::filesystem::path &executable, const std::vector<std::string> &args,
           const std::string &label);

} // namespace ConversionTools
