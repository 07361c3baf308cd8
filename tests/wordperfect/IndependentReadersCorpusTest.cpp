// The corpus office documents written as WordPerfect 6 and 5.1 and read by wp2latex and wp2x, which
// share no code with libwpd: each takes every file without a warning and finds the words libwpd
// finds. Where wp2x cannot read a kind of code at all, the same happens on files WordPerfect wrote.

#include "IndependentReaders.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "WpTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

const fs::path corpus = fs::path(QM_CORPUS_DIR);

// The corpus's own OpenDocument texts, and its Word, RTF and HTML documents as LibreOffice saves
// them in OpenDocument.
std::vector<wptest::CorpusFile> sources(const testing_support::TempDir &scratch)
{
    std::vector<wptest::CorpusFile> all = wptest::officeCorpus({".odt", ".fodt"});
    const std::vector<wptest::CorpusFile> others = wptest::officeCorpus({".doc", ".docx", ".rtf", ".html"});
    if (std::string(SOFFICE_PATH).empty() || others.empty())
        return all;
    // Each under its key, so that a.doc and a.rtf do not overwrite each other.
    std::vector<std::string> links;
    for (const wptest::CorpusFile &file : others) {
        links.push_back(scratch.file(file.key + fs::path(file.path).extension().string()));
        fs::create_symlink(file.path, links.back());
    }
    const std::string converted = scratch.file("lo-odt");
    wptest::soffice("odt:writer8", links, converted, scratch.file("profile"));
    for (const wptest::CorpusFile &file : others) {
        const fs::path odt = fs::path(converted) / (file.key + ".odt");
        if (fs::exists(odt))
            all.push_back({odt.string(), file.key});
    }
    return all;
}

// Files where wp2latex finds fewer of libwpd's words, and why; a file that passes must leave the list.
const std::map<std::string, const char *> wp2latexShortfalls = {
    {"9044-table_in_header-doc --wp6", "wp2latex runs the cells of a table in a header together"},
};

TEST(IndependentReadersCorpus, ReadEveryFileWeWriteWithoutComplaint)
{
    if (!fs::is_directory(corpus / "office"))
        GTEST_SKIP() << "../shared/corpus/office is absent";
    if (std::string(WP2LATEX_PATH).empty() || std::string(WP2X_PATH).empty())
        GTEST_SKIP() << "wp2latex or wp2x is not installed";
    testing_support::TempDir scratch;
    const std::vector<wptest::CorpusFile> documents = sources(scratch);
    ASSERT_FALSE(documents.empty());
    int files = 0;
    double lowestLatex = 1.0, lowestX = 1.0;
    for (const wptest::CorpusFile &source : documents) {
        for (const char *option : {"--wp6", "--wp5"}) {
            const std::string name = source.key + " " + option;
            const std::string output = scratch.file(source.key + (option[4] == '6' ? ".wpd" : ".wp5"));
            const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, option, source.path, output});
            ASSERT_EQ(run.status, 0) << name << ": " << run.err;
            ++files;
            const readers::Reading reference = readers::libwpd(output);
            EXPECT_EQ(reference.status, 0) << name;
            const wptest::ReadBack model = wptest::readWordPerfect(testing_support::readFile(output));
            ASSERT_TRUE(model.ok) << name;

            const readers::Reading latex = readers::wp2latex(output);
            EXPECT_EQ(latex.status, 0) << name;
            EXPECT_EQ(readers::beyondWp2latexLimits(latex.complaints, model.document),
                      std::vector<std::string>{})
                << name;
            const readers::WordShare byLatex =
                readers::shareOfWords(readers::asLibwpdReadsIt(model.document), latex.text, true);
            if (const auto known = wp2latexShortfalls.find(name); known != wp2latexShortfalls.end())
                EXPECT_LT(byLatex.share, 0.98)
                    << name << " now passes: take it off the list (" << known->second << ")";
            else
                EXPECT_GE(byLatex.share, 0.98)
                    << name << " of " << byLatex.referenceWords << " words; wp2latex misses "
                    << ::testing::PrintToString(byLatex.missing);
            if (!wp2latexShortfalls.count(name))
                lowestLatex = std::min(lowestLatex, byLatex.share);
            if (option[4] == '6')
                continue;

            const readers::Reading x = readers::wp2x(output);
            EXPECT_EQ(x.status, 0) << name;
            EXPECT_EQ(x.complaints, std::vector<std::string>{}) << name;
            const readers::WordShare byX =
                readers::shareOfWords(readers::asWp2xReadsIt(model.document), x.text);
            lowestX = std::min(lowestX, byX.share);
            EXPECT_GE(byX.share, 0.90) << name << " of " << byX.referenceWords << " words; wp2x misses "
                                       << ::testing::PrintToString(byX.missing);
        }
    }
    RecordProperty("files", files);
    RecordProperty("lowest wp2latex share, percent", static_cast<int>(std::floor(lowestLatex * 100)));
    RecordProperty("lowest wp2x share, percent", static_cast<int>(std::floor(lowestX * 100)));
}

// What wp2x leaves out of files WordPerfect 5.1 wrote itself, as it does in ours.
struct Limit {
    const char *what;
    const char *file;
    const char *libwpdReads; // a piece of libwpd's plain text of the file
    const char *wp2xReads;   // the same place as wp2x gives it ("" when left out)
};
const Limit wp2xLimits[] = {
    {"tab codes are skipped", "test5.wp", "Tabs\tin\tthe\ttext", "Tabsinthetext"},
    {"table codes are skipped", "prn_test5.wp", "Centered", "CenteredRight Aligned"},
    {"footnote bodies are left out", "test5.wp", "Test footnote 1", ""},
    {"header bodies are left out", "test5.wp", "header b even pages", ""},
};

TEST(IndependentReadersCorpus, Wp2latexTakesWordPerfectsOwnTabsNearTheEdgeForNegativeOnes)
{
    const fs::path file = corpus / "wp" / "equation5.wp"; // left margin 0.4 in, tabs at 0.9 in
    if (!fs::exists(file))
        GTEST_SKIP() << "../shared/corpus/wp/equation5.wp is absent";
    if (std::string(WP2LATEX_PATH).empty())
        GTEST_SKIP() << "wp2latex is not installed";
    const readers::Reading latex = readers::wp2latex(file.string());
    EXPECT_NE(
        std::find(latex.complaints.begin(), latex.complaints.end(), "Warning: Negative tabular, fixed!"),
        latex.complaints.end());
    const wptest::ReadBack model = wptest::readWordPerfect(testing_support::readFile(file.string()));
    ASSERT_TRUE(model.ok);
    EXPECT_EQ(readers::beyondWp2latexLimits(latex.complaints, model.document), std::vector<std::string>{});
}

TEST(IndependentReadersCorpus, Wp2xMissesTheSameOnWordPerfectsOwnFiles)
{
    if (!fs::is_directory(corpus / "wp"))
        GTEST_SKIP() << "../shared/corpus/wp is absent";
    if (std::string(WP2X_PATH).empty())
        GTEST_SKIP() << "wp2x is not installed";
    for (const Limit &limit : wp2xLimits) {
        const std::string path = (corpus / "wp" / limit.file).string();
        const readers::Reading reference = readers::libwpd(path);
        const readers::Reading x = readers::wp2x(path);
        EXPECT_NE(reference.text.find(limit.libwpdReads), std::string::npos) << limit.what;
        if (*limit.wp2xReads)
            EXPECT_NE(x.text.find(limit.wp2xReads), std::string::npos) << limit.what;
        else
            EXPECT_EQ(x.text.find(limit.libwpdReads), std::string::npos) << limit.what;
    }
    // Measured the way our files are, WordPerfect's own files pass too: the limits are wp2x's.
    for (const char *file : {"test5.wp", "prn_test5.wp", "testWordPerfect_5_1.wp", "equation5.wp"}) {
        const std::string path = (corpus / "wp" / file).string();
        const wptest::ReadBack model = wptest::readWordPerfect(testing_support::readFile(path));
        ASSERT_TRUE(model.ok) << file;
        const readers::WordShare share =
            readers::shareOfWords(readers::asWp2xReadsIt(model.document), readers::wp2x(path).text);
        EXPECT_GE(share.share, 0.90) << file << ": wp2x misses " << ::testing::PrintToString(share.missing);
        const readers::WordShare all =
            readers::shareOfWords(readers::libwpd(path).text, readers::wp2x(path).text);
        RecordProperty(std::string(file) + " percent of all words",
                       static_cast<int>(std::lround(all.share * 100)));
    }
}

} // namespace
