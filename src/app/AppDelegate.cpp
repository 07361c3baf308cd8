#include "AppDelegate.h"

#include "workflow/JobPlan.h"
#include "MainWindow.h"
#include "workflow/Prompter.h"
#include "Revealer.h"
#include "workflow/Wording.h"
#include "destination/Destination.h"
#include "workflow/DestinationChoice.h"
#include "engine/Converter.h"
#include "settings/Settings.h"
#include "app/SettingsWindowController.h"
#include "app/HelpWindowController.h"
#include "support/Log.h"
#include "workflow/PasswordPrompt.h"
#include "tools/ConversionTools.h"
#include "tools/OfficeImport.h"

#include <QApplication>
#include <QTimer>

namespace fs = std::filesystem;

namespace {

// A list of names as a debug rendering of strings shows it: ["a", "b \"c\""].
std::string quotedList(const std::vector<fs::path> &urls)
{
    std::string text = "[";
    for (std::size_t i = 0; i < urls.size(); ++i) {
        if (i > 0)
            text += ", ";
        text += '"';
        for (const char c : fileName(urls[i])) {
            if (c == '"' || c == '\\')
                text += '\\';
            text += c;
        }
        text += '"';
    }
    return text + "]";
}

QString qt(const std::string &text)
{
    return QString::fromStdString(text);
}

QString familyOf(const fs::path &source)
{
    try {
        return qt(versionFamilyOf(InputFile::classify(source)));
    } catch (const std::exception &) {
        return {};
    }
}

} // namespace

std::string fileName(const fs::path &url)
{
    return displayName(url);
}

AppDelegate::AppDelegate(Prompter &prompter, Revealer &revealer, Settings &settings, QObject *parent)
    : QObject(parent), prompter(prompter), revealer(revealer), settings(settings)
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationOpen(const std::vector<fs::path> &urls)
{
    didOpen = true;
    inTurn([this, urls] {
        if (quitting) {
            Log::write("openEvent ignored after quit: " + quotedList(urls));
            return;
        }
        Log::write("openEvent: " + quotedList(urls));
        for (const auto &url : urls)
            open(url);
    });
}

void AppDelegate::inTurn(std::function<void()> step)
{
    waiting.push_back(std::move(step));
    if (takingTurns)
        return;
    takingTurns = true;
    while (!waiting.empty()) {
        const auto next = std::move(waiting.front());
        waiting.pop_front();
        next();
    }
    takingTurns = false;
}

void AppDelegate::open(const fs::path &url)
{
    Log::write("open: " + url.string());
    std::error_code error;
    if (fs::is_directory(url, error)) {
        warn(fileName(url) + " is a folder, not a document.", "I can only convert files.");
        return;
    }
    InputFile file;
    try {
        file = InputFile::classify(url);
    } catch (const std::exception &failure) {
        warn("I could not read " + fileName(url) + ".", failure.what());
        return;
    }
    Log::write("open: classified kind=" + std::string(kindName(file.kind)));
    switch (file.kind) {
    case InputFile::Kind::wpDocument: startWPDocument(file); break;
    case InputFile::Kind::wpGraphic: startWPGraphic(file); break;
    case InputFile::Kind::openDocument: startToWordPerfect(file, true); break;
    case InputFile::Kind::office: startToWordPerfect(file, false); break;
    case InputFile::Kind::unknown:
        if (confirmUnknown(url))
            startWPDocument(file);
        break;
    }
}

bool AppDelegate::confirmUnknown(const fs::path &url)
{
    Prompter::Alert alert;
    alert.style = Prompter::Alert::Style::informational;
    alert.message = "I cannot determine the type of " + fileName(url) + ".";
    alert.informative = "If you believe this is a WordPerfect document, choose \u201CTry anyway\u201D.";
    alert.buttons = {"Try anyway", "Cancel"};
    return prompter.run(alert).button == 0;
}

void AppDelegate::startWPDocument(const InputFile &file)
{
    if (const auto why = whyNotADocument(file)) {
        warn(fileName(file.url) + " is " + *why + ".", "I can only convert WordPerfect documents and graphics.");
        return;
    }
    const auto plan = planJob(file, InputFile::Kind::wpDocument, settings);
    if (!plan) {
        warn(fileName(file.url) + " is an encrypted WordPerfect 6 file that I cannot open.",
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
    auto password = PasswordPrompt::ask(fileName(file.url), false, prompter);
    if (!password)
        return;
    runWPDocument(file, *dest, target, std::move(password));
}

void AppDelegate::runWPDocument(const InputFile &file, const fs::path &dest, DocTarget target,
                                std::optional<std::string> password)
{
    // The charset is read at each run, so a retry picks up a change made meanwhile.
    const Job job = target == DocTarget::rtf
                        ? Job(JobCase::wpToRTF {file.url, std::move(password), settings.rtfCharset()})
                        : Job(JobCase::wpToODT {file.url, std::move(password)});
    QPointer<AppDelegate> self(this);
    auto onWrongPassword = [self, file, dest, target] {
        if (!self || !file.isEncrypted)
            return;
        auto retry = PasswordPrompt::ask(fileName(file.url), true, self->prompter);
        if (!retry)
            return;
        self->runWPDocument(file, dest, target, std::move(retry));
    };
    execute(job, dest, fileName(file.url), onWrongPassword);
}

void AppDelegate::startWPGraphic(const InputFile &file)
{
    const auto plan = planJob(file, InputFile::Kind::wpGraphic, settings);
    const auto dest = destinationFor(file, plan->ext);
    if (!dest)
        return;
    execute(plan->job, *dest, fileName(file.url), {});
}

void AppDelegate::startToWordPerfect(const InputFile &file, bool alreadyODT)
{
    if (!alreadyODT && !ConversionTools::libreOfficeURL())
        showLibreOfficeNoticeIfNeeded();
    const auto plan = planJob(file, alreadyODT ? InputFile::Kind::openDocument : InputFile::Kind::office, settings);
    const auto dest = destinationFor(file, plan->ext);
    if (!dest)
        return;
    execute(plan->job, *dest, fileName(file.url), {});
}

std::optional<fs::path> AppDelegate::destinationFor(const InputFile &file, const std::string &ext)
{
    // A name another conversion of this session is about to write counts as taken, so Letter.wpd
    // and Letter.wp5 dropped together never overwrite each other; there is no file yet to ask about.
    const auto taken = [this](const fs::path &candidate) { return underWay.contains(candidate); };
    if (taken(Destination::proposedURL(file.url, ext)))
        return Destination::firstFreeNumberedURL(file.url, ext, taken);
    auto choice = Destination::resolve(file.url, ext, prompter, taken);
    if (choice) {
        if (const auto why = Destination::whyNotReplaceable(*choice)) {
            warn("I could not convert " + fileName(file.url) + ".", *why);
            return std::nullopt;
        }
    }
    return choice;
}

void AppDelegate::execute(const Job &job, const fs::path &to, const std::string &name,
                          std::function<void()> onWrongPassword)
{
    Log::write("convert: " + name + " \u2192 " + fileName(to));
    ++pendingConversions;
    underWay.insert(to);
    const quint64 id = nextConversionId++;
    Q_EMIT conversionStarted(id, qt(jobSource(job).string()), qt(to.string()), familyOf(jobSource(job)));
    QPointer<AppDelegate> self(this);
    Converter::perform(job, to, [self, id, to, name, onWrongPassword](Converter::Outcome outcome) {
        if (self)
            self->complete(id, outcome, to, name, onWrongPassword);
    });
}

void AppDelegate::complete(quint64 id, const std::exception_ptr &outcome, const fs::path &to, const std::string &name,
                           const std::function<void()> &onWrongPassword)
{
    --pendingConversions;
    underWay.erase(to);
    if (!outcome) {
        Q_EMIT conversionFinished(id, true, {});
        reveal(to);
    } else {
        const FailureText words = describeFailure(outcome, name);
        Q_EMIT conversionFinished(id, false, qt(words.informative));
        std::optional<ConversionError> conversion;
        try {
            std::rethrow_exception(outcome);
        } catch (const ConversionError &error) {
            conversion = error;
        } catch (...) {
        }
        QPointer<AppDelegate> self(this);
        inTurn([self, words, conversion, name, onWrongPassword] {
            if (!self)
                return;
            if (self->quitting) {
                // Nobody is left to answer a question: the log keeps the reason.
                Log::write("failed: " + name + " \u2014 " + words.informative);
            } else if (conversion && conversion->which() == ConversionError::Case::wrongPassword && onWrongPassword) {
                onWrongPassword();
            } else if (conversion) {
                self->report(*conversion, name);
            } else {
                self->warn(words.message, words.informative);
            }
        });
    }
    if (quitting && pendingConversions == 0)
        Q_EMIT readyToQuit();
}

void AppDelegate::warn(const std::string &message, const std::string &informative)
{
    Prompter::Alert alert;
    alert.style = Prompter::Alert::Style::warning;
    alert.message = message;
    alert.informative = informative;
    alert.buttons = {"OK"};
    prompter.run(alert);
}

void AppDelegate::report(const ConversionError &error, const std::string &name)
{
    const FailureText words = describeFailure(std::make_exception_ptr(error), name);
    warn(words.message, words.informative);
}

void AppDelegate::reveal(const fs::path &url)
{
    Log::write("converted \u2192 " + url.string());
    if (!quitting)
        revealer.reveal(url);
}

void AppDelegate::revealAgain(const fs::path &url)
{
    revealer.reveal(url);
}

void AppDelegate::showLibreOfficeNoticeIfNeeded()
{
    QSettings &defaults = settings.defaults();
    if (defaults.value(Settings::hideLibreOfficeNoticeKey, false).toBool())
        return;
    Prompter::Alert alert;
    alert.style = Prompter::Alert::Style::informational;
    alert.message = "Converting without LibreOffice";
    alert.informative = "LibreOffice is not installed, so Word, RTF, and HTML files are converted using Pandoc. "
                        "This works well for most documents but can lose some formatting.\n\n"
                        "Installing the free LibreOffice (libreoffice.org) lets Quillmorph preserve more of the "
                        "original layout.";
    alert.buttons = {"OK"};
    alert.suppressionTitle = "Don\u2019t show this again";
    if (prompter.run(alert).suppressed)
        defaults.setValue(Settings::hideLibreOfficeNoticeKey, true);
}

void AppDelegate::applicationDidFinishLaunching()
{
    Log::write("launch: didFinishLaunching (bundle=" + ConversionTools::programPath().string() + ")");
    window = std::make_unique<MainWindow>(*this);
    window->show();
    QPointer<AppDelegate> self(this);
    QTimer::singleShot(0, this, [self] {
        if (self && !self->didOpen)
            self->chooseAndConvert();
    });
}

void AppDelegate::chooseAndConvert()
{
    QPointer<AppDelegate> self(this);
    prompter.chooseFiles([self](std::vector<fs::path> urls) {
        if (!self || urls.empty())
            return;
        self->didOpen = true;
        self->inTurn([self, urls] {
            for (const auto &url : urls) {
                if (self && !self->quitting)
                    self->open(url);
            }
        });
    });
}

void AppDelegate::showHelp()
{
    if (!helpController)
        helpController = std::make_unique<HelpWindowController>(settings);
    helpController->showWindow();
}

void AppDelegate::showSettings()
{
    if (!settingsController)
        settingsController = std::make_unique<SettingsWindowController>(settings);
    settingsController->showCentred();
}

void AppDelegate::quit()
{
    quitting = true;
    for (QWidget *widget : QApplication::topLevelWidgets())
        widget->hide();
    if (pendingConversions == 0)
        Q_EMIT readyToQuit();
}
