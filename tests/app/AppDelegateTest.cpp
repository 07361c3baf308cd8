#include "FakeTools.h"
#include "ScriptedPrompter.h"
#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "settings/Settings.h"
#include "tools/OfficeImport.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QTreeWidget>

#include <map>

#include <cerrno>

namespace fs = std::filesystem;
using namespace testing_support;
using Style = Prompter::Alert::Style;

namespace {

std::string wordPerfect(char major = 0, char key = 0, char type = 0x0A)
{
    return {'\xFF', 'W', 'P', 'C', 16, 0, 0, 0, 1, type, major, 1, key, 0, 0, 0};
}

class Workflow : public ::testing::Test {
protected:
    Workflow()
        : settings(std::make_unique<QSettings>(QString::fromStdString(tools.work("settings.conf").string()),
                                               QSettings::IniFormat)),
          delegate(prompter, revealer, settings)
    {
        fs::create_directories(docs());
        // Encrypted fixtures (Secret*) convert only with the password "right".
        tools.add("wpd2odt", "case \"$*\" in '--password right '*) ;; *--password*|*Secret*) exit 1;; esac\n"
                             "eval out=\\${$#}; printf converted > \"$out\"");
        ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{"/bin/true"});
    }
    ~Workflow() override { ConversionTools::overrideLibreOfficePlaces(std::nullopt); }

    fs::path docs() const { return tools.work("docs"); }
    fs::path doc(const std::string &name) const { return docs() / name; }

    void open(std::vector<fs::path> files) { delegate.applicationOpen(files); }
    bool settle()
    {
        return waitUntil([this] { return delegate.pendingConversions == 0; });
    }

    void expectAlert(std::size_t index, Style style, const std::string &message,
                     const std::string &informative, std::vector<std::string> buttons)
    {
        ASSERT_LT(index, prompter.shown.size()) << "alert " << index << " was not shown";
        const auto &alert = prompter.shown[index].alert;
        EXPECT_EQ(alert.style, style) << message;
        EXPECT_EQ(alert.message, message);
        EXPECT_EQ(alert.informative, informative);
        EXPECT_EQ(alert.buttons, buttons);
    }

    FakeTools tools;
    Settings settings;
    ScriptedPrompter prompter;
    RecordingRevealer revealer;
    AppDelegate delegate;
};

} // namespace

TEST_F(Workflow, AnOpenEventLogsTheNamesThenTakesEachFileInOrder)
{
    fs::create_directories(doc("Folder.wpd"));
    writeFile(doc("Letter.wpd"), wordPerfect());
    const LogTail tail;
    open({doc("Folder.wpd"), doc("gone \"x\".wpd"), doc("Letter.wpd")});
    ASSERT_TRUE(settle());
    EXPECT_TRUE(delegate.didOpen);
    EXPECT_EQ(tail.messagesContaining(""),
              (std::vector<std::string>{
                  "openEvent: [\"Folder.wpd\", \"gone \\\"x\\\".wpd\", \"Letter.wpd\"]",
                  "open: " + doc("Folder.wpd").string(),
                  "open: " + doc("gone \"x\".wpd").string(),
                  "open: " + doc("Letter.wpd").string(),
                  "open: classified kind=wpDocument",
                  "convert: Letter.wpd \u2192 Letter.odt",
                  "run wpd2odt: " + doc("Letter.wpd").string() + " " + doc("Letter.odt").string(),
                  "run wpd2odt: 0 bytes stdout, 0 bytes stderr, status 0",
                  "converted \u2192 " + doc("Letter.odt").string(),
              }));
    ASSERT_EQ(prompter.shown.size(), 2u);
    expectAlert(0, Style::warning, "Folder.wpd is a folder, not a document.", "I can only convert files.",
                {"OK"});
    expectAlert(1, Style::warning, "I could not read gone \"x\".wpd.", systemMessage(ENOENT), {"OK"});
    EXPECT_EQ(revealer.revealed, std::vector<fs::path>{doc("Letter.odt")});
    EXPECT_EQ(readFile(doc("Letter.odt")), "converted");
}

TEST_F(Workflow, EachKindGetsTheJobAndExtensionOfItsSetting)
{
    struct Row {
        const char *file;
        std::string bytes;
        QString key, value;
        const char *convertLine;
    };
    const Row rows[] = {
        {"a.wpd", wordPerfect(), Settings::documentTargetKey, "odt", "convert: a.wpd \u2192 a.odt"},
        {"b.wpd", wordPerfect(), Settings::documentTargetKey, "rtf", "convert: b.wpd \u2192 b.rtf"},
        {"c.wpg", wordPerfect(1, 0, 0x16), Settings::graphicTargetKey, "png", "convert: c.wpg \u2192 c.png"},
        {"d.wpg", wordPerfect(1, 0, 0x16), Settings::graphicTargetKey, "svg", "convert: d.wpg \u2192 d.svg"},
        {"e.fodt", "<office:document opendocument", Settings::wordPerfectTargetKey, "wp6",
         "convert: e.fodt \u2192 e.wp6"},
        // With LibreOffice there is no notice about converting without it.
        {"f.html", "<html>", Settings::wordPerfectTargetKey, "wp5", "convert: f.html \u2192 f.wp5"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.file);
        writeFile(doc(row.file), row.bytes);
        settings.defaults().setValue(row.key, row.value);
        const LogTail tail;
        open({doc(row.file)});
        ASSERT_TRUE(settle());
        EXPECT_EQ(tail.messagesContaining("convert: "), std::vector<std::string>{row.convertLine});
    }
    for (const auto &shown : prompter.shown)
        EXPECT_NE(shown.alert.message, "Converting without LibreOffice");
}

TEST_F(Workflow, EncryptedWordPerfect6IsRefusedBeforeAnyQuestion)
{
    writeFile(doc("Locked.wpd"), wordPerfect(2, 7));
    writeFile(doc("Locked.odt"), "taken");
    const LogTail tail;
    open({doc("Locked.wpd")});
    ASSERT_EQ(prompter.shown.size(), 1u) << "no clash question, no password prompt";
    expectAlert(0, Style::warning, "Locked.wpd is an encrypted WordPerfect 6 file that I cannot open.",
                "The libwpd conversion software cannot decrypt WordPerfect 6.x documents.", {"OK"});
    EXPECT_TRUE(tail.messagesContaining("convert: ").empty());
    EXPECT_EQ(tail.messagesContaining("classified"),
              std::vector<std::string>{"open: classified kind=wpDocument"});
}

TEST_F(Workflow, TheDestinationIsSettledBeforeThePasswordAndWrongOnesAreAskedAgain)
{
    writeFile(doc("Secret.wp5"), wordPerfect(0, 0x42));
    writeFile(doc("Secret.odt"), "taken");
    prompter.answer(0);          // Keep Both
    prompter.answer(0, "wrong"); // OK
    prompter.answer(0, "");      // an empty password is still a password
    prompter.answer(0, "right");
    const LogTail tail;
    open({doc("Secret.wp5")});
    ASSERT_TRUE(waitUntil([&] { return revealer.revealed.size() == 1; }));
    ASSERT_EQ(prompter.shown.size(), 4u);
    expectAlert(0, Style::warning, "A file named \u201CSecret.odt\u201D already exists.",
                "Do you want to replace it, or keep both files?", {"Keep Both", "Replace", "Cancel"});
    expectAlert(1, Style::informational, "Secret.wp5 is encrypted.",
                "Please enter the password:", {"OK", "Cancel"});
    EXPECT_TRUE(prompter.shown[1].alert.passwordField);
    for (std::size_t retry : {2u, 3u})
        expectAlert(retry, Style::warning, "Secret.wp5 is encrypted.",
                    "Incorrect password entered.\n\nPlease enter the correct password:", {"OK", "Cancel"});
    EXPECT_EQ(tail.messagesContaining("convert: ").size(), 3u) << "each attempt is its own conversion";
    EXPECT_EQ(readFile(doc("Secret (1).odt")), "converted") << "the retries keep the first destination";
    EXPECT_EQ(readFile(doc("Secret.odt")), "taken");
    EXPECT_EQ(tail.messagesContaining("--password").size(), 2u) << "the empty password passes no argument";
    EXPECT_TRUE(tail.messagesContaining("right").empty()) << "passwords never reach the log";
    EXPECT_EQ(delegate.pendingConversions, 0);
}

TEST_F(Workflow, CancellingAQuestionEndsTheFileSilently)
{
    writeFile(doc("Secret.wp5"), wordPerfect(0, 0x42));
    writeFile(doc("Plain.wpd"), wordPerfect());
    writeFile(doc("Plain.odt"), "taken");
    prompter.answer(1); // password prompt: Cancel
    prompter.answer(2); // clash: Cancel
    const LogTail tail;
    open({doc("Secret.wp5"), doc("Plain.wpd")});
    EXPECT_EQ(prompter.shown.size(), 2u);
    EXPECT_TRUE(tail.messagesContaining("convert: ").empty());
    EXPECT_EQ(readFile(doc("Plain.odt")), "taken");
}

TEST_F(Workflow, AnUnknownFileIsTriedAsWordPerfectOnlyWhenConfirmed)
{
    writeFile(doc("mystery.dat"), "nothing recognisable");
    prompter.answer(1); // Cancel
    prompter.answer(0); // Try anyway
    const LogTail tail;
    open({doc("mystery.dat")});
    open({doc("mystery.dat")});
    ASSERT_TRUE(settle());
    for (std::size_t i : {0u, 1u})
        expectAlert(i, Style::informational, "I cannot determine the type of mystery.dat.",
                    "If you believe this is a WordPerfect document, choose \u201CTry anyway\u201D.",
                    {"Try anyway", "Cancel"});
    EXPECT_EQ(prompter.shown.size(), 2u) << "no password is asked: the flags are false";
    EXPECT_EQ(tail.messagesContaining("convert: "),
              std::vector<std::string>{"convert: mystery.dat \u2192 mystery.dat.odt"});
}

TEST_F(Workflow, TheOfficeNoticeComesBeforeTheDestinationUntilSilenced)
{
    ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{});
    writeFile(doc("memo.html"), "<html><body>memo</body></html>");
    writeFile(doc("memo.wp6"), "taken");
    writeFile(doc("book.fodt"),
              "<office:document xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\">");
    writeFile(doc("book.wp6"), "taken");
    prompter.answer(0, {}, false); // notice, box unticked
    prompter.answer(2);            // clash for memo: Cancel
    prompter.answer(2);            // clash for book: Cancel
    prompter.answer(0, {}, true);  // notice, box ticked
    prompter.answer(2);            // clash for memo: Cancel
    open({doc("memo.html"), doc("book.fodt"), doc("memo.html"), doc("memo.html")});
    ASSERT_TRUE(settle());
    const std::string notice =
        "LibreOffice is not installed, so Word, RTF, and HTML files are converted using Pandoc. "
        "This works well for most documents but can lose some formatting.\n\n"
        "Installing the free LibreOffice (libreoffice.org) lets Quillmorph preserve more of "
        "the original layout.";
    ASSERT_EQ(prompter.shown.size(), 6u);
    expectAlert(0, Style::informational, "Converting without LibreOffice", notice, {"OK"});
    EXPECT_EQ(prompter.shown[0].alert.suppressionTitle, "Don\u2019t show this again");
    EXPECT_EQ(prompter.shown[1].alert.message, "A file named \u201Cmemo.wp6\u201D already exists.");
    EXPECT_EQ(prompter.shown[2].alert.message, "A file named \u201Cbook.wp6\u201D already exists.")
        << "OpenDocument text never shows the notice";
    expectAlert(3, Style::informational, "Converting without LibreOffice", notice, {"OK"});
    EXPECT_EQ(prompter.shown[4].alert.message, "A file named \u201Cmemo.wp6\u201D already exists.");
    EXPECT_EQ(prompter.shown[5].alert.message, "A file named \u201Cmemo.wp6\u201D already exists.")
        << "silenced: the last memo goes straight to the clash question";
    EXPECT_TRUE(settings.defaults().value(Settings::hideLibreOfficeNoticeKey).toBool());
}

TEST_F(Workflow, FailuresAreWordedForTheUser)
{
    writeFile(doc("Broken.wpd"), wordPerfect());
    tools.add("wpd2odt", "exit 1");
    open({doc("Broken.wpd")});
    ASSERT_TRUE(settle());
    fs::remove(tools.folder() / "wpd2odt");
    open({doc("Broken.wpd")});
    ASSERT_TRUE(settle());
    ASSERT_EQ(prompter.shown.size(), 2u);
    expectAlert(0, Style::warning, "I was unable to convert Broken.wpd.",
                "It may be a file type that the conversion software cannot read.", {"OK"});
    expectAlert(1, Style::warning, "A required conversion tool is missing.",
                "\u201Cwpd2odt\u201D could not be found among Quillmorph\u2019s converters.", {"OK"});
    EXPECT_TRUE(revealer.revealed.empty());
}

TEST_F(Workflow, QuitWaitsForConversionsAndThenOnlyLogs)
{
    const fs::path go = tools.work("go");
    tools.add("wpd2odt",
              "i=0; while [ ! -e '" + go.string() +
                  "' ] && [ $i -lt 1000 ]; do sleep 0.01; i=$((i+1)); done\n"
                  "case \"$*\" in *Fails*) exit 1;; esac; eval out=\\${$#}; printf done > \"$out\"");
    writeFile(doc("Slow.wpd"), wordPerfect());
    writeFile(doc("Fails.wpd"), wordPerfect());
    bool ready = false;
    QObject::connect(&delegate, &AppDelegate::readyToQuit, [&] { ready = true; });
    open({doc("Slow.wpd"), doc("Fails.wpd")});
    EXPECT_EQ(delegate.pendingConversions, 2);
    const LogTail tail;
    delegate.quit();
    EXPECT_FALSE(ready) << "two conversions are still under way";
    writeFile(doc("Late.wpd"), wordPerfect());
    open({doc("Late.wpd")});
    EXPECT_EQ(tail.messagesContaining("openEvent"),
              std::vector<std::string>{"openEvent ignored after quit: [\"Late.wpd\"]"});
    EXPECT_EQ(delegate.pendingConversions, 2);
    writeFile(go, "");
    ASSERT_TRUE(waitUntil([&] { return ready; }));
    EXPECT_EQ(readFile(doc("Slow.odt")), "done") << "nothing is cut off";
    EXPECT_TRUE(prompter.shown.empty()) << "no alert after quit";
    EXPECT_EQ(tail.messagesContaining("failed: "),
              std::vector<std::string>{
                  "failed: Fails.wpd \u2014 It may be a file type that the conversion software "
                  "cannot read."});
    EXPECT_FALSE(fs::exists(doc("Late.odt")));
}

// A second launch, or a job's failure, can arrive while a question waits for its answer (its
// nested event loop runs meanwhile): it waits its turn, and no question opens over another.
TEST_F(Workflow, WhatArrivesDuringAQuestionWaitsUntilItIsAnswered)
{
    writeFile(doc("Letter.wpd"), wordPerfect());
    writeFile(doc("Letter.odt"), "old");
    writeFile(doc("Second.wpd"), wordPerfect());
    writeFile(doc("Second.odt"), "old");
    const LogTail tail;
    int open = 0;
    int arrivals = 0;
    prompter.onAlert = [&](const Prompter::Alert &) {
        ++open;
        EXPECT_EQ(open, 1) << "a question opened over another";
        if (arrivals++ == 0) {
            delegate.applicationOpen({doc("Second.wpd")});
            EXPECT_EQ(tail.messagesContaining("openEvent: [\"Second.wpd\"]").size(), 0u)
                << "taken up too early";
        }
        --open;
    };
    prompter.answer(0); // Keep Both
    prompter.answer(1); // Replace
    this->open({doc("Letter.wpd")});
    ASSERT_TRUE(settle());
    const auto lines = tail.messagesContaining("");
    const auto at = [&](const std::string &line) {
        return std::find(lines.begin(), lines.end(), line) - lines.begin();
    };
    EXPECT_LT(at("convert: Letter.wpd \u2192 Letter (1).odt"), at("openEvent: [\"Second.wpd\"]"));
    EXPECT_LT(at("openEvent: [\"Second.wpd\"]"), static_cast<long>(lines.size()));
    EXPECT_EQ(readFile(doc("Letter (1).odt")), "converted");
    EXPECT_EQ(readFile(doc("Second.odt")), "converted");
}

TEST_F(Workflow, PathsEndingInASlashNameTheirFolder)
{
    fs::create_directories(doc("Sub"));
    open({fs::path(doc("Sub").string() + "/"), fs::path(doc("Sub").string() + "/.")});
    ASSERT_EQ(prompter.shown.size(), 2u);
    for (std::size_t i : {0u, 1u})
        expectAlert(i, Style::warning, "Sub is a folder, not a document.", "I can only convert files.",
                    {"OK"});
}

TEST_F(Workflow, ReplacingAFolderFailsWithAReason)
{
    writeFile(doc("Letter.wpd"), wordPerfect());
    fs::create_directories(doc("Letter.odt"));
    prompter.answer(1); // Replace
    open({doc("Letter.wpd")});
    ASSERT_TRUE(settle());
    ASSERT_EQ(prompter.shown.size(), 2u);
    expectAlert(1, Style::warning, "I could not convert Letter.wpd.",
                "\u201CLetter.odt\u201D is a folder, so a converted file cannot replace it.", {"OK"});
    EXPECT_TRUE(fs::is_directory(doc("Letter.odt")));
    EXPECT_EQ(delegate.pendingConversions, 0);
}

// Other products of the WordPerfect family write files that claim the document type.
TEST_F(Workflow, APresentationsFileIsRefusedAsNoDocument)
{
    auto slides = wordPerfect(2);
    slides[8] = 0x0A; // not WordPerfect's own product byte
    writeFile(doc("Slides.wpd"), slides);
    open({doc("Slides.wpd")});
    ASSERT_TRUE(settle());
    ASSERT_EQ(prompter.shown.size(), 1u);
    expectAlert(0, Style::warning, "Slides.wpd is a WordPerfect Presentations file, not a document.",
                "I can only convert WordPerfect documents and graphics.", {"OK"});
    EXPECT_FALSE(fs::exists(doc("Slides.odt")));
}

// One open event's outputs are shown together: one reveal for the files that finish together.
TEST_F(Workflow, AnEventsOutputsAreRevealedTogether)
{
    writeFile(doc("A.wpd"), wordPerfect());
    writeFile(doc("B.wpd"), wordPerfect());
    writeFile(doc("C.wpd"), wordPerfect());
    open({doc("A.wpd"), doc("B.wpd"), doc("C.wpd")});
    ASSERT_TRUE(settle());
    ASSERT_TRUE(waitUntil([&] { return revealer.revealed.size() == 3; }));
    ASSERT_EQ(revealer.calls.size(), 1u);
    auto shown = revealer.calls[0];
    std::sort(shown.begin(), shown.end()); // in the order they finished
    EXPECT_EQ(shown, (std::vector<fs::path>{doc("A.odt"), doc("B.odt"), doc("C.odt")}));
}

// A folder stands for its files: nested ones in name order, hidden ones left out.
TEST_F(Workflow, AFolderBringsItsFilesInNameOrder)
{
    fs::create_directories(doc("Archive/sub"));
    fs::create_directories(doc("Archive/.hidden"));
    writeFile(doc("Archive/b.wpd"), wordPerfect());
    writeFile(doc("Archive/a.wpd"), wordPerfect());
    writeFile(doc("Archive/sub/c.wpd"), wordPerfect());
    writeFile(doc("Archive/.secret.wpd"), wordPerfect());
    writeFile(doc("Archive/.hidden/d.wpd"), wordPerfect());
    const LogTail tail;
    open({doc("Archive")});
    ASSERT_TRUE(settle());
    EXPECT_EQ(tail.messagesContaining("open: /"),
              (std::vector<std::string>{"open: " + doc("Archive/a.wpd").string(),
                                        "open: " + doc("Archive/b.wpd").string(),
                                        "open: " + doc("Archive/sub/c.wpd").string()}));
    EXPECT_TRUE(fs::exists(doc("Archive/sub/c.odt")));
    EXPECT_FALSE(fs::exists(doc("Archive/.secret.odt")));
    EXPECT_FALSE(fs::exists(doc("Archive/.hidden/d.odt")));
    EXPECT_TRUE(prompter.shown.empty());
}

TEST_F(Workflow, AFolderOfMoreThanTwentyFilesIsConfirmedFirst)
{
    fs::create_directories(doc("Big"));
    for (int i = 0; i < 21; ++i)
        writeFile(doc("Big/f" + std::to_string(i) + ".wpd"), wordPerfect());
    prompter.answer(1); // Cancel
    open({doc("Big")});
    ASSERT_TRUE(settle());
    ASSERT_EQ(prompter.shown.size(), 1u);
    expectAlert(0, Style::informational, "Convert the 21 files in \u201CBig\u201D?", "",
                {"Convert", "Cancel"});
    EXPECT_FALSE(fs::exists(doc("Big/f0.odt")));
    prompter.answer(0); // Convert
    open({doc("Big")});
    ASSERT_TRUE(settle());
    EXPECT_TRUE(fs::exists(doc("Big/f20.odt")));
}

// "Do the same for the other files of this folder" answers the rest of the folder's clashes.
TEST_F(Workflow, AClashAnswerCanServeTheRestOfTheFolder)
{
    fs::create_directories(doc("Set"));
    for (const char *name : {"a", "b", "c"}) {
        writeFile(doc(std::string("Set/") + name + ".wpd"), wordPerfect());
        writeFile(doc(std::string("Set/") + name + ".odt"), "old");
    }
    writeFile(doc("Loose.wpd"), wordPerfect());
    writeFile(doc("Loose.odt"), "old");
    // The old outputs are files of the folder too, and become WordPerfect files of their own.
    tools.add("odt2wp5", "eval out=\\${$#}; printf wp > \"$out\"");
    prompter.answer(1, {}, true); // Replace, for the whole folder
    prompter.answer(0);           // Keep Both for the loose file: the choice ends with the folder
    open({doc("Set"), doc("Loose.wpd")});
    ASSERT_TRUE(settle());
    ASSERT_EQ(prompter.shown.size(), 2u);
    EXPECT_EQ(prompter.shown[0].alert.suppressionTitle, "Do the same for the other files of this folder");
    EXPECT_EQ(prompter.shown[1].alert.suppressionTitle, "") << "a file dropped alone has no folder";
    for (const char *name : {"a", "b", "c"})
        EXPECT_EQ(readFile(doc(std::string("Set/") + name + ".odt")), "converted") << name;
    EXPECT_EQ(readFile(doc("Loose.odt")), "old");
    EXPECT_EQ(readFile(doc("Loose (1).odt")), "converted");
}

// The main window's list names each file's kind in words and its state; a failed or skipped
// file names no output, and the totals follow.
TEST_F(Workflow, TheListShowsKindsAndStates)
{
    tools.add("wpd2odt", "case \"$*\" in *Bad*|*--password*) exit 1;; esac\n"
                         "eval out=\\${$#}; printf converted > \"$out\"");
    delegate.applicationDidFinishLaunching();
    writeFile(doc("Done.wpd"), wordPerfect());
    writeFile(doc("Bad.wpd"), wordPerfect(2));
    writeFile(doc("Kept.wpd"), wordPerfect());
    writeFile(doc("Kept.odt"), "old");
    writeFile(doc("Secret.wp5"), wordPerfect(0, 0x42));
    auto *list = delegate.mainWindow()->conversionList();
    std::string statusWhileAsked;
    prompter.onAlert = [&](const Prompter::Alert &alert) {
        if (alert.passwordField && alert.style == Style::warning)
            statusWhileAsked = list->topLevelItem(list->topLevelItemCount() - 1)
                                   ->text(MainWindow::statusColumn)
                                   .toStdString();
    };
    prompter.answer(2);          // Cancel the clash for Kept.wpd
    prompter.answer(0, "wrong"); // Secret.wp5: a wrong password,
    prompter.answer(1);          // then Cancel the second prompt
    open({doc("Done.wpd"), doc("Bad.wpd"), doc("Kept.wpd"), doc("Secret.wp5")});
    ASSERT_TRUE(settle());
    ASSERT_TRUE(waitUntil([&] {
        return list->topLevelItemCount() == 4 && !prompter.shown.empty() && prompter.shown.size() >= 4;
    }));
    waitUntil([] { return false; }, 0.2);
    std::map<std::string, std::vector<std::string>> rows;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        const auto *item = list->topLevelItem(i);
        rows[item->text(0).toStdString()] = {item->text(MainWindow::kindColumn).toStdString(),
                                             item->text(MainWindow::outputColumn).toStdString(),
                                             item->text(MainWindow::statusColumn).toStdString()};
    }
    EXPECT_EQ(rows["Done.wpd"], (std::vector<std::string>{"WordPerfect 5.x document", "Done.odt", "Done"}));
    EXPECT_EQ(rows["Bad.wpd"][0], "WordPerfect 6 document");
    EXPECT_EQ(rows["Bad.wpd"][1], "") << "a failed file names no output";
    EXPECT_EQ(rows["Bad.wpd"][2].rfind("Failed \u2014 ", 0), 0u) << rows["Bad.wpd"][2];
    EXPECT_EQ(rows["Kept.wpd"], (std::vector<std::string>{"WordPerfect 5.x document", "", "Skipped"}));
    EXPECT_EQ(rows["Secret.wp5"],
              (std::vector<std::string>{"WordPerfect 5.x document, encrypted", "", "Skipped"}));
    EXPECT_EQ(statusWhileAsked, "Waiting for the password");
    EXPECT_EQ(delegate.mainWindow()->totals()->text(), "1 converted, 1 failed, 2 skipped");
}
