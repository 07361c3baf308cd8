#include "OdtFile.h"
#include "TestSupport.h"
#include "support/ConversionError.h"
#include "support/PlatformError.h"
#include "tools/OfficeImport.h"

#include <gtest/gtest.h>

#include <QDir>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

// A stand-in suite converter that records its arguments and, unless told
// otherwise, writes the expected ODT into --outdir.
class FakeSuite : public ::testing::Test {
protected:
    FakeSuite()
    {
        setenv("TMPDIR", (dir / "tmp").c_str(), 1);
        fs::create_directories(dir / "tmp");
        fs::create_directories(dir / "docs");
    }
    ~FakeSuite() override
    {
        unsetenv("TMPDIR");
        ConversionTools::overrideLibreOfficePlaces(std::nullopt);
    }
    void suite(const std::string &body)
    {
        writeScript(dir / "soffice", "for a in \"$@\"; do echo \"$a\"; done > '" + (dir / "args").string() +
                                         "'\n" + "outdir=$6; name=$(basename \"$7\"); stem=${name%.*}\n" +
                                         body);
        ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{dir / "absent", dir / "soffice"});
    }
    std::vector<std::string> arguments() const
    {
        std::vector<std::string> lines;
        std::istringstream in(readFile(dir / "args"));
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }
    std::string failureOf(const fs::path &input)
    {
        try {
            ConversionTools::officeToODT(input);
        } catch (const ConversionError &error) {
            return error.what();
        }
        return "converted";
    }
    TempDir dir;
};

} // namespace

TEST_F(FakeSuite, LibreOfficeIsFoundOnlyWhereExecutable)
{
    writeFile(dir / "soffice", "#!/bin/sh\n");
    ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{dir / "soffice"});
    EXPECT_EQ(ConversionTools::libreOfficeURL(), std::nullopt) << "no execute permission: no suite";
    suite("exit 0");
    EXPECT_EQ(ConversionTools::libreOfficeURL(), dir / "soffice");
    ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{});
    EXPECT_EQ(ConversionTools::libreOfficeURL(), std::nullopt);
}

TEST_F(FakeSuite, RunsTheSuiteWithItsSevenArgumentsAndAPrivateProfile)
{
    suite("printf odt > \"$outdir/$stem.odt\"; exit 3");
    writeFile(dir / "docs" / "Report.final.rtf", "{\\rtf1 x}");
    const fs::path odt = ConversionTools::officeToODT(dir / "docs" / "Report.final.rtf");
    const fs::path work = odt.parent_path();
    EXPECT_EQ(odt.filename(), "Report.final.odt");
    EXPECT_EQ(work.parent_path(), dir / "tmp");
    EXPECT_TRUE(work.filename().string().starts_with("quillmorph-"));
    EXPECT_EQ(work.filename().string().size(), std::string("quillmorph-").size() + 36) << "a UUID";
    EXPECT_EQ(readFile(odt), "odt") << "a failing status with the file there is success";
    EXPECT_EQ(arguments(),
              (std::vector<std::string>{"-env:UserInstallation=file://" + (work / "loprofile").string(),
                                        "--headless", "--convert-to", "odt", "--outdir", work.string(),
                                        (dir / "docs" / "Report.final.rtf").string()}));
    const fs::path again = ConversionTools::officeToODT(dir / "docs" / "Report.final.rtf");
    EXPECT_NE(again.parent_path(), work) << "every conversion has its own folder and profile";
}

TEST_F(FakeSuite, NoOutputIsTheConvertersOwnWords)
{
    writeFile(dir / "docs" / "a.docx", "PK\x03\x04");
    struct Row {
        const char *body;
        const char *failure;
    };
    const Row rows[] = {
        {"echo 'Error: source file could not be loaded' >&2; exit 0",
         "officeToolFailed(\"Error: source file could not be loaded\n\")"},
        {"exit 0", "officeToolFailed(\"\")"},
        {"printf '\\377\\376' >&2", "officeToolFailed(\"LibreOffice produced no output\")"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.body);
        suite(row.body);
        EXPECT_EQ(failureOf(dir / "docs" / "a.docx"), row.failure);
    }
    std::size_t left = 0;
    for ([[maybe_unused]] const auto &entry : fs::directory_iterator(dir / "tmp"))
        ++left;
    EXPECT_EQ(left, 3u) << "a failed import leaves its work folder behind";
}

TEST_F(FakeSuite, PlainTextThatIsNotUtf8ReachesTheSuiteAsUtf8)
{
    // The stand-in answers with the bytes it was handed.
    suite("cat \"$7\" > \"$outdir/$stem.odt\"");
    struct Row {
        const char *name, *bytes, *handed;
    };
    const Row rows[] = {
        {"notes.txt", "caf\xe9 \xd6l\n", "caf\xc3\xa9 \xc3\x96l\n"},      // Latin-1: read as such
        {"utf8.txt", "caf\xc3\xa9\n", "caf\xc3\xa9\n"},                   // already UTF-8: as it is
        {"page.rtf", "{\\rtf1 caf\\'e9 \xe9}", "{\\rtf1 caf\\'e9 \xe9}"}, // not plain text
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        writeFile(dir / "docs" / row.name, row.bytes);
        const fs::path odt = ConversionTools::officeToODT(dir / "docs" / row.name);
        EXPECT_EQ(readFile(odt), row.handed);
        EXPECT_EQ(readFile(dir / "docs" / row.name), row.bytes) << "the input itself is left alone";
    }
}

TEST(PandocReader, ComesFromTheContentElseTheExtension)
{
    TempDir dir;
    struct Row {
        const char *name;
        std::string bytes;
        std::optional<std::string> reader;
    };
    const Row rows[] = {
        {"a.txt", "PK\x03\x04 zipped", "docx"},
        {"a.odt", "PK\x03\x04 zipped", "odt"},
        {"a.txt", "{\\rtf1 hi}", "rtf"},
        {"a.doc", "<!DOCTYPE html><p>x</p>", "html"},
        {"a.doc", std::string("\xD0\xCF\x11\xE0\xA1\xB1", 6), std::nullopt},
        {"a.doc", "plain words", std::nullopt},
        {"a.docx", "plain words", "docx"},
        {"a.htm", "plain words", "html"},
        {"a.txt", "plain words", "text"},
        {"notes", "plain words", "text"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name + (" with " + row.bytes.substr(0, 8)));
        writeFile(dir / row.name, row.bytes);
        EXPECT_EQ(ConversionTools::pandocReaderFor(dir / row.name), row.reader);
    }
}

TEST_F(FakeSuite, WithoutTheSuitePandocConvertsKeepsPropertiesOutOfTheTextAndRefusesWord)
{
    if (!fs::exists("/usr/bin/pandoc"))
        GTEST_SKIP() << "pandoc is not installed (scripts/setup installs it)";
    ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{});
    writeFile(dir / "docs" / "Old.doc", std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8));
    EXPECT_EQ(
        failureOf(dir / "docs" / "Old.doc"),
        "officeToolFailed(\"Word 97\u20132003 documents can only be read when LibreOffice is installed.\")");

    writeFile(dir / "docs" / "notes.txt", "caf\xe9 & <tea>\r\nsecond line\n");
    const fs::path odt = ConversionTools::officeToODT(dir / "docs" / "notes.txt");
    EXPECT_EQ(odt.filename(), "notes.odt");
    EXPECT_GT(fs::file_size(odt), 0u);
    const std::string page = readFile(odt.parent_path() / "plain-text.html");
    EXPECT_NE(page.find("<p>caf\u00e9 &amp; &lt;tea&gt;</p>\n<p>second line</p>"), std::string::npos)
        << "Latin-1 decoded, escaped, one paragraph per line: " << page;

    // Document properties stay out of the text: a browser or word processor shows no title above it.
    struct Row {
        const char *name;
        const char *body;
        const char *title;
    };
    const Row rows[] = {
        {"page.html", "<html><head><title>Page Title</title></head><body><p>Body words</p></body></html>",
         "Page Title"},
        {"letter.rtf", "{\\rtf1\\ansi{\\info{\\title Letter Title}{\\author Ann Author}}Body words\\par}",
         "Letter Title"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        writeFile(dir / "docs" / row.name, row.body);
        const fs::path made = ConversionTools::officeToODT(dir / "docs" / row.name);
        const std::string content = OdtFile::package(made).read("content.xml");
        EXPECT_NE(content.find("Body words"), std::string::npos) << content;
        EXPECT_EQ(content.find(row.title), std::string::npos);
        EXPECT_EQ(content.find("Ann Author"), std::string::npos);
        EXPECT_NE(OdtFile::package(made).read("meta.xml").find(row.title), std::string::npos)
            << "the title stays a property";
    }
}
