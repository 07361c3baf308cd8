#pragma once

#include "classify/InputFile.h"
#include "support/ConversionError.h"
#include "engine/Converter.h"
#include "engine/Job.h"
#include "settings/Targets.h"
#include "workflow/Intake.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <cstdint>
#include <deque>
#include <map>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

class HelpWindowController;
class MainWindow;
class Prompter;
class Revealer;
class Settings;
class SettingsWindowController;

// The application's workflow: takes each opened file up, picks its job,
// settles its output and password, runs it, and reports the outcome.
// Lives for the whole process, on the main thread.
class AppDelegate : public QObject {
    Q_OBJECT
public:
    AppDelegate(Prompter &prompter, Revealer &revealer, Settings &settings, QObject *parent = nullptr);
    ~AppDelegate() override;

    const std::string appName = "Quillmorph";
    bool didOpen = false;
    std::unique_ptr<HelpWindowController> helpController;
    std::unique_ptr<SettingsWindowController> settingsController;
    std::int64_t pendingConversions = 0;

    // One open event: the files of a launch, a drop, or a second launch.
    void applicationOpen(const std::vector<std::filesystem::path> &urls);

    // Logs the launch, builds the main window with its menus, and offers the
    // open panel unless files arrive first.
    void applicationDidFinishLaunching();

    MainWindow *mainWindow() const { return window.get(); }
    Settings &settingsStore() const { return settings; }

    // Shows an earlier output in the file manager again (the main window's list).
    void revealAgain(const std::filesystem::path &url);

    // Hides the windows at once and ends the process when no conversion is
    // left, so no output is cut off half-written.
    void quit();
    bool isQuitting() const { return quitting; }

public Q_SLOTS:
    void chooseAndConvert();
    void showHelp();
    void showSettings();

Q_SIGNALS:
    // For the main window's list of this session's conversions.
    void conversionStarted(quint64 id, const QString &input, const QString &output, const QString &kind);
    // On failure `detail` says why; on success it lists what the output could
    // not carry, and is empty when nothing was lost.
    void conversionFinished(quint64 id, bool succeeded, const QString &detail);
    // The conversion met a wrong password; the prompt for another is open.
    void conversionWaiting(quint64 id);
    // A file whose handling the user cancelled (a row of its own, or the one it had).
    void fileSkipped(quint64 id, const QString &input, const QString &kind);
    // Emitted when the last conversion has finished after quit().
    void readyToQuit();

private:
    void execute(const Intake::Start &start);
    void complete(quint64 id, const std::exception_ptr &outcome, const Converter::Losses &losses,
                  const std::filesystem::path &to, const std::string &name,
                  const std::function<void()> &onWrongPassword);
    void warn(const std::string &message, const std::string &informative);
    void report(const ConversionError &error, const std::string &name);
    void takeUp(const std::vector<std::filesystem::path> &urls);
    void revealWhenDone(quint64 event);
    void revealSoon(quint64 event);
    void revealNow(quint64 event);
    // Questions are modal: an open event, a panel's choice or a job's news that
    // arrives while one is open (its nested event loop runs) waits here and is
    // taken up, in order, once the question is answered.
    void inTurn(std::function<void()> step);

    Prompter &prompter;
    Revealer &revealer;
    Settings &settings;
    std::unique_ptr<MainWindow> window;
    quint64 nextConversionId = 1;
    bool quitting = false;
    Intake intake;
    // Each open event's conversions, revealed together once all have ended.
    struct Event {
        int pending = 0;
        bool takenUp = false;
        std::vector<std::filesystem::path> converted; // not yet shown
        int generation = 0;
    };
    std::map<quint64, Event> events;
    std::map<quint64, quint64> eventOfConversion;
    quint64 nextEvent = 1;
    quint64 currentEvent = 0;
    std::optional<quint64> retryRow;
    std::deque<std::function<void()>> waiting;
    bool takingTurns = false;
};

// The name as the log and the messages show it: the last path component.
std::string fileName(const std::filesystem::path &url);
