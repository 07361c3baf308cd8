#pragma once

#include "classify/InputFile.h"
#include "engine/Job.h"
#include "settings/Targets.h"
#include "workflow/DestinationChoice.h"
#include "workflow/JobPlan.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

class Prompter;
class Settings;

// One file's way from an open event to a job under way, the same for the app
// and the companion: the folder test, classification, the plan, the
// refusals, the destination (claimed for the session, so two files never
// share one), the password and the loop that asks again after a wrong one.
// Every question goes to the Prompter; the caller runs the job it is handed
// and reports how it ended.
class Intake {
public:
    struct Start {
        Job job;
        std::filesystem::path to;
        std::string name;
        // Asks for the password again and starts the job once more; empty for
        // a job without a password.
        std::function<void()> onWrongPassword;
    };

    Intake(Prompter &prompter, Settings &settings, std::function<void(const Start &)> start);

    // Takes one file up, up to the hand-over of its job; every question it
    // asks is answered before it returns.
    void open(const std::filesystem::path &url);

    // An open event's list: a folder stands for the files inside it, in name
    // order, hidden ones left out; more than 20 are confirmed first.
    void openAll(const std::vector<std::filesystem::path> &urls);

    // The files a folder brings: recursively, in name order, without hidden
    // files and folders; folders behind symbolic links are not followed.
    static std::vector<std::filesystem::path> filesInFolder(const std::filesystem::path &folder);

    // Told of each file whose handling ended without a job and without a
    // failure: "cancelled" (the user cancelled a question) or "up to date".
    std::function<void(const std::filesystem::path &, const std::string &)> onSkipped;

    // Where a file's output goes instead of beside it: the path the input would have
    // there (the companion's --output-dir mirrors the folders below its argument).
    std::function<std::filesystem::path(const std::filesystem::path &)> placeOutput;

    // True when an existing output need not be made again (the companion's --skip-existing).
    std::function<bool(const std::filesystem::path &input, const std::filesystem::path &output)> upToDate;

    // A conversion to `to` has ended: the name is free again.
    void release(const std::filesystem::path &to);

    // A warning with one "OK" button, about the file named `name`.
    void refuse(const std::string &name, const std::string &message, const std::string &informative);

    // What open() would decide, without a question: the classification, the
    // plan, or why there is none. For the companion's dry run.
    struct Examined {
        InputFile file;
        std::optional<JobPlan> plan;
        std::string problem; // why the file cannot be converted, when it cannot
        bool classified = false;
    };
    // `logged`: whether the log gets the file's "open:" lines (not when the
    // companion only looks ahead).
    static Examined examine(const std::filesystem::path &url, const Settings &settings, bool tryUnknown,
                            bool logged = true);

private:
    bool confirmUnknown(const InputFile &file);
    void startWPDocument(const InputFile &file);
    void startWPGraphic(const InputFile &file);
    void startToWordPerfect(const InputFile &file, bool alreadyODT);
    void runWPDocument(const InputFile &file, const std::filesystem::path &dest, DocTarget target,
                       std::optional<std::string> password);
    std::optional<std::filesystem::path> destinationFor(const InputFile &file, const std::string &ext);
    void showLibreOfficeNoticeIfNeeded();
    void hand(Start start);

    Prompter &prompter;
    Settings &settings;
    std::function<void(const Start &)> start;
    // Destinations of the conversions under way, which may not have written their file yet.
    std::set<std::filesystem::path> underWay;
    // While a folder's files are taken up: the clash answer chosen for all of them.
    std::optional<Destination::FolderAnswer> folderAnswer;
};
