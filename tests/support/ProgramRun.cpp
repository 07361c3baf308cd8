#include "ProgramRun.h"

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

extern char **environ;

ProgramRun ProgramRun::of(const std::vector<std::string> &argv, const std::string &cwd)
{
    // What our converters write does not follow the clock in tests: a WordPerfect 5.1 file holds
    // the time it was made, and wp2latex's reading of one file changed with the day's digits.
    setenv("SOURCE_DATE_EPOCH", "946684800", 0); // 2000-01-01 00:00 UTC
    int outPipe[2], errPipe[2];
    if (pipe(outPipe) != 0 || pipe(errPipe) != 0)
        throw std::runtime_error("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], 1);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], 2);
    for (int fd : {outPipe[0], outPipe[1], errPipe[0], errPipe[1]})
        posix_spawn_file_actions_addclose(&actions, fd);
    if (!cwd.empty())
        posix_spawn_file_actions_addchdir_np(&actions, cwd.c_str());
    std::vector<char *> args;
    args.reserve(argv.size() + 1);
    for (const std::string &arg : argv)
        args.push_back(const_cast<char *>(arg.c_str()));
    args.push_back(nullptr);

    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, args[0], &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(outPipe[1]);
    close(errPipe[1]);

    ProgramRun run;
    // Both pipes are drained together: a child blocked on a full stderr pipe would never end.
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    std::string *sinks[2] = {&run.out, &run.err};
    for (int open = 2; open > 0 && spawned == 0;) {
        poll(fds, 2, -1);
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0)
                continue;
            char buffer[65536];
            const ssize_t count = read(fds[i].fd, buffer, sizeof buffer);
            if (count > 0) {
                sinks[i]->append(buffer, static_cast<size_t>(count));
            } else {
                fds[i].fd = -1;
                --open;
            }
        }
    }
    close(outPipe[0]);
    close(errPipe[0]);
    if (spawned != 0)
        throw std::runtime_error("cannot start " + argv[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return run;
}

ProgramRun ProgramRun::libreOffice(const std::string &soffice, const std::string &profileDir,
                                   const std::string &format, const std::vector<std::string> &inputs,
                                   const std::string &outdir, const std::string &inputFilter)
{
    std::vector<std::string> argv{soffice, "-env:UserInstallation=file://" + profileDir, "--headless",
                                  "--norestore"};
    if (!inputFilter.empty())
        argv.push_back("--infilter=" + inputFilter);
    argv.insert(argv.end(), {"--convert-to", format, "--outdir", outdir});
    argv.insert(argv.end(), inputs.begin(), inputs.end());
    return of(argv);
}
