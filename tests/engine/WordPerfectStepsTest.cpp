#include "EngineRun.h"
#include "FakeTools.h"
#include "support/ConversionError.h"
#include "engine/Converter.h"
#include "tools/OfficeImport.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

class ToWordPerfect : public ::testing::Test {
protected:
    ToWordPerfect()
    {
        setenv("TMPDIR", tools.work("tmp").c_str(), 1);
        fs::create_directories(tools.work("tmp"));
        // The suite stand-in writes the expected ODT and records where.
        writeScript(tools.work("soffice"), "name=$(basename \"$7\"); printf odt > \"$6/${name%.*}.odt\"; "
                                           "echo \"$6\" > '" +
                                               tools.work("workfolder").string() + "'");
        ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{tools.work("soffice")});
    }
    ~ToWordPerfect() override
    {
        unsetenv("TMPDIR");
        ConversionTools::overrideLibreOfficePlaces(std::nullopt);
    }
    std::string convert(const Job &job, const fs::path &to) { return outcomeText(performAndWait(job, to)); }
    fs::path workFolder() const
    {
        std::string text = readFile(tools.work("workfolder"));
        while (!text.empty() && text.back() == '\n')
            text.pop_back();
        return text;
    }
    FakeTools tools;
};

} // namespace

TEST_F(ToWordPerfect, OdtToWPRunsTheConverterWithTheTargetFlag)
{
    tools.add("odt2wp5", "printf wp > \"$3\"");
    writeFile(tools.work("Letter.wp5"), "older");
    EXPECT_EQ(convert(JobCase::odtToWP{tools.work("Letter.odt"), WPTarget::wp5}, tools.work("Letter.wp5")),
              "success");
    EXPECT_EQ(convert(JobCase::odtToWP{tools.work("Letter.odt"), WPTarget::wp6}, tools.work("Letter.wp6")),
              "success");
    EXPECT_EQ(tools.argsOf("odt2wp5"), "--wp5 " + tools.work("Letter.odt").string() + " " +
                                           tools.work("Letter.wp5").string() + "\n--wp6 " +
                                           tools.work("Letter.odt").string() + " " +
                                           tools.work("Letter.wp6").string() + "\n");
    EXPECT_EQ(readFile(tools.work("Letter.wp5")), "wp");
}

TEST_F(ToWordPerfect, OnlyANonEmptyFileCountsAndAStaleOneNeverDoes)
{
    writeFile(tools.work("Letter.wp6"), "older");
    tools.add("odt2wp5", "[ -e \"$3\" ] && echo stale > '" + tools.work("seen").string() + "'; : > \"$3\"");
    EXPECT_EQ(convert(JobCase::odtToWP{tools.work("Letter.odt"), WPTarget::wp6}, tools.work("Letter.wp6")),
              "conversionFailed(\"\")");
    EXPECT_FALSE(fs::exists(tools.work("seen")));
    EXPECT_FALSE(fs::exists(tools.work("Letter.wp6"))) << "the empty result is removed";
}

TEST_F(ToWordPerfect, OfficeToWPRemovesItsWorkFolderHoweverItEnds)
{
    writeFile(tools.work("Memo.docx"), "PK\x03\x04");
    struct Row {
        const char *tool; // odt2wp5's body; empty: missing
        const char *outcome;
    };
    const Row rows[] = {
        {"printf wp > \"$3\"", "success"},
        {"exit 1", "conversionFailed(\"\")"},
        {"", "toolMissing(\"odt2wp5\")"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.outcome);
        fs::remove(tools.folder() / "odt2wp5");
        if (*row.tool)
            tools.add("odt2wp5", row.tool);
        EXPECT_EQ(
            convert(JobCase::officeToWP{tools.work("Memo.docx"), WPTarget::wp6}, tools.work("Memo.wp6")),
            row.outcome);
        EXPECT_FALSE(workFolder().empty());
        EXPECT_FALSE(fs::exists(workFolder())) << "the work folder is gone";
    }
}

TEST_F(ToWordPerfect, AFailedImportKeepsItsWorkFolderAndStopsThere)
{
    writeScript(tools.work("soffice"),
                "echo \"$6\" > '" + tools.work("workfolder").string() + "'; echo broken >&2");
    tools.add("odt2wp5", "printf wp > \"$3\"");
    writeFile(tools.work("Memo.docx"), "PK\x03\x04");
    EXPECT_EQ(convert(JobCase::officeToWP{tools.work("Memo.docx"), WPTarget::wp6}, tools.work("Memo.wp6")),
              "officeToolFailed(\"broken\n\")");
    EXPECT_TRUE(fs::exists(workFolder()));
    EXPECT_FALSE(fs::exists(tools.argsFile("odt2wp5"))) << "odt2wp5 never ran";
}
