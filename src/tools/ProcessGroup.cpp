#include "ProcessGroup.h"

#include "support/Log.h"
#include "tools/Pipe.h"
#include "support/PlatformError.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace fs = std::filesystem;

namespace ConversionTools {
namespace {

// How long the pipes may stay open once the leader is gone and its group
// has been killed: only a process that left the group can hold them.
constexpr int lingeringTicks = 50;

class SpawnSetup {
public:
    SpawnSetup()
    {
        posix_spawn_file_actions_init(&files);
        posix_spawnattr_init(&attributes);
    }
    ~SpawnSetup()
    {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSetup(const SpawnSetup &) = delete;
    SpawnSetup &operator=(const SpawnSetup &) = delete;

    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
};

pid_t spawnInNewGroup(const fs::path &executable, const std::vector<std::string> &args, Pipe &out, Pipe &err)
{
    SpawnSetup setup;
    posix_spawn_file_actions_addopen(&setup.files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&setup.files, out.write, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&setup.files, err.write, STDERR_FILENO);
    posix_spawnattr_setflags(&setup.attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&setup.attributes, 0);

    std::string program = executable.string();
    std::vector<std::string> copies(args);
    std::vector<char *> argv{program.data()};
    for (auto &arg : copies)
        argv.push_back(arg.data());
    argv.push_back(nullptr);

    pid_t pid = 0;
    const int error =
        posix_spawn(&pid, executable.c_str(), &setup.files, &setup.attributes, argv.data(), environ);
    if (error != 0)
        throw PlatformError::fromErrno(error);
    return pid;
}

// True once the leader has exited; it stays a zombie (WNOWAIT), so its
// group id cannot be handed to another process before we kill the group.
bool leaderExited(pid_t pid)
{
    siginfo_t info{};
    return ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == pid;
}

void reap(pid_t pid, GroupOutcome &outcome)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            outcome.status = -1;
            return;
        }
    }
    if (WIFEXITED(status)) {
        outcome.status = WEXITSTATUS(status);
    } else if (WIFSIGNALED(status)) {
        outcome.status = WTERMSIG(status);
        outcome.signalled = true;
    }
}

std::string joined(const std::vector<std::string> &args)
{
    std::string line;
    for (const auto &arg : args)
        line += (line.empty() ? "" : " ") + arg;
    return line;
}

} // namespace

GroupOutcome runAsGroup(const fs::path &executable, const std::vector<std::string> &args,
                        const std::string &label, const std::function<bool()> &shouldKill,
                        std::chrono::milliseconds tick)
{
    Pipe out;
    Pipe err;
    Log::write("run " + label + ": " + joined(args));
    const pid_t pid = spawnInNewGroup(executable, args, out, err);
    out.closeWrite();
    err.closeWrite();

    GroupOutcome outcome;
    std::array<pollfd, 2> fds{pollfd{out.read, POLLIN, 0}, pollfd{err.read, POLLIN, 0}};
    int open = 2;
    bool leaderGone = false;
    int ticksSinceLeader = 0;
    while (open > 0 || !leaderGone) {
        if (::poll(fds.data(), fds.size(), static_cast<int>(tick.count())) < 0 && errno != EINTR)
            break;
        readReady(fds, {&outcome.stdout, &outcome.stderr}, open);
        if (!leaderGone && leaderExited(pid)) {
            leaderGone = true;
            ::kill(-pid, SIGKILL); // whatever it left running
        } else if (leaderGone && ++ticksSinceLeader > lingeringTicks) {
            break;
        }
        if (!leaderGone && !outcome.killed && shouldKill()) {
            outcome.killed = true;
            ::kill(-pid, SIGKILL);
        }
    }
    reap(pid, outcome);
    Log::write("run " + label + ": " + std::to_string(outcome.stdout.size()) + " bytes stdout, " +
               std::to_string(outcome.stderr.size()) + " bytes stderr, " +
               (outcome.killed ? std::string("killed") : "status " + std::to_string(outcome.status)));
    return outcome;
}

} // namespace ConversionTools
