#include "Companion.h"

#include "workflow/Wording.h"
#include "destination/Destination.h"
#include "support/ConversionError.h"
#include "engine/Converter.h"
#include "engine/Job.h"
#include "settings/Settings.h"
#include "support/Log.h"
#include "support/PlatformError.h"

#include <algorithm>
#include <iostream>
#include <charconv>

namespace fs = std::filesystem;

std::string usageText()
{
    return R"(Usage: quillmorph-convert [OPTIONS] FILE|FOLDER...

Converts WordPerfect files and office documents beside the originals, with
the same choices as the Quillmorph application (its Settings window):
WordPerfect documents become ODT or RTF, WordPerfect graphics PNG or SVG,
OpenDocument and office documents WordPerfect 6 or 5.1. Folders are walked
recursively.

Options:
  -n, --dry-run         print, for each file, what it is and what would be made
                        of it (path, kind, WordPerfect version, encrypted, WP6,
                        job and output name), and convert nothing
      --replace         overwrite an existing output file; by default both are
                        kept and the new one gets a numbered name ("Letter (1).odt")
      --password WORD   password for encrypted WordPerfect documents; without it
                        the password is asked on the terminal (Ctrl-D skips the file)
      --try-unknown     convert files of unknown type as WordPerfect documents
                        (they are skipped otherwise)
      --output-dir DIR  write the outputs into DIR, mirroring each file's path
                        below the argument it was found under; the inputs'
                        folders are never written to
      --skip-existing   leave a file whose output exists and is newer than it
                        (counted as skipped, "up to date"); an older output is
                        replaced, so a repeated run makes no numbered copies
      --report FILE     append one JSON line per input file to FILE as each
                        finishes (path, size, SHA-256, kind, job, output, status)
      --shard K/N       take only shard K of N of the files (a stable hash of
                        each path below its argument), so N machines given the
                        same arguments split an archive exactly
      --document-target odt|rtf       --graphic-target png|svg
      --wordperfect-target wp6|wp5    --rtf-charset ansi|mac
                        override the Settings window's choice for this run
  -j, --jobs N          convert N files at a time (default: the number of cores)
  -h, --help            show this text

A file converted with something its output could not carry (a picture that
could not be read, a character the chosen charset lacks) gets the line
"NAME → OUTPUT: converted, with losses: WHAT".

Exit status: 0 when every file was converted (or skipped), 1 when any failed,
2 for a usage error.
)";
}

namespace {

bool parsePositive(const std::string &text, int &value)
{
    const char *end = text.data() + text.size();
    const auto [ptr, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && ptr == end && value > 0;
}

// "--name=value" or "--name value"; advances `i` past what it used.
std::optional<std::string> optionValue(const std::vector<std::string> &args, std::size_t &i,
                                       const std::string &name, const std::string &shortName)
{
    const std::string &arg = args[i];
    if (arg.rfind(name + "=", 0) == 0)
        return arg.substr(name.size() + 1);
    if (arg == name || (!shortName.empty() && arg == shortName)) {
        if (i + 1 >= args.size())
            throw UsageError{arg + " needs a value"};
        return args[++i];
    }
    return std::nullopt;
}

std::string oneOf(const std::string &value, const std::string &option,
                  std::initializer_list<const char *> choices)
{
    std::string list;
    for (const char *choice : choices) {
        if (value == choice)
            return value;
        list += (list.empty() ? "" : " or ") + std::string(choice);
    }
    throw UsageError{option + " takes " + list + ", not \u201C" + value + "\u201D"};
}

std::string yesNo(bool value)
{
    return value ? "yes" : "no";
}

} // namespace

std::variant<CompanionOptions, UsageError, HelpRequest> parseArguments(const std::vector<std::string> &args,
                                                                       int defaultJobs)
{
    CompanionOptions options;
    options.jobs = std::max(1, defaultJobs);
    bool onlyFiles = false;
    try {
        for (std::size_t i = 0; i < args.size(); ++i) {
            const std::string &arg = args[i];
            if (onlyFiles || arg.empty() || arg[0] != '-' || arg == "-") {
                options.inputs.push_back(fs::absolute(arg));
            } else if (arg == "--") {
                onlyFiles = true;
            } else if (arg == "-h" || arg == "--help") {
                return HelpRequest{};
            } else if (arg == "-n" || arg == "--dry-run") {
                options.dryRun = true;
            } else if (arg == "--replace") {
                options.replace = true;
            } else if (arg == "--try-unknown") {
                options.tryUnknown = true;
            } else if (arg == "--skip-existing") {
                options.skipExisting = true;
            } else if (auto shard = optionValue(args, i, "--shard", "")) {
                options.shard = Shard::parse(*shard);
                if (!options.shard)
                    return UsageError{"--shard needs K/N with 1 \u2264 K \u2264 N, not \u201C" + *shard +
                                      "\u201D"};
            } else if (auto report = optionValue(args, i, "--report", "")) {
                options.report = fs::absolute(*report);
            } else if (auto dir = optionValue(args, i, "--output-dir", "")) {
                options.outputDir = fs::absolute(*dir);
            } else if (auto target = optionValue(args, i, "--document-target", "")) {
                options.documentTarget = oneOf(*target, "--document-target", {"odt", "rtf"});
            } else if (auto target = optionValue(args, i, "--graphic-target", "")) {
                options.graphicTarget = oneOf(*target, "--graphic-target", {"png", "svg"});
            } else if (auto target = optionValue(args, i, "--wordperfect-target", "")) {
                options.wordPerfectTarget = oneOf(*target, "--wordperfect-target", {"wp6", "wp5"});
            } else if (auto charset = optionValue(args, i, "--rtf-charset", "")) {
                options.rtfCharset = oneOf(*charset, "--rtf-charset", {"ansi", "mac"});
            } else if (auto password = optionValue(args, i, "--password", "")) {
                options.password = *password;
            } else if (auto jobs = optionValue(args, i, "--jobs", "-j")) {
                if (!parsePositive(*jobs, options.jobs))
                    return UsageError{"--jobs needs a whole number of at least 1, not \u201C" + *jobs +
                                      "\u201D"};
            } else {
                return UsageError{"unknown option " + arg};
            }
        }
    } catch (const UsageError &error) {
        return error;
    }
    if (options.inputs.empty())
        return UsageError{"no files given"};
    return options;
}

Companion::Companion(CompanionOptions options, Settings &settings, PasswordSource &passwords,
                     std::ostream &out)
    : options(std::move(options)), settings(settings), out(out),
      prompter(
          {this->options.replace, this->options.skipExisting, this->options.tryUnknown,
           this->options.password},
          passwords,
          [this](const std::string &name, const std::string &reason) { recordFailure(name, reason); },
          [this](const std::string &name, const std::string &reason) { recordSkip(name, reason); }),
      intake(prompter, settings, [this](const Intake::Start &job) { launch(job); })
{
    const std::pair<const std::optional<std::string> &, const QString &> overrides[] = {
        {this->options.documentTarget, Settings::documentTargetKey},
        {this->options.graphicTarget, Settings::graphicTargetKey},
        {this->options.wordPerfectTarget, Settings::wordPerfectTargetKey},
        {this->options.rtfCharset, Settings::rtfCharsetKey},
    };
    for (const auto &[value, key] : overrides)
        if (value)
            settings.overrideForThisRun(key, QString::fromStdString(*value));
    if (this->options.outputDir)
        intake.placeOutput = [this](const fs::path &input) { return placeOutput(input); };
    if (this->options.skipExisting) {
        intake.upToDate = [](const fs::path &input, const fs::path &output) {
            std::error_code error;
            const auto made = fs::last_write_time(output, error);
            return !error && made >= fs::last_write_time(input, error) && !error;
        };
    }
    intake.onSkipped = [this](const fs::path &input, const std::string &why) {
        if (why == "up to date")
            recordSkip(displayName(input), why);
    };
}

fs::path Companion::placeOutput(const fs::path &input) const
{
    const auto root = rootOf.find(input);
    const fs::path relative =
        root == rootOf.end() ? input.filename() : input.lexically_relative(root->second);
    return *options.outputDir / relative;
}

std::vector<fs::path> Companion::collectFiles()
{
    std::vector<fs::path> found;
    for (const auto &input : options.inputs) {
        std::error_code error;
        if (!fs::is_directory(input, error)) {
            if (!options.shard || options.shard->takes(input, input)) {
                found.push_back(input);
                rootOf[input] = input.parent_path();
            }
            continue;
        }
        std::vector<fs::path> inFolder;
        // Symlinked folders are not followed, so a link loop cannot trap the walk.
        fs::recursive_directory_iterator walk(input, fs::directory_options::skip_permission_denied, error);
        for (; !error && walk != fs::recursive_directory_iterator(); walk.increment(error)) {
            if (walk->is_regular_file(error))
                inFolder.push_back(walk->path());
        }
        std::sort(inFolder.begin(), inFolder.end());
        if (options.shard)
            std::erase_if(inFolder, [&](const fs::path &file) { return !options.shard->takes(file, input); });
        for (const auto &file : inFolder)
            rootOf[file] = input;
        found.insert(found.end(), inFolder.begin(), inFolder.end());
    }
    return found;
}

fs::path Companion::dryRunDestination(const Item &item) const
{
    const fs::path placed = options.outputDir ? placeOutput(item.file.url) : item.file.url;
    const fs::path proposed = Destination::proposedURL(placed, item.plan->ext);
    std::error_code error;
    if (!fs::exists(proposed, error) || options.replace || options.skipExisting)
        return proposed;
    return Destination::firstFreeNumberedURL(placed, item.plan->ext);
}

std::string Companion::describeJob(const Item &item) const
{
    if (!item.plan) {
        if (!item.problem.empty())
            return "refused: " + item.problem;
        return "skipped: unknown type (--try-unknown converts it as a WordPerfect document)";
    }
    const fs::path to = dryRunDestination(item);
    std::string text = std::string(jobName(item.plan->job)) + " \u2192 " + to.filename().string();
    std::error_code error;
    if (options.replace && fs::exists(to, error))
        text += " (replaces the existing file)";
    return text;
}

int Companion::dryRun()
{
    int status = 0;
    for (const auto &path : collectFiles()) {
        const Item item = Intake::examine(path, settings, options.tryUnknown);
        if (!item.classified) {
            out << path.string() << "\t" << item.problem << "\n";
            status = 1;
            continue;
        }
        out << path.string() << "\t" << kindName(item.file.kind) << "\t" << versionFamilyOf(item.file)
            << "\tencrypted=" << yesNo(item.file.isEncrypted) << "\twp6=" << yesNo(item.file.wpVersionIsWP6)
            << "\t" << describeJob(item) << "\n";
    }
    out.flush();
    return status;
}

void Companion::start()
{
    files = collectFiles();
    // Largest first: one big file started last would leave the other workers idle at the end.
    std::stable_sort(files.begin(), files.end(), [](const fs::path &a, const fs::path &b) {
        std::error_code error;
        const auto sizeA = fs::file_size(a, error);
        const auto sizeB = fs::file_size(b, error);
        return (error ? 0 : sizeA) > sizeB;
    });
    if (options.report) {
        try {
            reportWriter = std::make_unique<Report::Writer>(*options.report);
        } catch (const std::exception &failure) {
            out << "quillmorph-convert: cannot write the report " << options.report->string() << ": "
                << failure.what() << "\n";
        }
    }
    startOfficeBatch();
    onTerminal = &out == &std::cout && ProgressLine::outputIsTerminal();
    progressLine.emplace(out, onTerminal, files.size());
    if (files.empty())
        out << "No files to convert.\n";
    startNext();
}

void Companion::startNext()
{
    // The intake hands each file's job to launch(), or reports why there is none.
    while (running < options.jobs && next < files.size()) {
        prefetchOffice();
        reporting = files[next++];
        started[reporting] = std::chrono::steady_clock::now();
        openNext(reporting);
    }
    finishIfDone();
}

void Companion::launch(const Intake::Start &start)
{
    ++running;
    launched = true;
    std::error_code error;
    fs::create_directories(start.to.parent_path(), error); // a mirrored folder under --output-dir
    Log::write("convert: " + start.name + " \u2192 " + start.to.filename().string());
    Converter::perform(start.job, start.to,
                       [this, start](Converter::Outcome error, Converter::Losses losses) {
                           complete(start, error, losses);
                       });
}

void Companion::complete(const Intake::Start &start, const std::exception_ptr &error,
                         const Converter::Losses &losses)
{
    --running;
    intake.release(start.to);
    if (!error) {
        ++converted;
        const std::string names = start.name + " \u2192 " + start.to.filename().string();
        const std::string job(jobName(start.job));
        if (losses.empty()) {
            Log::write("converted \u2192 " + start.to.string());
            reportFile(jobSource(start.job), Report::Status::converted, {}, start.to, job);
            progress("converted " + names);
        } else {
            ++lossy;
            Log::write("converted, with losses: " + losses.joined() + " \u2192 " + start.to.string());
            reportFile(jobSource(start.job), Report::Status::convertedWithLosses, {}, start.to, job, losses);
            progress(names + ": converted, with losses: " + losses.joined(), true);
        }
        startNext();
        return;
    }
    bool wrongPassword = false;
    try {
        std::rethrow_exception(error);
    } catch (const ConversionError &conversion) {
        wrongPassword = conversion.which() == ConversionError::Case::wrongPassword;
    } catch (...) {
    }
    if (wrongPassword && start.onWrongPassword && !options.password) {
        // The same loop as the app: ask again until it converts or the user gives up.
        reporting = jobSource(start.job);
        start.onWrongPassword();
        startNext();
        return;
    }
    const FailureText text = describeFailure(error, start.name);
    reporting = jobSource(start.job);
    recordFailure(start.name, text.message + " " + text.informative);
    startNext();
}

void Companion::reportFile(const fs::path &input, Report::Status status, const std::string &reason,
                           const std::optional<fs::path> &output, const std::string &job,
                           const Converter::Losses &losses)
{
    // The file is done: an archive of millions would otherwise keep every start time.
    std::optional<std::int64_t> milliseconds;
    if (const auto began = started.find(input); began != started.end()) {
        milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(
                           std::chrono::steady_clock::now() - began->second)
                           .count();
        started.erase(began);
    }
    if (!reportWriter)
        return;
    Report::Entry entry;
    entry.input = input;
    std::error_code error;
    const auto size = fs::file_size(input, error);
    entry.size = error ? 0 : size;
    try {
        entry.sha256 = Report::sha256Of(input);
        const InputFile file = InputFile::classify(input);
        entry.kind = std::string(kindName(file.kind));
        entry.family = versionFamilyOf(file);
    } catch (const std::exception &) {
    }
    entry.job = job;
    entry.output = output;
    if (output) {
        try {
            entry.outputSha256 = Report::sha256Of(*output);
        } catch (const std::exception &) {
        }
    }
    entry.status = status;
    entry.losses = losses.kinds();
    if (!reason.empty())
        entry.reason = reason;
    if (milliseconds)
        entry.milliseconds = *milliseconds;
    try {
        reportWriter->write(entry);
    } catch (const std::exception &failure) {
        out << "quillmorph-convert: the report could not be written: " << failure.what() << "\n";
    }
}

void Companion::recordFailure(const std::string &name, const std::string &reason)
{
    reportFile(reporting, Report::Status::failed, reason, std::nullopt, {});
    failures.push_back(name + ": " + reason);
    progress("failed " + name + ": " + reason, true);
}

void Companion::recordSkip(const std::string &name, const std::string &reason)
{
    reportFile(reporting, Report::Status::skipped, reason, std::nullopt, {});
    skips.push_back(name + ": " + reason);
    progress("skipped " + name + ": " + reason);
}

void Companion::progress(const std::string &line, bool mustShow)
{
    ++done;
    const std::string text = "[" + std::to_string(done) + "/" + std::to_string(files.size()) + "] " + line;
    if (!progressLine) {
        out << text << "\n";
    } else {
        // On a terminal one line counts up in place; failures and losses still get a line of their own.
        if (!onTerminal || mustShow)
            progressLine->print(text);
        progressLine->advance(done);
    }
    out.flush();
}

void Companion::finishIfDone()
{
    if (running > 0 || next < files.size())
        return;
    if (progressLine)
        progressLine->finish();
    out << converted << " converted";
    if (lossy > 0)
        out << " (" << lossy << " with losses)";
    out << ", " << failures.size() << " failed, " << skips.size() << " skipped\n";
    for (const auto &failure : failures)
        out << "  failed: " << failure << "\n";
    out.flush();
    officeBatch.reset(); // its LibreOffice and work folders go before the run ends
    Q_EMIT finished(failures.empty() ? 0 : 1);
}

void Companion::startOfficeBatch()
{
    officeBatch = std::make_unique<ConversionTools::OfficeBatchImport>(options.jobs);
}

// Keeps LibreOffice's queue full: an office document further on in the list
// starts converting now, so that one LibreOffice start takes many.
void Companion::prefetchOffice()
{
    if (!officeBatch || !officeBatch->enabled())
        return;
    // Enough that a LibreOffice done with its documents finds about a hundred more waiting.
    const std::size_t window = 100 * static_cast<std::size_t>(options.jobs);
    const std::size_t horizon = next + 4096; // how far to classify ahead when office documents are rare
    lookedAhead = std::max(lookedAhead, next);
    while (lookedAhead < files.size() && lookedAhead < horizon && officeBatch->waiting() < window) {
        const fs::path &file = files[lookedAhead++];
        const Item item = Intake::examine(file, settings, options.tryUnknown, false);
        if (!item.plan || !std::holds_alternative<JobCase::officeToWP>(item.plan->job))
            continue;
        if (intake.upToDate) {
            const fs::path placed = options.outputDir ? placeOutput(file) : file;
            const fs::path output = Destination::proposedURL(placed, item.plan->ext);
            std::error_code error;
            if (fs::exists(output, error) && intake.upToDate(file, output))
                continue;
        }
        officeBatch->prefetch(file);
    }
}

// A prefetched document the intake gives no job (refused, skipped) is not waited for.
void Companion::openNext(const fs::path &input)
{
    launched = false;
    intake.open(input);
    if (!launched && officeBatch)
        officeBatch->discard(input);
}
