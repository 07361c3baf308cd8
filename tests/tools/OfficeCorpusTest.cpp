// Every office document of the corpus becomes WordPerfect 6 and 5.1 through the
// real engine (LibreOffice, or pandoc when LibreOffice is hidden, then odt2wp5),
// and LibreOffice's plain-text export of our file equals its export of the
// source. Characters no WordPerfect set holds may stand as '?', and a
// private-use code (a Symbol-font glyph) as any one character.

#include "EngineRun.h"
#include "PlainText.h"
#include "richtext/wordperfect/CharacterMap.h"
#include "tools/ConversionTools.h"
#include "tools/OfficeImport.h"

#include <gtest/gtest.h>

#include <QString>
#include <QUuid>

#include <algorithm>
#include <cstdio>
#include <map>
#include <sstream>

namespace fs = std::filesystem;
using namespace testing_support;
using richtext::wordperfect::CharacterMap;

namespace {

struct Source {
    fs::path path;
    std::string key; // a base name no other source shares
};

std::vector<Source> officeDocuments(const fs::path &corpus, const std::vector<std::string> &extensions)
{
    std::vector<Source> found;
    for (const auto &entry : fs::directory_iterator(corpus / "office")) {
        std::string ext = entry.path().extension().string();
        std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
        if (std::find(extensions.begin(), extensions.end(), ext) != extensions.end())
            found.push_back({entry.path(), entry.path().stem().string() + "-" + ext.substr(1)});
    }
    std::sort(found.begin(), found.end(), [](const Source &a, const Source &b) { return a.key < b.key; });
    return found;
}

// One LibreOffice run for many files, with a private profile.
void exportText(const std::vector<fs::path> &files, const fs::path &outdir)
{
    const std::string profile =
        "file://" + (fs::temp_directory_path() /
                     ("quillmorph-lo-" + QUuid::createUuid().toString(QUuid::Id128).toStdString()))
                        .string();
    std::vector<std::string> args{
        "-env:UserInstallation=" + profile, "--headless", "--norestore",  "--convert-to",
        "txt:Text (encoded):UTF8",          "--outdir",   outdir.string()};
    for (const auto &file : files)
        args.push_back(file.string());
    ConversionTools::run(*ConversionTools::libreOfficeURL(), args, "soffice");
    std::error_code ignored;
    fs::remove_all(profile.substr(7), ignored);
}

// A plain-text file's own words: LibreOffice's export of one that is not UTF-8 has lost its accents.
std::string textOfPlainFile(const fs::path &file)
{
    const std::string bytes = readFile(file);
    if (QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size())).toUtf8().toStdString() == bytes)
        return bytes;
    std::string text; // Latin-1: every byte is the character of its number
    for (const unsigned char byte : bytes) {
        if (byte < 0x80) {
            text += static_cast<char>(byte);
        } else {
            text += static_cast<char>(0xC0 | (byte >> 6));
            text += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return text;
}

std::vector<std::string> words(const std::string &text)
{
    std::vector<std::string> found;
    std::istringstream in(text);
    for (std::string word; in >> word;)
        found.push_back(word);
    return found;
}

// The share of the source's words that ours keeps, in order (a longest common subsequence).
double wordsKept(const std::string &source, const std::string &ours)
{
    const auto a = words(source);
    const auto b = words(ours);
    if (a.empty())
        return 1;
    std::vector<int> previous(b.size() + 1, 0);
    std::vector<int> current(b.size() + 1, 0);
    for (const auto &word : a) {
        for (std::size_t j = 0; j < b.size(); ++j)
            current[j + 1] = word == b[j] ? previous[j] + 1 : std::max(previous[j + 1], current[j]);
        std::swap(previous, current);
    }
    return static_cast<double>(previous[b.size()]) / static_cast<double>(a.size());
}

// Files whose text does not come back exactly, and why; they must still keep
// nearly all their words. A file that comes back exact must leave this list.
using KnownDifferences = std::map<std::string, const char *>;

const KnownDifferences throughLibreOffice = {
    {"2107-kde_pim-html",
     "LibreOffice's own import to ODT drops the menu bar's nested table that its text export "
     "keeps; arrow pictures' places come out as '?'"},
    {"OpenXML_text_reference_v1_2-docx",
     "WordPerfect has no all-capitals attribute: our file holds the capitals shown, LibreOffice's "
     "text export the letters as typed"},
    {"Sample_OpenXML_DOCX-docx.wp6",
     "the contents' capitals are written as capitals; LibreOffice's export keeps the letters as typed"},
    {"6953-tables-doc.wp6",
     "a table inside a cell joins the outer table's grid: its cells' text comes row by row with "
     "the cells beside it"},
    {"6953-tables-doc.wp5",
     "5.1 has no text box libwpd reads: the box's table follows its anchor, and "
     "LibreOffice's export leaves text boxes out; a table inside a cell joins the outer grid"},
    {"9005-various_lists-doc",
     "one list's bullet is the letter p, which our file keeps; LibreOffice's text export "
     "shows every bullet as \u2022"},
    {"Sample_OpenXML_DOCX-docx.wp5",
     "5.1 writes text frames as paragraphs, LibreOffice's export leaves frames out; the contents' "
     "capitals are written as capitals"},
    {"testRTFVarious-rtf.wp5", "5.1 writes the text box as a paragraph; LibreOffice's export leaves it out"},
    {"testWORD_numbered_list-doc.wp5",
     "5.1 writes the text box after its anchor; LibreOffice's export leaves it out"},
    {"testWORD_numbered_list-docx.wp5",
     "5.1 writes the text box (a drawing shape in Word's file) after its anchor; LibreOffice's "
     "export leaves it out"},
    {"testWORD_tableInRunInsideParagraph-docx.wp5",
     "5.1 writes the text box (a drawing shape holding a table) after its anchor; LibreOffice's "
     "export leaves it out"},
    {"wv-endnoteexample1-doc", "custom note marks become numbers"},
    {"wv-supported-footnote-1-features-doc", "custom note marks become numbers"},
};

// pandoc reads less than LibreOffice: what it leaves out is a known limit of the path without it.
const KnownDifferences throughPandoc = {
    {"2107-kde_pim-html", "pandoc drops the page's navigation table"},
    {"OpenXML_text_reference_v1_2-docx", "pandoc leaves out fields, text boxes and tracked changes"},
    {"Sample_OpenXML_DOCX-docx", "pandoc drops headers and the table of contents' page numbers"},
    {"testRTFListMicrosoftWord-rtf", "pandoc's RTF reader numbers a list afresh after a nested list"},
    {"testRTFVarious-rtf", "pandoc's RTF reader ends every list number with a full stop: \"1.\" for \"1)\""},
    {"testWORD_embedded_pics-docx", "pandoc drops the tracked deletion and captions differ"},
    {"testWORD_endnote_table-docx", "pandoc writes endnotes in another place"},
    {"testWORD_numbered_list-docx",
     "pandoc's Word reader keeps number formats but not their punctuation or continuation"},
};

class OfficeCorpus : public ::testing::Test {
protected:
    void SetUp() override
    {
        corpus = corpusDir();
        if (!corpus)
            GTEST_SKIP() << "../shared/corpus is not beside the checkout";
        if (!ConversionTools::libreOfficeURL())
            GTEST_SKIP() << "LibreOffice is not installed (scripts/setup installs it)";
        ConversionTools::overrideProgramFolder({});
    }
    void TearDown() override { ConversionTools::overrideLibreOfficePlaces(std::nullopt); }

    // Converts every source to both versions, all jobs handed to the engine at once.
    std::map<std::string, std::string> convertAll(const std::vector<Source> &sources, const fs::path &out)
    {
        std::map<std::string, std::string> failures;
        std::vector<std::pair<std::string, std::exception_ptr>> outcomes;
        int pending = 0;
        for (const auto &source : sources) {
            for (const auto &[target, ext] :
                 {std::pair{WPTarget::wp6, ".wp6"}, std::pair{WPTarget::wp5, ".wp5"}}) {
                const std::string name = source.key + ext;
                ++pending;
                Converter::perform(JobCase::officeToWP{source.path, target}, out / name,
                                   [&, name](Converter::Outcome outcome, const Converter::Losses &) {
                                       outcomes.emplace_back(name, outcome);
                                       --pending;
                                   });
            }
        }
        EXPECT_TRUE(waitUntil([&] { return pending == 0; }, 1200));
        for (const auto &[name, outcome] : outcomes)
            if (outcome)
                failures[name] = outcomeText(outcome);
        return failures;
    }

    void expectSameText(const std::vector<Source> &sources, const fs::path &out,
                        const std::map<std::string, std::string> &failures, const KnownDifferences &known,
                        double keptAtLeast)
    {
        const fs::path sourcesText = out / "sources";
        const fs::path oursText = out / "ours";
        fs::create_directories(sourcesText);
        fs::create_directories(oursText);
        std::vector<fs::path> links;
        for (const auto &source : sources) {
            links.push_back(out / "links" / (source.key + source.path.extension().string()));
            fs::create_directories(links.back().parent_path());
            fs::create_symlink(source.path, links.back());
        }
        exportText(links, sourcesText);
        std::vector<fs::path> ours;
        for (const auto &source : sources)
            for (const char *ext : {".wp6", ".wp5"})
                if (fs::exists(out / (source.key + ext)))
                    ours.push_back(out / (source.key + ext));
        // Copies named apart per version, so the two exports do not collide.
        std::vector<fs::path> named;
        for (const auto &file : ours) {
            named.push_back(out / "named" /
                            (file.stem().string() + "-" + file.extension().string().substr(1) + ".wpd"));
            fs::create_directories(named.back().parent_path());
            fs::copy_file(file, named.back());
        }
        exportText(named, oursText);
        for (const auto &source : sources) {
            const std::string expected = source.path.extension() == ".txt"
                                             ? textOfPlainFile(source.path)
                                             : readFile(sourcesText / (source.key + ".txt"));
            for (const auto &[ext, map] :
                 {std::pair{"wp6", &CharacterMap::wp6()}, std::pair{"wp5", &CharacterMap::wp5()}}) {
                const std::string name = source.key + "." + ext;
                SCOPED_TRACE(name);
                if (failures.contains(name)) {
                    ADD_FAILURE() << "not converted: " << failures.at(name);
                    continue;
                }
                const std::string ours =
                    plaintext::normalised(readFile(oursText / (source.key + "-" + ext + ".txt")), nullptr);
                const std::string theirs =
                    plaintext::matchingPrivateUse(plaintext::normalised(expected, map), ours);
                EXPECT_TRUE(theirs.empty() || !ours.empty()) << "LibreOffice read nothing from our file";
                auto reason = known.find(source.key + "." + ext); // one version only
                if (reason == known.end())
                    reason = known.find(source.key);
                if (reason == known.end()) {
                    EXPECT_EQ(ours, theirs);
                    continue;
                }
                const double kept = wordsKept(theirs, ours);
                std::printf("%-48s %-4s words kept %6.2f %%  (%s)\n", source.key.c_str(), ext, 100 * kept,
                            reason->second);
                EXPECT_NE(ours, theirs) << "now the same: take it off the list of known differences";
                EXPECT_GE(kept, keptAtLeast);
            }
        }
    }

    std::optional<fs::path> corpus;
};

} // namespace

TEST_F(OfficeCorpus, EveryOfficeDocumentBecomesWordPerfectThroughLibreOffice)
{
    TempDir out;
    const auto sources = officeDocuments(*corpus, {".docx", ".doc", ".rtf", ".html", ".txt", ".fodt"});
    ASSERT_GT(sources.size(), 40u);
    expectSameText(sources, out.path(), convertAll(sources, out.path()), throughLibreOffice, 0.75);
}

TEST_F(OfficeCorpus, WithoutLibreOfficePandocConvertsAndWordDocumentsAreRefused)
{
    TempDir out;
    const auto all = officeDocuments(*corpus, {".docx", ".rtf", ".html", ".txt", ".doc"});
    ConversionTools::overrideLibreOfficePlaces(std::vector<fs::path>{});
    auto failures = convertAll(all, out.path());
    ConversionTools::overrideLibreOfficePlaces(std::nullopt);
    std::vector<Source> converted;
    for (const auto &source : all) {
        if (source.key.ends_with("-doc")) {
            for (const char *ext : {".wp6", ".wp5"}) {
                EXPECT_EQ(
                    failures[source.key + ext],
                    "officeToolFailed(\"Word 97\u20132003 documents can only be read when LibreOffice is "
                    "installed.\")")
                    << source.key;
            }
        } else {
            converted.push_back(source);
        }
    }
    expectSameText(converted, out.path(), failures, throughPandoc, 0.60);
}
