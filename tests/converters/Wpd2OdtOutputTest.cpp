// What wpd2odt writes when it succeeds: a well-formed .odt package, or one flat XML document.

#include "OdtFile.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "WordPerfectFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace {

const std::string odtMediaType = "application/vnd.oasis.opendocument.text";

// The built-in fixture (XML's reserved characters included), or one of the samples beside the
// source tree (with accents, Greek, typographic quotes, a table and a note); empty if absent.
std::string sourceFor(const std::string &name, const testing_support::TempDir &folder)
{
    if (name == "fixture")
        return folder.write("fixture.wp", WordPerfectFixtures::wp51({"Plain words & <markup> \"quoted\"",
                                                                     "A second paragraph's words"}));
    const std::string sample = std::string(QM_SAMPLES_DIR) + "/" + name;
    return std::filesystem::exists(sample) ? sample : std::string();
}

// Every word libwpd's own text converter finds must reach the OpenDocument text.
void expectSameWords(const std::string &source, const std::set<std::string> &converted)
{
    const ProgramRun oracle = ProgramRun::of({WPD2TEXT_PATH, source});
    ASSERT_EQ(oracle.status, 0) << oracle.err;
    for (const std::string &word : OdtFile::wordsOfPlainText(oracle.out))
        EXPECT_TRUE(OdtFile::hasWord(converted, word)) << "missing word: " << word;
}

class OutputTest : public testing::TestWithParam<std::string> {};

TEST_P(OutputTest, PackageIsCompleteAndValid)
{
    testing_support::TempDir folder;
    const std::string source = sourceFor(GetParam(), folder);
    if (source.empty())
        GTEST_SKIP() << "sample " << GetParam() << " not found in " << QM_SAMPLES_DIR;
    // An earlier file in the destination's place is replaced whole, no temporary file left beside it.
    const std::string destination = folder.write("out.odt", "an older file");
    const std::set<std::string> before = folder.names();

    const ProgramRun run = ProgramRun::of({WPD2ODT_PATH, source, destination});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(folder.names(), before);

    // mimetype first and stored, so the type sits at byte 38 where sniffers look for it.
    const std::string raw = testing_support::readFile(destination);
    ASSERT_GT(raw.size(), 38 + odtMediaType.size());
    EXPECT_EQ(raw.substr(0, 4), "PK\x03\x04");
    EXPECT_EQ(raw.substr(30, 8 + odtMediaType.size()), "mimetype" + odtMediaType);

    const OdtFile odt = OdtFile::package(destination);
    ASSERT_TRUE(odt.ok());
    ASSERT_FALSE(odt.entries().empty());
    EXPECT_EQ(odt.entries()[0].name, "mimetype");
    EXPECT_TRUE(odt.entries()[0].stored);
    EXPECT_EQ(odt.read("mimetype"), odtMediaType);
    for (const char *part :
         {"META-INF/manifest.xml", "content.xml", "styles.xml", "meta.xml", "settings.xml"}) {
        EXPECT_TRUE(odt.has(part)) << part;
        EXPECT_TRUE(OdtFile::isWellFormed(odt.read(part))) << part;
    }
    EXPECT_EQ(OdtFile::select(odt.read("content.xml"), "name(/*)"),
              std::vector<std::string>{"office:document-content"});

    std::vector<std::string> listed =
        OdtFile::select(odt.read("META-INF/manifest.xml"),
                        "//manifest:file-entry[@manifest:full-path!='/']/@manifest:full-path");
    std::vector<std::string> stored;
    for (const OdtFile::Entry &entry : odt.entries()) {
        if (entry.name != "mimetype" && entry.name != "META-INF/manifest.xml")
            stored.push_back(entry.name);
    }
    std::sort(listed.begin(), listed.end());
    std::sort(stored.begin(), stored.end());
    EXPECT_EQ(listed, stored);

    std::set<std::string> words = OdtFile::words(odt.read("content.xml"));
    words.merge(OdtFile::words(odt.read("styles.xml")));
    expectSameWords(source, words);
}

TEST_P(OutputTest, StdoutGivesOneFlatDocumentAndTouchesNoFile)
{
    testing_support::TempDir folder;
    testing_support::TempDir workFolder;
    const std::string source = sourceFor(GetParam(), folder);
    if (source.empty())
        GTEST_SKIP() << "sample " << GetParam() << " not found in " << QM_SAMPLES_DIR;
    const std::set<std::string> before = folder.names();

    const ProgramRun run = ProgramRun::of({WPD2ODT_PATH, "--stdout", source}, workFolder.path());
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(run.out.starts_with("<?xml"));
    EXPECT_EQ(OdtFile::select(run.out, "name(/*)"), std::vector<std::string>{"office:document"});
    EXPECT_NE(run.out.find("office:mimetype=\"" + odtMediaType + "\""), std::string::npos);
    expectSameWords(source, OdtFile::words(run.out));
    EXPECT_TRUE(workFolder.names().empty());
    EXPECT_EQ(folder.names(), before);
}

INSTANTIATE_TEST_SUITE_P(Sources, OutputTest, testing::Values("fixture", "min51.wp5", "min6.wpd"),
                         [](const auto &info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

// Plain leading spaces are dropped by every ODF reader; only text:s keeps them. A paragraph of one
// space stays empty and one of a run of spaces keeps them, as in LibreOffice's own import: the
// spaces make the line as tall as its font rather than its paragraph style.
TEST(OutputTest, SpacesThatOpenAParagraphAreKeptWhenTextFollows)
{
    const struct {
        const char *paragraph;
        int spaces; // the spaces of the paragraph in the output, plain and text:s
    } cases[] = {
        {" indented by a space", 4},
        {"    indented by four", 6},
        {"inner  spaces", 2},
        {" ", 0},
        {"     ", 5},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string("paragraph \"") + c.paragraph + "\"");
        testing_support::TempDir folder;
        const std::string source =
            folder.write("doc.wp", WordPerfectFixtures::wp51({"before", c.paragraph, "after"}));
        const ProgramRun run = ProgramRun::of({WPD2ODT_PATH, "--stdout", source});
        ASSERT_EQ(run.status, 0) << run.err;

        const std::string paragraph = "//office:text/text:p[2]";
        const std::string text = OdtFile::select(run.out, "string(" + paragraph + ")")[0];
        const int plain = static_cast<int>(std::count(text.begin(), text.end(), ' '));
        const int single =
            std::stoi(OdtFile::select(run.out, "count(" + paragraph + "//text:s[not(@text:c)])")[0]);
        const int counted = std::stoi(OdtFile::select(run.out, "sum(" + paragraph + "//text:s/@text:c)")[0]);
        EXPECT_EQ(plain + single + counted, c.spaces) << run.out;

        std::string words(c.paragraph);
        std::erase(words, ' ');
        std::string kept = text;
        std::erase(kept, ' ');
        EXPECT_EQ(kept, words);
        EXPECT_EQ(OdtFile::select(run.out, "string(//office:text/text:p[3])")[0], "after");
    }
}

// LibreOffice lays a loaded file out with what the file says, and its own WordPerfect import with a
// new document's defaults. Both outputs must say what a new document assumes: pair kerning (or
// every line is wider), and the layout flags LibreOffice otherwise sets to an old suite's values.
TEST(OutputTest, AsksForTheLayoutOfANewLibreOfficeDocument)
{
    testing_support::TempDir folder;
    const std::string source = folder.write("doc.wp", WordPerfectFixtures::wp51({"Kerned words"}));
    const std::string destination = folder.file("out.odt");
    ASSERT_EQ(ProgramRun::of({WPD2ODT_PATH, source, destination}).status, 0);
    const OdtFile odt = OdtFile::package(destination);
    ASSERT_TRUE(odt.ok());
    const ProgramRun flat = ProgramRun::of({WPD2ODT_PATH, "--stdout", source});
    ASSERT_EQ(flat.status, 0) << flat.err;

    const std::string kerning =
        "//style:default-style[@style:family='paragraph']/style:text-properties/@style:letter-kerning";
    EXPECT_EQ(OdtFile::select(odt.read("styles.xml"), kerning), std::vector<std::string>{"true"});
    EXPECT_EQ(OdtFile::select(flat.out, kerning), std::vector<std::string>{"true"});

    const struct {
        const char *name;
        const char *value; // what a new document has; a file without the item gets the opposite
    } settings[] = {
        {"AddExternalLeading", "true"},         {"UseFormerLineSpacing", "false"},
        {"AddParaSpacingToTableCells", "true"}, {"DoNotJustifyLinesWithManualBreak", "false"},
        {"UseFormerTextWrapping", "false"},     {"TabOverflow", "true"},
    };
    for (const auto &setting : settings) {
        EXPECT_EQ(OdtFile::select(odt.read("settings.xml"),
                                  std::string("//config:config-item[@config:name='") + setting.name + "']"),
                  std::vector<std::string>{setting.value})
            << setting.name;
    }
}

} // namespace
