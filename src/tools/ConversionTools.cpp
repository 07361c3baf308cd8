#include "ConversionTools.h"

#include "support/ConversionError.h"
#include "support/Log.h"
#include "tools/Pipe.h"
#include "support/PlatformError.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace fs = std::filesystem;

namespace ConversionTools {
namespace {

std::mutex overrideMutex;
fs::path overriddenFolder;

std::string commandLine(const std::string &label, const std::vector<std::string> &args)
{
    std::string line = "run " + label + ": ";
    bool maskNext = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (i > 0)
            line += ' ';
        // Passwords never reach the log.
        line += maskNext ? std::string("********") : args[i];
        maskNext = args[i] == "--password";
    }
    return line;
}

struct SpawnActions {
    posix_spawn_file_actions_t actions;
    SpawnActions() { posix_spawn_file_actions_init(&actions); }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&actions); }
};

pid_t spawn(const fs::path &executable, const std::vector<std::string> &args, Pipe &out, Pipe &err)
{
    SpawnActions files;
    posix_spawn_file_actions_addopen(&files.actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files.actions, out.write, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files.actions, err.write, STDERR_FILENO);

    std::vector<char *> argv;
    std::string program = executable.string();
    argv.push_back(program.data());
    std::vector<std::string> copies(args);
    for (auto &arg : copies)
        argv.push_back(arg.data());
    argv.push_back(nullptr);

    pid_t pid = 0;
    const int error = posix_spawn(&pid, executable.c_str(), &files.actions, nullptr, argv.data(), environ);
    if (error != 0)
        throw PlatformError::fromErrno(error);
    return pid;
}

// Drains both pipes in one loop, so a child that fills one of them while we
// wait on the other never stalls.
void drain(Pipe &out, Pipe &err, std::string &outBytes, std::string &errBytes)
{
    std::array<pollfd, 2> fds{pollfd{out.read, POLLIN, 0}, pollfd{err.read, POLLIN, 0}};
    int open = 2;
    while (open > 0) {
        if (::poll(fds.data(), fds.size(), -1) < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        readReady(fds, {&outBytes, &errBytes}, open);
    }
}

int waitForExit(pid_t pid)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    if (WIFSIGNALED(status))
        return WTERMSIG(status);
    return status;
}

} // namespace

fs::path programPath()
{
    // /proc/self/exe works before (and without) any QCoreApplication.
    static const fs::path path = [] {
        std::error_code error;
        const fs::path self = fs::read_symlink("/proc/self/exe", error);
        return error ? fs::path() : self;
    }();
    return path;
}

bool isExecutableFile(const fs::path &path)
{
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

fs::path programFolder()
{
    {
        std::lock_guard lock(overrideMutex);
        if (!overriddenFolder.empty())
            return overriddenFolder;
    }
    return programPath().parent_path();
}

void overrideProgramFolder(const fs::path &folder)
{
    std::lock_guard lock(overrideMutex);
    overriddenFolder = folder;
}

namespace {

std::optional<fs::path> resourcesIn(const fs::path &folder)
{
    std::error_code error;
    const fs::path resources = (folder / ".." / "lib" / "quillmorph").lexically_normal();
    if (fs::is_directory(resources, error))
        return resources;
    return std::nullopt;
}

} // namespace

std::optional<fs::path> resourcesFolder()
{
    return resourcesIn(programFolder());
}

std::optional<fs::path> toolURL(const std::string &name, const fs::path &folder)
{
    std::vector<fs::path> candidates;
    if (const auto resources = resourcesIn(folder)) {
        candidates.push_back(*resources / "Files" / name);
        candidates.push_back(*resources / name);
    }
    candidates.push_back(folder / "Resources" / "Files" / name);
    for (const auto &candidate : candidates) {
        if (isExecutableFile(candidate))
            return candidate.lexically_normal();
    }
    return std::nullopt;
}

std::optional<fs::path> toolURL(const std::string &name)
{
    return toolURL(name, programFolder());
}

std::string runBundled(const std::string &name, const std::vector<std::string> &args)
{
    return runBundledCapturing(name, args).stdout;
}

Output runBundledCapturing(const std::string &name, const std::vector<std::string> &args)
{
    const auto tool = toolURL(name);
    if (!tool)
        throw ConversionError::toolMissing(name);
    return run(*tool, args, name);
}

Output run(const fs::path &executable, const std::vector<std::string> &args, const std::string &label)
{
    Pipe out;
    Pipe err;
    Log::write(commandLine(label, args));
    const pid_t pid = spawn(executable, args, out, err);
    out.closeWrite();
    err.closeWrite();

    Output output;
    drain(out, err, output.stdout, output.stderr);
    const int status = waitForExit(pid);
    Log::write("run " + label + ": " + std::to_string(output.stdout.size()) + " bytes stdout, " +
               std::to_string(output.stderr.size()) + " bytes stderr, status " + std::to_string(status));
    return output;
}

} // namespace ConversionTools
