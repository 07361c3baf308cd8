// wpd2odt over every WordPerfect file of the shared corpus, judged against libwpd's own tools
// and LibreOffice. Each test walks the whole corpus in one process so that LibreOffice starts
// only twice.

#include "OdtFile.h"
#include "ProgramRun.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <regex>

namespace fs = std::filesystem;

namespace {

std::vector<std::string> corpusFiles()
{
    std::vector<std::string> files;
    const fs::path folder = fs::path(QM_CORPUS_DIR) / "wp";
    if (fs::is_directory(folder)) {
        for (const auto &entry : fs::directory_iterator(folder))
            files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

class CorpusTest : public testing::Test {
protected:
    void SetUp() override
    {
        files = corpusFiles();
        if (files.empty())
            GTEST_SKIP() << "no corpus at " << QM_CORPUS_DIR << "/wp";
    }

    // Converts every file that wpd2odt accepts, to a package named N.odt, N being its index.
    std::vector<size_t> convertAll()
    {
        std::vector<size_t> converted;
        for (size_t i = 0; i < files.size(); ++i) {
            if (ProgramRun::of({WPD2ODT_PATH, files[i], odtOf(i)}).status == 0)
                converted.push_back(i);
        }
        return converted;
    }

    std::string odtOf(size_t i) const { return scratch.file(std::to_string(i) + ".odt"); }

    std::vector<std::string> files;
    testing_support::TempDir scratch;
};

// wpd2text is the oracle: what it reads, wpd2odt converts; what it rejects, wpd2odt rejects for
// the same reason.
TEST_F(CorpusTest, ConvertsWhatLibwpdReadsAndNamesTheReasonOtherwise)
{
    for (size_t i = 0; i < files.size(); ++i) {
        SCOPED_TRACE(files[i]);
        const ProgramRun oracle = ProgramRun::of({WPD2TEXT_PATH, files[i]});
        const ProgramRun run = ProgramRun::of({WPD2ODT_PATH, files[i], odtOf(i)});
        if (oracle.status == 0) {
            ASSERT_EQ(run.status, 0) << run.err;
            // Nothing on standard error but, at most, the one line naming what was lost.
            if (!run.err.empty()) {
                EXPECT_TRUE(run.err.starts_with("wpd2odt: lost: ")) << run.err;
                EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
            }
            const OdtFile odt = OdtFile::package(odtOf(i));
            ASSERT_TRUE(odt.ok());
            EXPECT_EQ(odt.entries()[0].name, "mimetype");
            std::set<std::string> words;
            for (const OdtFile::Entry &entry : odt.entries()) {
                if (!entry.name.ends_with(".xml"))
                    continue;
                EXPECT_TRUE(OdtFile::isWellFormed(odt.read(entry.name))) << entry.name;
                words.merge(OdtFile::words(odt.read(entry.name)));
            }
            for (const std::string &word : OdtFile::wordsOfPlainText(oracle.out))
                EXPECT_TRUE(OdtFile::hasWord(words, word)) << "missing word: " << word;
            continue;
        }
        EXPECT_EQ(run.status, 1);
        EXPECT_FALSE(fs::exists(odtOf(i)));
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        if (oracle.err.find("password protected") != std::string::npos)
            EXPECT_NE(run.err.find("is encrypted and no password was given"), std::string::npos) << run.err;
        else if (oracle.err.find("Unsupported file format") != std::string::npos)
            EXPECT_NE(run.err.find("is not a WordPerfect document"), std::string::npos) << run.err;
        else
            EXPECT_NE(run.err.find("is damaged"), std::string::npos) << run.err << oracle.err;
    }
}

// Every WordPerfect graphic libwpd finds is a picture of the package (converted to SVG by libwpg,
// its metafiles drawn) and an inline picture of the flat document; every picture the XML points at is in the
// package.
TEST_F(CorpusTest, KeepsEveryEmbeddedGraphic)
{
    for (const size_t i : convertAll()) {
        SCOPED_TRACE(files[i]);
        const ProgramRun raw = ProgramRun::of({WPD2RAW_PATH, files[i]});
        size_t graphics = 0;
        for (size_t at = raw.out.find("insertBinaryObject("); at != std::string::npos;
             at = raw.out.find("insertBinaryObject(", at + 1))
            ++graphics;

        const OdtFile odt = OdtFile::package(odtOf(i));
        const std::vector<std::string> listed =
            OdtFile::select(odt.read("META-INF/manifest.xml"), "//manifest:file-entry/@manifest:full-path");
        size_t pictures = 0;
        for (const OdtFile::Entry &entry : odt.entries()) {
            if (!entry.name.starts_with("Pictures/"))
                continue;
            ++pictures;
            EXPECT_TRUE(entry.data.starts_with("<?xml")) << entry.name << " is not SVG";
            // Office suites show a metafile inside SVG as a blank: it must come drawn.
            EXPECT_EQ(entry.data.find("data:image/wmf"), std::string::npos) << entry.name;
        }
        EXPECT_EQ(pictures, graphics);
        size_t links = 0;
        for (const char *part : {"content.xml", "styles.xml"}) {
            for (const std::string &link : OdtFile::select(odt.read(part), "//draw:image/@xlink:href")) {
                ++links;
                EXPECT_TRUE(odt.has(link)) << link;
                EXPECT_NE(std::find(listed.begin(), listed.end(), link), listed.end()) << link;
            }
        }
        EXPECT_EQ(links, graphics);
        const ProgramRun flat = ProgramRun::of({WPD2ODT_PATH, "--stdout", files[i]});
        ASSERT_EQ(flat.status, 0) << flat.err;
        EXPECT_EQ(OdtFile::select(flat.out, "//draw:image/office:binary-data").size(), graphics);
    }
}

std::string normalisedText(const std::string &path)
{
    std::string text = testing_support::readFile(path);
    if (text.starts_with("\xEF\xBB\xBF"))
        text.erase(0, 3);
    text = std::regex_replace(text, std::regex("[ \\t\\r\\n\\f\\v]+"), " ");
    const size_t first = text.find_first_not_of(' ');
    const size_t last = text.find_last_not_of(' ');
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

// LibreOffice imports WordPerfect itself (through libwpd); its plain text of our package and of
// our flat document must equal its plain text of the original.
TEST_F(CorpusTest, LibreOfficeReadsTheSameTextAsFromTheOriginal)
{
    if (std::string(SOFFICE_PATH).empty())
        GTEST_SKIP() << "LibreOffice (soffice) not installed";
    const std::vector<size_t> converted = convertAll();
    for (const char *folder : {"originals", "converted", "text-originals", "text-converted", "home"})
        fs::create_directory(scratch.file(folder));
    for (const size_t i : converted) {
        // Distinct names: --outdir keeps only the base name, and corpus names may clash.
        fs::create_symlink(files[i], scratch.file("originals/" + std::to_string(i) + ".wpd"));
        fs::rename(odtOf(i), scratch.file("converted/" + std::to_string(i) + ".odt"));
        const ProgramRun flat = ProgramRun::of({WPD2ODT_PATH, "--stdout", files[i]});
        scratch.write("converted/" + std::to_string(i) + "-flat.fodt", flat.out);
    }
    setenv("HOME", scratch.file("home").c_str(), 1);
    const auto convertToText = [&](const std::string &from, const std::string &to, bool wordPerfect) {
        std::vector<std::string> inputs;
        for (const auto &entry : fs::directory_iterator(scratch.file(from)))
            inputs.push_back(entry.path().string());
        return ProgramRun::libreOffice(SOFFICE_PATH, scratch.file("profile"), "txt:Text", inputs,
                                       scratch.file(to), wordPerfect ? "WordPerfect" : "");
    };
    const ProgramRun originals = convertToText("originals", "text-originals", true);
    const ProgramRun ours = convertToText("converted", "text-converted", false);
    ASSERT_EQ(originals.status, 0) << originals.err;
    ASSERT_EQ(ours.status, 0) << ours.err;

    for (const size_t i : converted) {
        SCOPED_TRACE(files[i]);
        const std::string n = std::to_string(i);
        ASSERT_TRUE(fs::exists(scratch.file("text-originals/" + n + ".txt")));
        const std::string expected = normalisedText(scratch.file("text-originals/" + n + ".txt"));
        EXPECT_EQ(normalisedText(scratch.file("text-converted/" + n + ".txt")), expected);
        EXPECT_EQ(normalisedText(scratch.file("text-converted/" + n + "-flat.txt")), expected);
    }
}

} // namespace
