// What a conversion cannot carry, per kind of loss, with the real converters: the app's list
// says "Done, with losses: …" on the file's row, the companion says it on the file's line and in
// its report, and a conversion that loses nothing says neither.

#include "CompanionRun.h"
#include "OdtFile.h"
#include "ScriptedPrompter.h"
#include "TestSupport.h"
#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "richtext/Losses.h"
#include "settings/Settings.h"
#include "tools/ConversionTools.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QTreeWidget>

#include <sstream>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

std::string flatOdt(const std::string &body, const std::string &masterStyles = {})
{
    return Odt{.masterStyles = masterStyles, .body = body}.flat();
}

std::string pictureOdt(const std::string &base64)
{
    return flatOdt("<text:p>A picture: <draw:frame svg:width=\"1in\" svg:height=\"1in\"><draw:image>"
                   "<office:binary-data>" +
                   base64 + "</office:binary-data></draw:image></draw:frame></text:p>");
}

// A one-pixel GIF, which goes into WordPerfect as a graphic of its own.
const char gifBase64[] = "R0lGODlhAQABAIAAAAAAAP///yH5BAEAAAAALAAAAAABAAEAAAICRAEAOw==";
// A placeable Windows metafile that draws nothing: WordPerfect graphics cannot hold metafiles.
const char metafileBase64[] = "183GmgAAAAAAAGQAZACgBQAAAACxUgEACQAAAwwAAAAAAAMAAAAAAAMAAAAAAA==";

// Our own WordPerfect writer makes the WordPerfect sources.
std::string wordPerfect(const fs::path &folder, const std::string &odt, const std::string &version)
{
    const fs::path source = folder / "source.fodt";
    const fs::path written = folder / "written.wp";
    writeFile(source, odt);
    const auto odt2wp5 = ConversionTools::toolURL("odt2wp5");
    if (!odt2wp5)
        return {};
    ConversionTools::run(*odt2wp5, {version, source.string(), written.string()}, "odt2wp5");
    std::string bytes = readFile(written);
    fs::remove(source);
    fs::remove(written);
    return bytes;
}

// The graphic a WordPerfect 6 document embeds, with its records overwritten: libwpg cannot read it.
std::string withUnreadablePicture(std::string document)
{
    const std::size_t graphic = document.find("\xFFWPC", 1);
    if (graphic == std::string::npos || graphic + 60 > document.size())
        return {};
    for (std::size_t i = graphic + 16; i < graphic + 60; ++i)
        document[i] = '\xEE';
    return document;
}

struct Case {
    std::string name;
    std::string file;
    std::function<std::string(const fs::path &work)> bytes;
    std::vector<std::string> options; // the companion's; the app gets the same targets from its settings
    std::string output;
    std::string loss; // empty: nothing is lost
};

std::vector<Case> cases()
{
    using namespace richtext;
    const std::string czech = flatOdt("<text:p>\u0160\u00E1rka drove a \u0160koda</text:p>");
    const auto unreadablePicture = [](const fs::path &work) {
        return withUnreadablePicture(wordPerfect(work, pictureOdt(gifBase64), "--wp6"));
    };
    return {
        {"a character Mac Roman lacks",
         "Czech.wp5",
         [czech](const fs::path &work) { return wordPerfect(work, czech, "--wp5"); },
         {"--document-target", "rtf", "--rtf-charset", "mac"},
         "Czech.rtf",
         std::string(loss::charactersMacRoman)},
        {"the same characters in Windows ANSI",
         "Czech.wp5",
         [czech](const fs::path &work) { return wordPerfect(work, czech, "--wp5"); },
         {"--document-target", "rtf", "--rtf-charset", "ansi"},
         "Czech.rtf",
         ""},
        {"a character WordPerfect lacks",
         "Smile.fodt",
         [](const fs::path &) { return flatOdt("<text:p>Smile \U0001F600 please</text:p>"); },
         {"--wordperfect-target", "wp6"},
         "Smile.wp6",
         std::string(loss::charactersWordPerfect)},
        // Its text runs on past the first page, which no hard break ends.
        {"a first-page header",
         "Cover.fodt",
         [](const fs::path &) {
             std::string body;
             for (int line = 0; line < 80; ++line)
                 body += "<text:p>Body text</text:p>";
             return flatOdt(
                 body,
                 "<style:master-page style:name=\"Standard\"><style:header><text:p>Every page</text:p>"
                 "</style:header><style:header-first><text:p>Cover heading</text:p></style:header-first>"
                 "</style:master-page>");
         },
         {"--wordperfect-target", "wp5"},
         "Cover.wp5",
         std::string(loss::firstPageHeaders)},
        {"a right-to-left paragraph",
         "Hebrew.fodt",
         [](const fs::path &) {
             return Odt{.automaticStyles = R"(<style:style style:name="R" style:family="paragraph">
                 <style:paragraph-properties style:writing-mode="rl-tb"/></style:style>)",
                        .body = "<text:p text:style-name=\"R\">\u05E9\u05DC\u05D5\u05DD</text:p>"}
                 .flat();
         },
         {"--wordperfect-target", "wp5"},
         "Hebrew.wp5",
         std::string(loss::rightToLeft)},
        {"a picture WordPerfect cannot hold",
         "Metafile.fodt",
         [](const fs::path &) { return pictureOdt(metafileBase64); },
         {"--wordperfect-target", "wp6"},
         "Metafile.wp6",
         std::string(loss::pictureFormats)},
        {"a picture that cannot be read, to ODT",
         "Broken.wpd",
         unreadablePicture,
         {"--document-target", "odt"},
         "Broken.odt",
         std::string(loss::unreadablePictures)},
        {"a picture that cannot be read, to RTF",
         "Broken.wpd",
         unreadablePicture,
         {"--document-target", "rtf"},
         "Broken.rtf",
         std::string(loss::unreadablePictures)},
        {"a picture that is read",
         "Picture.wpd",
         [](const fs::path &work) { return wordPerfect(work, pictureOdt(gifBase64), "--wp6"); },
         {"--document-target", "odt"},
         "Picture.odt",
         ""},
    };
}

class Losses : public ::testing::Test {
protected:
    Losses() { usePrivateLog(); }

    // The source of a case in a folder of its own.
    fs::path prepare(const Case &item, const std::string &folderName)
    {
        const fs::path folder = work / folderName;
        fs::create_directories(folder);
        const std::string bytes = item.bytes(folder);
        EXPECT_FALSE(bytes.empty()) << "the fixture could not be made";
        writeFile(folder / item.file, bytes);
        return folder / item.file;
    }

    TempDir work;
};

} // namespace

TEST_F(Losses, TheAppsRowSaysWhatWasLost)
{
    int n = 0;
    for (const Case &item : cases()) {
        SCOPED_TRACE(item.name);
        const fs::path source = prepare(item, "app" + std::to_string(++n));
        Settings settings(std::make_unique<QSettings>(
            QString::fromStdString((work / "settings.conf").string()), QSettings::IniFormat));
        for (std::size_t i = 0; i + 1 < item.options.size(); i += 2) {
            const std::string key = item.options[i].substr(2);
            const QString name = key == "document-target"      ? Settings::documentTargetKey
                                 : key == "wordperfect-target" ? Settings::wordPerfectTargetKey
                                 : key == "rtf-charset"        ? Settings::rtfCharsetKey
                                                               : Settings::graphicTargetKey;
            settings.defaults().setValue(name, QString::fromStdString(item.options[i + 1]));
        }
        ScriptedPrompter prompter;
        RecordingRevealer revealer;
        const LogTail log;
        AppDelegate delegate(prompter, revealer, settings);
        delegate.applicationDidFinishLaunching();
        delegate.applicationOpen({source});
        ASSERT_TRUE(
            waitUntil([&] { return delegate.pendingConversions == 0 && revealer.revealed.size() == 1; }, 60));
        const QTreeWidget *list = delegate.mainWindow()->conversionList();
        ASSERT_EQ(list->topLevelItemCount(), 1);
        const QTreeWidgetItem *row = list->topLevelItem(0);
        EXPECT_EQ(row->text(MainWindow::outputColumn).toStdString(), item.output);
        EXPECT_EQ(row->text(MainWindow::statusColumn).toStdString(),
                  item.loss.empty() ? "Done" : "Done, with losses: " + item.loss);
        EXPECT_EQ(delegate.mainWindow()->totals()->text().toStdString(),
                  item.loss.empty() ? "1 converted, 0 failed" : "1 converted (1 with losses), 0 failed");
        EXPECT_EQ(log.messagesContaining("converted, with losses: " + item.loss).size(),
                  item.loss.empty() ? 0u : 1u);
        EXPECT_TRUE(prompter.shown.empty()) << "a loss is said on the row, not in a dialog";
    }
}

TEST_F(Losses, TheCompanionSaysWhatWasLostOnTheFilesLineAndInItsReport)
{
    int n = 0;
    for (const Case &item : cases()) {
        SCOPED_TRACE(item.name);
        const fs::path source = prepare(item, "cli" + std::to_string(++n));
        Settings settings(std::make_unique<QSettings>(
            QString::fromStdString((work / "settings.conf").string()), QSettings::IniFormat));
        const fs::path report = source.parent_path() / "report.jsonl";
        std::vector<std::string> args = item.options;
        args.insert(args.end(), {"--report", report.string(), source.string()});
        ScriptedPasswords passwords({});
        std::ostringstream out;
        EXPECT_EQ(runCompanion(args, settings, passwords, out, 1), 0) << "a loss is no failure\n"
                                                                      << out.str();
        const std::string line =
            "[1/1] " + item.file + " \u2192 " + item.output + ": converted, with losses: " + item.loss;
        if (item.loss.empty()) {
            EXPECT_NE(out.str().find("[1/1] converted " + item.file + " \u2192 " + item.output + "\n"),
                      std::string::npos)
                << out.str();
            EXPECT_NE(out.str().find("1 converted, 0 failed"), std::string::npos) << out.str();
        } else {
            EXPECT_NE(out.str().find(line + "\n"), std::string::npos) << out.str();
            EXPECT_NE(out.str().find("1 converted (1 with losses), 0 failed"), std::string::npos)
                << out.str();
        }
        const std::string entry = readFile(report);
        if (item.loss.empty()) {
            EXPECT_NE(entry.find("\"status\":\"converted\""), std::string::npos) << entry;
            EXPECT_NE(entry.find("\"losses\":[]"), std::string::npos) << entry;
        } else {
            EXPECT_NE(entry.find("\"status\":\"converted with losses\""), std::string::npos) << entry;
            EXPECT_NE(entry.find("\"losses\":[\"" + item.loss + "\"]"), std::string::npos) << entry;
        }
    }
}
