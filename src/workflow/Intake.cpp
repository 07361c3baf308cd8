#include "Intake.h"

#include "destination/Destination.h"
#include "settings/Settings.h"
#include "support/Log.h"
#include "tools/OfficeImport.h"
#include "workflow/PasswordPrompt.h"
#include "workflow/Prompter.h"

#include <algorithm>

namespace fs = std::filesystem;

Intake::Intake(Prompter &prompter, Settings &settings, std::function<void(const Start &)> start)
    : prompter(prompter), settings(settings), start(std::move(start))
{
}

void Intake::open(const fs::path &url)
{
    Log::write("open: " + url.string());
    const std::string name = displayName(url);
    std::error_code error;
    if (fs::is_directory(url, error)) {
        refuse(name, name + " is a folder, not a document.", "I can only convert files.");
        return;
    }
    InputFile file;
    try {
        file = InputFile::classify(url);
    } catch (const std::exception &failure) {
        refuse(name, "I could not read " + name + ".", failure.what());
        return;
    }
    Log::write("open: classified kind=" + std::string(kindName(file.kind)));
    switch (file.kind) {
    case InputFile::Kind::wpDocument:
        startWPDocument(file);
        break;
    case InputFile::Kind::wpGraphic:
        startWPGraphic(file);
        break;
    case InputFile::Kind::openDocument:
        startToWordPerfect(file, true);
        break;
    case InputFile::Kind::office:
        startToWordPerfect(file, false);
        break;
    case InputFile::Kind::unknown:
        if (confirmUnknown(file))
            startWPDocument(file);
        break;
    }
}

void Intake::openAll(const std::vector<fs::path> &urls)
{
    for (const auto &url : urls) {
        std::error_code error;
        if (!fs::is_directory(url, error)) {
            open(url);
            continue;
        }
        const auto files = filesInFolder(url);
        const std::string name = displayName(url);
        if (files.empty()) {
            Log::write("open: " + url.string());
            refuse(name, name + " is a folder, not a document.", "I can only convert files.");
            continue;
        }
        if (files.size() > 20) {
            Prompter::Alert alert;
            alert.style = Prompter::Alert::Style::informational;
            alert.file = name;
            alert.message =
                "Convert the " + std::to_string(files.size()) + " files in \u201C" + name + "\u201D?";
            alert.buttons = {"Convert", "Cancel"};
            if (prompter.run(alert).button != 0)
                continue;
        }
        folderAnswer.emplace();
        for (const auto &file : files)
            open(file);
        folderAnswer.reset();
    }
}

std::vector<fs::path> Intake::filesInFolder(const fs::path &folder)
{
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator walk(folder, fs::directory_options::skip_permission_denied, error), end;
         !error && walk != end; walk.increment(error)) {
        const std::string name = walk->path().filename().string();
        if (!name.empty() && name.front() != '.')
            entries.push_back(walk->path());
    }
    std::sort(entries.begin(), entries.end(),
              [](const fs::path &a, const fs::path &b) { return a.filename() < b.filename(); });
    std::vector<fs::path> files;
    for (const auto &entry : entries) {
        std::error_code kind;
        if (fs::is_symlink(entry, kind) && fs::is_directory(entry, kind))
            continue; // a link loop must not trap the walk
        if (fs::is_directory(entry, kind)) {
            const auto inner = filesInFolder(entry);
            files.insert(files.end(), inner.begin(), inner.end());
        } else {
            files.push_back(entry);
        }
    }
    return files;
}

void Intake::release(const fs::path &to)
{
    underWay.erase(to);
}

void Intake::refuse(const std::string &name, const std::string &message, const std::string &informative)
{
    Prompter::Alert alert;
    alert.style = Prompter::Alert::Style::warning;
    alert.topic = Prompter::Alert::Topic::refusal;
    alert.file = name;
    alert.message = message;
    alert.informative = informative;
    alert.buttons = {"OK"};
    prompter.run(alert);
}

bool Intake::confirmUnknown(const InputFile &file)
{
    Prompter::Alert alert;
    alert.style = Prompter::Alert::Style::informational;
    alert.topic = Prompter::Alert::Topic::unknownKind;
    alert.file = displayName(file.url);
    alert.message = "I cannot determine the type of " + alert.file + ".";
    alert.informative = "If you believe this is a WordPerfect document, choose \u201CTry anyway\u201D.";
    alert.buttons = {"Try anyway", "Cancel"};
    return prompter.run(alert).button == 0;
}

void Intake::startWPDocument(const InputFile &file)
{
    const std::string name = displayName(file.url);
    if (const auto why = whyNotADocument(file)) {
        refuse(name, name + " is " + *why + ".", "I can only convert WordPerfect documents and graphics.");
        return;
    }
    const auto plan = planJob(file, InputFile::Kind::wpDocument, settings);
    if (!plan) {
        refuse(name, name + " is an encrypted WordPerfect 6 file that I cannot open.",
               "The libwpd conversion software cannot decrypt WordPerfect 6.x documents.");
        return;
    }
    const DocTarget target = plan->ext == "rtf" ? DocTarget::rtf : DocTarget::odt;
    const auto dest = destinationFor(file, plan->ext);
    if (!dest)
        return;
    if (!file.isEncrypted) {
        runWPDocument(file, *dest, target, std::nullopt);
        return;
    }
    auto password = PasswordPrompt::ask(name, false, prompter);
    if (!password) {
        if (onSkipped)
            onSkipped(file.url, "cancelled");
        return;
    }
    runWPDocument(file, *dest, target, std::move(password));
}

void Intake::runWPDocument(const InputFile &file, const fs::path &dest, DocTarget target,
                           std::optional<std::string> password)
{
    // The charset is read at each run, so a retry picks up a change made meanwhile.
    const Job job = target == DocTarget::rtf
                        ? Job(JobCase::wpToRTF{file.url, std::move(password), settings.rtfCharset()})
                        : Job(JobCase::wpToODT{file.url, std::move(password)});
    std::function<void()> onWrongPassword;
    if (file.isEncrypted) {
        onWrongPassword = [this, file, dest, target] {
            auto retry = PasswordPrompt::ask(displayName(file.url), true, prompter);
            if (!retry) {
                if (onSkipped)
                    onSkipped(file.url, "cancelled");
                return;
            }
            runWPDocument(file, dest, target, std::move(retry));
        };
    }
    hand({job, dest, displayName(file.url), std::move(onWrongPassword)});
}

void Intake::startWPGraphic(const InputFile &file)
{
    const auto plan = planJob(file, InputFile::Kind::wpGraphic, settings);
    const auto dest = destinationFor(file, plan->ext);
    if (!dest)
        return;
    hand({plan->job, *dest, displayName(file.url), {}});
}

void Intake::startToWordPerfect(const InputFile &file, bool alreadyODT)
{
    if (!alreadyODT && !ConversionTools::libreOfficeURL())
        showLibreOfficeNoticeIfNeeded();
    const auto plan =
        planJob(file, alreadyODT ? InputFile::Kind::openDocument : InputFile::Kind::office, settings);
    const auto dest = destinationFor(file, plan->ext);
    if (!dest)
        return;
    hand({plan->job, *dest, displayName(file.url), {}});
}

std::optional<fs::path> Intake::destinationFor(const InputFile &file, const std::string &ext)
{
    // A name another conversion of this session is about to write counts as taken, so Letter.wpd
    // and Letter.wp5 dropped together never overwrite each other; there is no file yet to ask about.
    const auto taken = [this](const fs::path &candidate) { return underWay.contains(candidate); };
    const fs::path placed = placeOutput ? placeOutput(file.url) : file.url;
    const fs::path proposed = Destination::proposedURL(placed, ext);
    if (taken(proposed))
        return Destination::firstFreeNumberedURL(placed, ext, taken);
    std::error_code error;
    if (upToDate && fs::exists(proposed, error) && upToDate(file.url, proposed)) {
        if (onSkipped)
            onSkipped(file.url, "up to date");
        return std::nullopt;
    }
    auto choice = Destination::resolve(placed, ext, prompter, taken, folderAnswer ? &*folderAnswer : nullptr);
    if (!choice && onSkipped)
        onSkipped(file.url, "cancelled");
    if (choice) {
        if (const auto why = Destination::whyNotReplaceable(*choice)) {
            const std::string name = displayName(file.url);
            refuse(name, "I could not convert " + name + ".", *why);
            return std::nullopt;
        }
    }
    return choice;
}

void Intake::showLibreOfficeNoticeIfNeeded()
{
    QSettings &defaults = settings.defaults();
    if (defaults.value(Settings::hideLibreOfficeNoticeKey, false).toBool())
        return;
    Prompter::Alert alert;
    alert.style = Prompter::Alert::Style::informational;
    alert.topic = Prompter::Alert::Topic::notice;
    alert.message = "Converting without LibreOffice";
    alert.informative =
        "LibreOffice is not installed, so Word, RTF, and HTML files are converted using Pandoc. "
        "This works well for most documents but can lose some formatting.\n\n"
        "Installing the free LibreOffice (libreoffice.org) lets Quillmorph preserve more of the "
        "original layout.";
    alert.buttons = {"OK"};
    alert.suppressionTitle = "Don\u2019t show this again";
    if (prompter.run(alert).suppressed)
        defaults.setValue(Settings::hideLibreOfficeNoticeKey, true);
}

void Intake::hand(Start job)
{
    underWay.insert(job.to);
    start(job);
}

Intake::Examined Intake::examine(const fs::path &url, const Settings &settings, bool tryUnknown, bool logged)
{
    Examined item{InputFile{url}, std::nullopt, {}, false};
    const std::string name = displayName(url);
    if (logged)
        Log::write("open: " + url.string());
    std::error_code error;
    if (fs::is_directory(url, error)) {
        item.problem = name + " is a folder, not a document.";
        return item;
    }
    try {
        item.file = InputFile::classify(url);
    } catch (const std::exception &failure) {
        item.problem = "I could not read " + name + ". " + failure.what();
        return item;
    }
    item.classified = true;
    if (logged)
        Log::write("open: classified kind=" + std::string(kindName(item.file.kind)));
    InputFile::Kind treatAs = item.file.kind;
    if (treatAs == InputFile::Kind::unknown && tryUnknown)
        treatAs = InputFile::Kind::wpDocument;
    if (treatAs == InputFile::Kind::wpDocument) {
        if (const auto why = whyNotADocument(item.file)) {
            item.problem = name + " is " + *why + ".";
            return item;
        }
    }
    item.plan = planJob(item.file, treatAs, settings);
    if (!item.plan && treatAs == InputFile::Kind::wpDocument)
        item.problem = name + " is an encrypted WordPerfect 6 file that I cannot open.";
    return item;
}
