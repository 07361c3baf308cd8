// Every OpenDocument text of the corpus, written as WordPerfect 6 and 5.1 and read back by
// independent readers: wpd2text must take each file without complaint, and LibreOffice (which
// reads WordPerfect through libwpd) must export the same plain text from our file as from the
// source, characters that no WordPerfect set holds standing as the counted '?'.

#include "OdtFile.h"
#include "PlainText.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "WpTestSupport.h"

#include "richtext/wordperfect/CharacterMap.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using richtext::wordperfect::CharacterMap;

namespace {

// Files whose text does not come back exactly yet, and why. A file that
// comes back exact must leave this list.
const std::map<std::string, const char *> knownDifferences = {};

TEST(CorpusRoundTrip, LibreOfficeReadsTheSameTextFromOurWordPerfectFiles)
{
    const std::vector<wptest::CorpusFile> sources = wptest::officeCorpus({".odt", ".fodt"});
    if (sources.empty())
        GTEST_SKIP() << "../shared/corpus/office is absent";
    if (std::string(SOFFICE_PATH).empty())
        GTEST_SKIP() << "LibreOffice (soffice) is not installed";

    testing_support::TempDir scratch;
    const std::string profile = scratch.file("profile");
    const std::string sourceText = scratch.file("source-text");
    const std::string ourText = scratch.file("wp-text");
    const std::string ourOdt = scratch.file("wp-odt");
    std::vector<std::string> sourceInputs, ourInputs;
    const char *versions[] = {"wp6", "wp5"};
    for (const wptest::CorpusFile &source : sources) {
        const std::string link = scratch.file(source.key + fs::path(source.path).extension().string());
        fs::create_symlink(source.path, link);
        sourceInputs.push_back(link);
        for (const char *version : versions) {
            const std::string output = scratch.file(std::string(version) + "-" + source.key + ".wpd");
            const ProgramRun run =
                ProgramRun::of({ODT2WP5_PATH, std::string("--") + version, source.path, output});
            EXPECT_EQ(run.status, 0) << source.key << " " << version << ": " << run.err;
            const ProgramRun text = ProgramRun::of({WPD2TEXT_PATH, output});
            EXPECT_EQ(text.status, 0) << source.key << " " << version;
            EXPECT_EQ(text.err, "") << source.key << " " << version;
            if (run.status == 0)
                ourInputs.push_back(output);
        }
    }
    ASSERT_TRUE(wptest::soffice("txt:Text", sourceInputs, sourceText, profile));
    ASSERT_TRUE(wptest::soffice("txt:Text", ourInputs, ourText, profile, "WordPerfect"));
    ASSERT_TRUE(wptest::soffice("odt", ourInputs, ourOdt, profile, "WordPerfect"));

    for (const wptest::CorpusFile &source : sources) {
        const std::string expectedRaw = testing_support::readFile(sourceText + "/" + source.key + ".txt");
        EXPECT_FALSE(expectedRaw.empty()) << source.key << ": LibreOffice exported no text from the source";
        for (const char *version : versions) {
            const CharacterMap &map =
                std::string(version) == "wp6" ? CharacterMap::wp6() : CharacterMap::wp5();
            const std::string name = std::string(version) + "-" + source.key;
            const std::string ours =
                plaintext::normalised(testing_support::readFile(ourText + "/" + name + ".txt"), nullptr);
            if (const auto known = knownDifferences.find(source.key); known != knownDifferences.end())
                EXPECT_NE(ours, plaintext::normalised(expectedRaw, &map))
                    << name << " now matches: take it off the list";
            else
                EXPECT_EQ(ours, plaintext::normalised(expectedRaw, &map)) << name;
            // LibreOffice opens our file as a document and keeps its text when saving it as ODT.
            const OdtFile odt = OdtFile::package(ourOdt + "/" + name + ".odt");
            ASSERT_TRUE(odt.ok()) << name << ": LibreOffice wrote no ODT";
            const auto words = OdtFile::words(odt.read("content.xml"));
            for (const std::string &word : OdtFile::wordsOfPlainText(ours))
                EXPECT_TRUE(OdtFile::hasWord(words, word)) << name << ": lost " << word;
        }
    }
}

TEST(CorpusRoundTrip, ThePasswordProtectedDocumentFailsInPlainWords)
{
    const fs::path encrypted = fs::path(QM_CORPUS_DIR) / "office" / "testODTEncrypted.odt";
    if (!fs::exists(encrypted))
        GTEST_SKIP() << "../shared/corpus/office/testODTEncrypted.odt is absent";
    testing_support::TempDir scratch;
    for (const char *version : {"--wp6", "--wp5"}) {
        const ProgramRun run =
            ProgramRun::of({ODT2WP5_PATH, version, encrypted.string(), scratch.file("x.wpd")});
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find("the document is encrypted"), std::string::npos) << run.err;
        EXPECT_TRUE(scratch.names().empty());
    }
}

} // namespace
