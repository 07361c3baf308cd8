#pragma once

#include "Terminal.h"
#include "workflow/JobPlan.h"
#include "classify/InputFile.h"

#include <QObject>

#include <filesystem>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <variant>
#include <vector>

class Settings;

struct CompanionOptions {
    std::vector<std::filesystem::path> inputs;
    bool dryRun = false;
    bool replace = false;
    bool tryUnknown = false;
    std::optional<std::string> password;
    int jobs = 1;
};

struct UsageError {
    std::string message;
};
struct HelpRequest {};

// Reads the command line; `defaultJobs` is used when --jobs is not given.
std::variant<CompanionOptions, UsageError, HelpRequest> parseArguments(const std::vector<std::string> &args,
                                                                        int defaultJobs);
std::string usageText();

// quillmorph-convert: the app's classifier, settings, naming and engine,
// driven from the command line. Runs on the main thread's event loop.
class Companion : public QObject {
    Q_OBJECT
public:
    Companion(CompanionOptions options, const Settings &settings, PasswordSource &passwords, std::ostream &out);

    // Starts the work; `finished` is emitted with the exit status.
    void start();

    // One line per file of what a conversion would do, then returns the status.
    int dryRun();

Q_SIGNALS:
    void finished(int status);

private:
    struct Item {
        InputFile file;
        std::optional<JobPlan> plan;
        std::string problem; // why the file cannot be converted, when it cannot
        bool classified = false;
    };

    std::vector<std::filesystem::path> collectFiles();
    Item prepare(const std::filesystem::path &path);
    std::filesystem::path destinationFor(const Item &item) const;
    std::string describeJob(const Item &item) const;

    void startNext();
    void launch(const Job &job, const std::filesystem::path &to, const std::string &name, bool passwordGiven);
    void complete(const std::filesystem::path &to, const std::string &name, const std::exception_ptr &error,
                  const Job &job, bool passwordGiven);
    void recordFailure(const std::string &name, const std::string &reason);
    void recordSkip(const std::string &name, const std::string &reason);
    void progress(const std::string &line);
    void finishIfDone();

    CompanionOptions options;
    const Settings &settings;
    PasswordSource &passwords;
    std::ostream &out;

    std::vector<std::filesystem::path> files;
    std::size_t next = 0;
    int running = 0;
    std::size_t done = 0;
    int converted = 0;
    std::vector<std::string> failures;
    std::vector<std::string> skips;
    std::set<std::filesystem::path> claimed; // outputs of this run, so two inputs never share one
};
