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

QString kindOf(const fs::path &source)
{
    try {
        return qt(describeKind(InputFile::classify(source)));
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
    : QObject(parent), prompter(prompter), revealer(revealer), settings(settings),
      intake(prompter, settings, [this](const Intake::Start &job) { execute(job); })
{
    intake.onSkipped = [this](const fs::path &file, const std::string &) {
        // A cancelled retry keeps the row it had; any other cancelled file gets one.
        const quint64 id = retryRow ? *retryRow : nextConversionId++;
        retryRow.reset();
        Q_EMIT fileSkipped(id, qt(file.string()), kindOf(file));
    };
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
        takeUp(urls);
    });
}

void AppDelegate::takeUp(const std::vector<fs::path> &urls)
{
    const quint64 event = nextEvent++;
    currentEvent = event;
    events[event];
    intake.openAll(urls);
    currentEvent = 0;
    events[event].takenUp = true;
    revealWhenDone(event);
}

void AppDelegate::revealWhenDone(quint64 event)
{
    const auto found = events.find(event);
    if (found == events.end() || !found->second.takenUp || found->second.pending > 0)
        return;
    revealNow(event);
    events.erase(event);
}

void AppDelegate::revealSoon(quint64 event)
{
    // Files of one event that finish close together are shown together; one that hangs
    // never holds back the others for longer than this.
    const int generation = ++events[event].generation;
    QPointer<AppDelegate> self(this);
    QTimer::singleShot(400, this, [self, event, generation] {
        if (!self)
            return;
        const auto found = self->events.find(event);
        if (found != self->events.end() && found->second.generation == generation)
            self->revealNow(event);
    });
}

void AppDelegate::revealNow(quint64 event)
{
    auto &record = events[event];
    // One call for what has finished: the file manager shows each folder once, its new files selected.
    if (!quitting && !record.converted.empty())
        revealer.reveal(record.converted, event);
    record.converted.clear();
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

void AppDelegate::execute(const Intake::Start &start)
{
    const Job &job = start.job;
    const fs::path &to = start.to;
    const std::string &name = start.name;
    const std::function<void()> &onWrongPassword = start.onWrongPassword;
    Log::write("convert: " + name + " \u2192 " + fileName(to));
    ++pendingConversions;
    // A retry after a wrong password continues the row, and the open event, of its first run.
    const quint64 id = retryRow ? *retryRow : nextConversionId++;
    retryRow.reset();
    const quint64 event = currentEvent ? currentEvent : eventOfConversion[id];
    eventOfConversion[id] = event;
    ++events[event].pending;
    Q_EMIT conversionStarted(id, qt(jobSource(job).string()), qt(to.string()), kindOf(jobSource(job)));
    QPointer<AppDelegate> self(this);
    Converter::perform(
        job, to, [self, id, to, name, onWrongPassword](Converter::Outcome outcome, Converter::Losses losses) {
            if (self)
                self->complete(id, outcome, losses, to, name, onWrongPassword);
        });
}

void AppDelegate::complete(quint64 id, const std::exception_ptr &outcome, const Converter::Losses &losses,
                           const fs::path &to, const std::string &name,
                           const std::function<void()> &onWrongPassword)
{
    --pendingConversions;
    intake.release(to);
    const quint64 event = eventOfConversion[id];
    auto &record = events[event];
    --record.pending;
    if (!outcome) {
        Q_EMIT conversionFinished(id, true, qt(losses.joined()));
        Log::write((losses.empty() ? "converted" : "converted, with losses: " + losses.joined()) +
                   " \u2192 " + to.string());
        record.converted.push_back(to);
        revealSoon(event);
    } else {
        const FailureText words = describeFailure(outcome, name);
        std::optional<ConversionError> conversion;
        try {
            std::rethrow_exception(outcome);
        } catch (const ConversionError &error) {
            conversion = error;
        } catch (...) {
        }
        const bool askAgain = conversion && conversion->which() == ConversionError::Case::wrongPassword &&
                              onWrongPassword && !quitting;
        if (askAgain) {
            // The row waits for the prompt; the event stays open until it is answered.
            Q_EMIT conversionWaiting(id);
            ++record.pending;
        } else {
            Q_EMIT conversionFinished(id, false, qt(words.informative));
        }
        QPointer<AppDelegate> self(this);
        inTurn([self, id, event, words, conversion, name, onWrongPassword, askAgain] {
            if (!self)
                return;
            if (askAgain) {
                --self->events[event].pending;
                self->retryRow = id;
                onWrongPassword();
                self->retryRow.reset();
            } else if (self->quitting) {
                // Nobody is left to answer a question: the log keeps the reason.
                Log::write("failed: " + name + " \u2014 " + words.informative);
            } else if (conversion) {
                self->report(*conversion, name);
            } else {
                self->warn(words.message, words.informative);
            }
            self->revealWhenDone(event);
        });
    }
    revealWhenDone(event);
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

void AppDelegate::revealAgain(const fs::path &url)
{
    revealer.reveal({url}, 0);
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
            if (self && !self->quitting)
                self->takeUp(urls);
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
