#include "CompanionRun.h"
#include "FakeTools.h"
#include "settings/Settings.h"
#include "tools/OfficeImport.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <deque>
#include <set>
#include <cstdlib>
#include <sstream>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

std::vector<std::uint8_t> wordPerfectHeader(bool encrypted)
{
    std::vector<std::uint8_t> bytes{0xFF, 0x57, 0x50, 0x43, 16, 0, 0, 0, 1, 0x0A, 0, 1, 0, 0, 0, 0};
    if (encrypted)
        bytes[12] = 0x42;
    return bytes;
}

class CompanionRun : public ::testing::Test {
protected:
    CompanionRun()
        : settings(std::make_unique<QSettings>(QString::fromStdString((tools.work("settings.conf")).string()),
                                               QSettings::IniFormat))
    {
        fs::create_directories(docs());
        // Encrypted fixtures (Secret*, Other*) convert only with the password "right".
        tools.add("wpd2odt",
                  "case \"$*\" in '--password right '*) ;; *--password*|*Secret*|*Other*) exit 1;; esac\n"
                  "eval out=\\${$#}; printf converted > \"$out\"");
    }
    fs::path docs() const { return tools.work("docs"); }

    int run(const std::vector<std::string> &args, PasswordSource &passwords)
    {
        return runCompanion(args, settings, passwords, out);
    }

    FakeTools tools;
    Settings settings;
    std::ostringstream out;
};

} // namespace

TEST(CompanionArguments, ParsesOptionsAndRefusesNonsense)
{
    const auto options = std::get<CompanionOptions>(
        parseArguments({"--dry-run", "--replace", "--password=pw", "-j", "3", "--document-target", "rtf",
                        "--try-unknown", "a.wpd", "--", "--odd-name.wpd"},
                       8));
    EXPECT_TRUE(options.dryRun && options.replace && options.tryUnknown);
    EXPECT_EQ(options.password, "pw");
    EXPECT_EQ(options.jobs, 3);
    EXPECT_EQ(options.documentTarget, "rtf");
    EXPECT_EQ(options.inputs, (std::vector<fs::path>{fs::absolute("a.wpd"), fs::absolute("--odd-name.wpd")}));

    EXPECT_EQ(std::get<CompanionOptions>(parseArguments({"x"}, 6)).jobs, 6) << "default: the cores";
    EXPECT_TRUE(std::holds_alternative<HelpRequest>(parseArguments({"a", "--help"}, 1)));
    using Args = std::vector<std::string>;
    for (const Args &bad :
         {Args{}, Args{"--jobs", "0", "a"}, Args{"--jobs", "two", "a"}, Args{"--bogus", "a"},
          Args{"a", "--password"}, Args{"--document-target", "pdf", "a"}, Args{"--shard", "3/2", "a"}}) {
        EXPECT_TRUE(std::holds_alternative<UsageError>(parseArguments(bad, 1)));
    }
}

TEST_F(CompanionRun, DryRunDescribesEveryFileOfAFolder)
{
    writeFile(docs() / "Letter.wpd", wordPerfectHeader(false));
    writeFile(docs() / "Letter.odt", "already here");
    fs::create_directories(docs() / "sub");
    writeFile(docs() / "sub" / "Secret.wp5", wordPerfectHeader(true));
    writeFile(docs() / "sub" / "notes.dat", "nothing known");
    ScriptedPasswords none({});
    EXPECT_EQ(run({"--dry-run", docs().string()}, none), 0);
    const std::string d = docs().string();
    EXPECT_EQ(
        out.str(),
        d +
            "/Letter.odt\topenDocument\tno WordPerfect prefix\tencrypted=no\twp6=no\todtToWP \u2192 "
            "Letter.wp6\n" +
            d +
            "/Letter.wpd\twpDocument\tWordPerfect 5.x\tencrypted=no\twp6=no\twpToODT \u2192 Letter "
            "(1).odt\n" +
            d +
            "/sub/Secret.wp5\twpDocument\tWordPerfect 5.x\tencrypted=yes\twp6=no\twpToODT \u2192 "
            "Secret.odt\n" +
            d +
            "/sub/notes.dat\tunknown\tno WordPerfect prefix\tencrypted=no\twp6=no\tskipped: unknown type "
            "(--try-unknown converts it as a WordPerfect document)\n");
    EXPECT_TRUE(none.asked.empty());
    EXPECT_FALSE(fs::exists(docs() / "Letter (1).odt")) << "a dry run converts nothing";
}

TEST_F(CompanionRun, ConvertsKeepingBothUnlessToldToReplace)
{
    writeFile(docs() / "Letter.wpd", wordPerfectHeader(false));
    writeFile(docs() / "Letter.odt", "older");
    ScriptedPasswords none({});
    EXPECT_EQ(run({docs() / "Letter.wpd"}, none), 0);
    EXPECT_EQ(readFile(docs() / "Letter.odt"), "older");
    EXPECT_EQ(readFile(docs() / "Letter (1).odt"), "converted");
    EXPECT_NE(out.str().find("[1/1] converted Letter.wpd \u2192 Letter (1).odt"), std::string::npos)
        << out.str();

    EXPECT_EQ(run({"--replace", docs() / "Letter.wpd"}, none), 0);
    EXPECT_EQ(readFile(docs() / "Letter.odt"), "converted");
    EXPECT_FALSE(fs::exists(docs() / "Letter (2).odt"));
}

TEST_F(CompanionRun, TwoInputsNeverShareAnOutput)
{
    writeFile(docs() / "Letter.wpd", wordPerfectHeader(false));
    writeFile(docs() / "Letter.wp5", wordPerfectHeader(false));
    ScriptedPasswords none({});
    EXPECT_EQ(run({"--jobs", "2", docs().string()}, none), 0);
    EXPECT_TRUE(fs::exists(docs() / "Letter.odt"));
    EXPECT_TRUE(fs::exists(docs() / "Letter (1).odt"));
    EXPECT_NE(out.str().find("2 converted, 0 failed, 0 skipped"), std::string::npos) << out.str();
}

TEST_F(CompanionRun, AsksAgainAfterAWrongPasswordUntilRightOrSkipped)
{
    writeFile(docs() / "Secret.wpd", wordPerfectHeader(true));
    writeFile(docs() / "Other.wpd", wordPerfectHeader(true));
    ScriptedPasswords answers({"wrong", "", "right", std::nullopt});
    EXPECT_EQ(run({"--jobs", "1", docs() / "Secret.wpd", docs() / "Other.wpd"}, answers), 0);
    EXPECT_EQ(answers.asked, (std::vector<std::string>{"Secret.wpd", "Secret.wpd (retry)",
                                                       "Secret.wpd (retry)", "Other.wpd"}));
    EXPECT_EQ(readFile(docs() / "Secret.odt"), "converted");
    EXPECT_FALSE(fs::exists(docs() / "Other.odt"));
    EXPECT_NE(out.str().find("1 converted, 0 failed, 1 skipped"), std::string::npos) << out.str();
}

TEST_F(CompanionRun, FailuresAreCountedWithTheirReasons)
{
    writeFile(docs() / "Secret.wpd", wordPerfectHeader(true));
    auto wp6 = wordPerfectHeader(true);
    wp6[10] = 2;
    writeFile(docs() / "Locked6.wpd", wp6);
    ScriptedPasswords none({});
    EXPECT_EQ(
        run({"--password", "wrong", docs() / "Secret.wpd", docs() / "Locked6.wpd", docs() / "missing.wpd"},
            none),
        1);
    const std::string text = out.str();
    EXPECT_NE(text.find("0 converted, 3 failed, 0 skipped"), std::string::npos) << text;
    EXPECT_NE(text.find("failed: Secret.wpd: Incorrect password. Secret.wpd could not be decrypted."),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("Locked6.wpd is an encrypted WordPerfect 6 file that I cannot open."),
              std::string::npos);
    EXPECT_NE(text.find("I could not read missing.wpd. " + testing_support::systemMessage(ENOENT)),
              std::string::npos);
    EXPECT_TRUE(none.asked.empty()) << "--password is not asked again";
}

// --output-dir mirrors the folders below the argument and never writes beside the inputs;
// --skip-existing makes nothing again that is up to date.
TEST_F(CompanionRun, WritesIntoAnOutputTreeAndSkipsWhatIsUpToDate)
{
    fs::create_directories(docs() / "archive" / "sub");
    writeFile(docs() / "archive" / "Letter.wpd", wordPerfectHeader(false));
    writeFile(docs() / "archive" / "sub" / "Memo.wpd", wordPerfectHeader(false));
    const fs::path tree = tools.work("out");
    ScriptedPasswords none({});
    EXPECT_EQ(run({"--output-dir", tree.string(), "--skip-existing", (docs() / "archive").string()}, none),
              0);
    EXPECT_EQ(readFile(tree / "Letter.odt"), "converted");
    EXPECT_EQ(readFile(tree / "sub" / "Memo.odt"), "converted");
    EXPECT_FALSE(fs::exists(docs() / "archive" / "Letter.odt")) << "nothing beside the inputs";
    this->out.str("");
    EXPECT_EQ(run({"--output-dir", tree.string(), "--skip-existing", (docs() / "archive").string()}, none),
              0);
    EXPECT_NE(this->out.str().find("0 converted, 0 failed, 2 skipped"), std::string::npos) << this->out.str();
    EXPECT_NE(this->out.str().find("Letter.wpd: up to date"), std::string::npos) << this->out.str();
    EXPECT_FALSE(fs::exists(tree / "Letter (1).odt")) << "no numbered copy on a repeated run";
}

// The report has one whole JSON line per input; shards 1/2 and 2/2 together take every file once.
TEST_F(CompanionRun, ReportsEachFileAndShardsSplitTheWork)
{
    for (int i = 0; i < 12; ++i)
        writeFile(docs() / ("Letter " + std::to_string(i) + ".wpd"), wordPerfectHeader(false));
    writeFile(docs() / "notes.dat", "nothing known");
    const fs::path report = tools.work("run.jsonl");
    ScriptedPasswords none({});
    EXPECT_EQ(run({"--report", report.string(), docs().string()}, none), 0);
    const std::string text = readFile(report);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 13) << text;
    const std::string check = "python3 -c 'import json,sys\n"
                              "rows=[json.loads(l) for l in open(sys.argv[1]) if l.strip()]\n"
                              "assert len(rows)==13\n"
                              "assert sum(r[\"status\"]==\"converted\" for r in rows)==12\n"
                              "assert sum(r[\"status\"]==\"skipped\" for r in rows)==1\n"
                              "assert all(len(r[\"sha256\"])==64 for r in rows)' " +
                              report.string();
    EXPECT_EQ(std::system(check.c_str()), 0) << text;

    std::multiset<std::string> taken;
    for (const char *shard : {"1/2", "2/2"}) {
        out.str("");
        run({"--dry-run", "--shard", shard, docs().string()}, none);
        std::istringstream lines(out.str());
        for (std::string line; std::getline(lines, line);)
            taken.insert(line.substr(0, line.find('\t')));
    }
    EXPECT_EQ(taken.size(), 13u + 12u) << "every file once (the outputs of the first run are files too)";
    EXPECT_EQ(std::set<std::string>(taken.begin(), taken.end()).size(), taken.size());
}

// Office documents reach LibreOffice many per start, ahead of their turn; one it refuses fails
// alone; a repeated run with --skip-existing gives LibreOffice only what has no output yet.
TEST_F(CompanionRun, OfficeDocumentsShareLibreOfficeStartsAndARefusedOneFailsAlone)
{
    tools.add("odt2wp5", "eval out=\\${$#}; printf wp > \"$out\"");
    writeScript(tools.work("suite/soffice"), R"sh(echo "$*" >> "$(dirname "$0")/calls"
shift 5; outdir=$1; shift
for f in "$@"; do
    name=$(basename "$f")
    case "$(cat "$f")" in *FAIL*) echo "source file could not be loaded" >&2 ;; *) cp "$f" "$outdir/${name%.*}.odt" ;; esac
done
)sh");
    ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{tools.work("suite/soffice")});
    fs::create_directories(tools.work("tmp"));
    setenv("TMPDIR", tools.work("tmp").c_str(), 1);
    fs::create_directories(docs() / "office");
    for (int i = 0; i < 10; ++i)
        writeFile(docs() / "office" / ("Note " + std::to_string(i) + ".rtf"),
                  "{\\rtf1 note " + std::to_string(i) + "}");
    writeFile(docs() / "office" / "Broken.rtf", "{\\rtf1 FAIL}");
    const fs::path tree = tools.work("out");
    const auto calls = [&] {
        std::istringstream lines(readFile(tools.work("suite/calls")));
        std::vector<std::string> starts;
        for (std::string line; std::getline(lines, line);)
            starts.push_back(line);
        return starts;
    };
    ScriptedPasswords none({});
    EXPECT_EQ(
        run({"--jobs", "2", "--skip-existing", "--output-dir", tree.string(), (docs() / "office").string()},
            none),
        1);
    EXPECT_NE(out.str().find("10 converted, 1 failed, 0 skipped"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("source file could not be loaded"), std::string::npos) << out.str();
    EXPECT_EQ(readFile(tree / "Note 7.wp6"), "wp");
    EXPECT_LT(calls().size(), 6u) << "eleven documents, a retry alone, and few starts";
    EXPECT_TRUE(fs::is_empty(tools.work("tmp"))) << "no profile, batch or ODT left behind";

    out.str("");
    const std::size_t before = calls().size();
    EXPECT_EQ(
        run({"--jobs", "2", "--skip-existing", "--output-dir", tree.string(), (docs() / "office").string()},
            none),
        1);
    EXPECT_NE(out.str().find("0 converted, 1 failed, 10 skipped"), std::string::npos) << out.str();
    ASSERT_EQ(calls().size(), before + 1) << "one start, for the document without an output";
    EXPECT_NE(calls().back().find("--outdir"), std::string::npos);
    EXPECT_EQ(calls().back().find("Note"), std::string::npos) << calls().back();
    EXPECT_TRUE(fs::is_empty(tools.work("tmp")));
    unsetenv("TMPDIR");
    ConversionTools::overrideLibreOfficePlaces(std::nullopt);
}
