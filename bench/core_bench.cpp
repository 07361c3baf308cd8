#include "classify/InputFile.h"
#include "tools/ConversionTools.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <vector>

extern char **environ;

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// The peer: spawn /bin/true and wait for it, nothing else.
void bareSpawn()
{
    char program[] = "/bin/true";
    char *argv[] = {program, nullptr};
    pid_t pid;
    if (posix_spawn(&pid, program, nullptr, nullptr, argv, environ) == 0) {
        int status;
        waitpid(pid, &status, 0);
    }
}

void benchRunner(int runs)
{
    const auto bareStart = Clock::now();
    for (int i = 0; i < runs; ++i)
        bareSpawn();
    const double bare = secondsSince(bareStart) / runs;

    const auto runnerStart = Clock::now();
    for (int i = 0; i < runs; ++i)
        ConversionTools::run("/bin/true", {}, "true");
    const double runner = secondsSince(runnerStart) / runs;

    std::printf("tool runner: %.1f us per run of /bin/true (pipes, log lines, wait)\n", runner * 1e6);
    std::printf("bare spawn:  %.1f us per run of /bin/true (posix_spawn + waitpid)\n", bare * 1e6);
    std::printf("ratio runner/bare: %.2f over %d runs each\n\n", runner / bare, runs);
}

void benchClassification(const fs::path &corpus)
{
    std::vector<fs::path> files;
    for (const auto &entry : fs::recursive_directory_iterator(corpus))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    if (files.empty()) {
        std::printf("classification: no corpus files\n");
        return;
    }
    std::size_t classified = 0;
    const auto start = Clock::now();
    while (secondsSince(start) < 2.0) {
        for (const auto &file : files)
            (void)InputFile::classify(file);
        classified += files.size();
    }
    const double elapsed = secondsSince(start);
    std::printf("classification: %.0f files per second (%zu corpus files, %zu classifications in %.2f s)\n",
                classified / elapsed, files.size(), classified, elapsed);
}

} // namespace

int main(int argc, char **argv)
{
    // Keep the benchmark's log lines out of the user's log.
    const fs::path state = fs::temp_directory_path() / "quillmorph-bench-state";
    setenv("XDG_STATE_HOME", state.c_str(), 1);
    const int runs = argc > 1 ? std::atoi(argv[1]) : 1000;
    benchRunner(runs);
    const fs::path corpus = fs::path(QM_SOURCE_DIR) / ".." / "shared" / "corpus";
    if (fs::is_directory(corpus))
        benchClassification(corpus);
    else
        std::printf("classification: skipped, ../shared/corpus is not beside the checkout\n");
    fs::remove_all(state);
    return 0;
}
