// LibreOffice lays out our ODT of a corpus document line for line as it lays out its own import of
// the original (libwpd and libodfgen too, into a new document). The pages compared carry no
// picture: ours draws WordPerfect graphics that LibreOffice's import leaves out, and text flows
// around them.

#include "ProgramRun.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace fs = std::filesystem;

namespace {

struct Document {
    const char *name;
    int pages; // how many of its pages to compare, 0 for all
};

// The lines of each page as pdftotext reads them, sorted, trailing blanks and empty lines left out.
std::vector<std::vector<std::string>> linesOfPages(const std::string &pdf, int pages)
{
    std::vector<std::string> argv = {PDFTOTEXT_PATH, "-enc", "UTF-8"};
    if (pages > 0)
        argv.insert(argv.end(), {"-f", "1", "-l", std::to_string(pages)});
    argv.insert(argv.end(), {pdf, "-"});
    const ProgramRun run = ProgramRun::of(argv);
    std::vector<std::vector<std::string>> result(1);
    std::istringstream text(run.out);
    for (std::string line; std::getline(text, line);) {
        for (std::size_t feed; (feed = line.find('\f')) != std::string::npos;) {
            result.emplace_back();
            line.erase(0, feed + 1);
        }
        line.erase(line.find_last_not_of(" \t") + 1);
        if (!line.empty())
            result.back().push_back(line);
    }
    // pdftotext ends the last page with a form feed too.
    if (result.size() > 1 && result.back().empty())
        result.pop_back();
    // pdftotext reads a footnote and a footer on the same height in the order of a fraction of a
    // point; what counts is which lines each page holds.
    for (auto &page : result)
        std::sort(page.begin(), page.end());
    return result;
}

TEST(LayoutTest, LibreOfficeBreaksOurLinesWhereItsOwnImportDoes)
{
    const fs::path corpus = fs::path(QM_CORPUS_DIR) / "wp";
    if (!fs::is_directory(corpus))
        GTEST_SKIP() << "no corpus at " << corpus;
    if (std::string(SOFFICE_PATH).empty() || std::string(PDFTOTEXT_PATH).empty())
        GTEST_SKIP() << "LibreOffice (soffice) or pdftotext not installed";
    // TOPOPREC's first page is justified text whose lines broke elsewhere while our words were
    // wider; the others hold tables, columns, headers and centred titles. test5 from page 3 on
    // heads its even pages, which LibreOffice's import does not show (checked below).
    const Document documents[] = {
        {"TOPOPREC.WPD", 1},      {"expectation_document.wpd", 0}, {"opinion_wpd.wpd", 0},  {"test5.wp", 2},
        {"header_footer.wpd", 0}, {"9140-columns.wpd", 0},         {"feature_test.wpd", 0},
    };
    testing_support::TempDir scratch;
    for (const char *folder : {"originals", "converted", "pdf-originals", "pdf-converted", "home"})
        fs::create_directory(scratch.file(folder));
    std::vector<std::string> originals, converted;
    for (std::size_t i = 0; i < std::size(documents); ++i) {
        const fs::path source = corpus / documents[i].name;
        if (!fs::exists(source))
            GTEST_SKIP() << source << " is not in the corpus";
        // Distinct names: --outdir keeps only the base name.
        originals.push_back(scratch.file("originals/" + std::to_string(i) + ".wpd"));
        fs::create_symlink(source, originals.back());
        converted.push_back(scratch.file("converted/" + std::to_string(i) + ".odt"));
        const ProgramRun run = ProgramRun::of({WPD2ODT_PATH, source.string(), converted.back()});
        ASSERT_EQ(run.status, 0) << documents[i].name << ": " << run.err;
    }
    setenv("HOME", scratch.file("home").c_str(), 1);
    const auto layOut = [&](const std::vector<std::string> &files, const std::string &to, bool wordPerfect) {
        return ProgramRun::libreOffice(SOFFICE_PATH, scratch.file("profile"), "pdf", files, scratch.file(to),
                                       wordPerfect ? "WordPerfect" : "");
    };
    ASSERT_EQ(layOut(originals, "pdf-originals", true).status, 0);
    ASSERT_EQ(layOut(converted, "pdf-converted", false).status, 0);

    for (std::size_t i = 0; i < std::size(documents); ++i) {
        SCOPED_TRACE(documents[i].name);
        const std::string pdf = std::to_string(i) + ".pdf";
        ASSERT_TRUE(fs::exists(scratch.file("pdf-originals/" + pdf)));
        ASSERT_TRUE(fs::exists(scratch.file("pdf-converted/" + pdf)));
        EXPECT_EQ(linesOfPages(scratch.file("pdf-converted/" + pdf), documents[i].pages),
                  linesOfPages(scratch.file("pdf-originals/" + pdf), documents[i].pages));
    }
    // test5's header B is for the even pages only: libodfgen leaves the odd pages' header empty,
    // which LibreOffice takes for no header at all, the even pages' one with it.
    const auto test5 = std::find_if(std::begin(documents), std::end(documents),
                                    [](const Document &d) { return std::string(d.name) == "test5.wp"; });
    const auto pages = linesOfPages(
        scratch.file("pdf-converted/" + std::to_string(test5 - std::begin(documents)) + ".pdf"), 0);
    ASSERT_GE(pages.size(), 6u);
    for (std::size_t page = 3; page <= 6; ++page) {
        const bool headed =
            std::count(pages[page - 1].begin(), pages[page - 1].end(), "header b even pages") == 1;
        EXPECT_EQ(headed, page % 2 == 0) << "page " << page;
    }
}

} // namespace
