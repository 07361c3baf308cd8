#pragma once

#include "Terminal.h"
#include "ProgressLine.h"
#include "Report.h"
#include "Shard.h"
#include "TerminalPrompter.h"
#include "engine/Converter.h"
#include "workflow/Intake.h"
#include "classify/InputFile.h"
#include "tools/OfficeImport.h"

#include <QObject>

#include <filesystem>
#include <optional>
#include <ostream>
#include <chrono>
#include <map>
#include <memory>
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
    // The settings' choices, overridden for this run (raw values: "odt", "png", "wp5", "mac", ...).
    std::optional<std::string> documentTarget, graphicTarget, wordPerfectTarget, rtfCharset;
    // Outputs go here, mirroring each input's path below the argument it was found under.
    std::optional<std::filesystem::path> outputDir;
    // An output newer than its input is left alone, and counted as up to date.
    bool skipExisting = false;
    // Only this run's share of the files, so N machines split an archive with no coordinator.
    std::optional<Shard> shard;
    // One JSON line per input file, written as each finishes.
    std::optional<std::filesystem::path> report;
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
    Companion(CompanionOptions options, Settings &settings, PasswordSource &passwords, std::ostream &out);

    // Starts the work; `finished` is emitted with the exit status.
    void start();

    // One line per file of what a conversion would do, then returns the status.
    int dryRun();

Q_SIGNALS:
    void finished(int status);

private:
    using Item = Intake::Examined;

    std::vector<std::filesystem::path> collectFiles();
    std::filesystem::path placeOutput(const std::filesystem::path &input) const;
    std::filesystem::path dryRunDestination(const Item &item) const;
    std::string describeJob(const Item &item) const;

    void startNext();
    void launch(const Intake::Start &start);
    void complete(const Intake::Start &start, const std::exception_ptr &error,
                  const Converter::Losses &losses);
    void recordFailure(const std::string &name, const std::string &reason);
    void recordSkip(const std::string &name, const std::string &reason);
    // `mustShow` lines are printed even while a terminal shows the progress line.
    void progress(const std::string &line, bool mustShow = false);
    void finishIfDone();
    void reportFile(const std::filesystem::path &input, Report::Status status, const std::string &reason,
                    const std::optional<std::filesystem::path> &output, const std::string &job,
                    const Converter::Losses &losses = {});

    // Office documents: LibreOffice converts them in batches, ahead of their turn.
    void startOfficeBatch();
    void prefetchOffice();
    void openNext(const std::filesystem::path &input);

    CompanionOptions options;
    Settings &settings;
    std::ostream &out;
    TerminalPrompter prompter;
    Intake intake;

    std::vector<std::filesystem::path> files;
    std::map<std::filesystem::path, std::filesystem::path> rootOf; // the argument each file was found under
    std::size_t next = 0;
    int running = 0;
    std::size_t done = 0;
    int converted = 0;
    int lossy = 0; // of those converted
    std::vector<std::string> failures;
    std::vector<std::string> skips;
    std::unique_ptr<Report::Writer> reportWriter;
    std::optional<ProgressLine> progressLine;
    bool onTerminal = false;
    std::filesystem::path reporting; // the file the intake is taking up, whose outcome a prompter reports
    std::map<std::filesystem::path, std::chrono::steady_clock::time_point> started;

    std::unique_ptr<ConversionTools::OfficeBatchImport> officeBatch;
    std::size_t lookedAhead = 0; // files before this one were considered for prefetching
    bool launched = false;       // the file being opened got a job
};
