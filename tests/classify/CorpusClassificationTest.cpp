#include "TestSupport.h"
#include "classify/InputFile.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace fs = std::filesystem;
using testing_support::corpusDir;
using testing_support::TempDir;
using Kind = InputFile::Kind;

namespace {

constexpr bool byContent = true;
constexpr bool byExtension = false;

struct CorpusCase {
    std::string path;
    Kind kind;
    bool isEncrypted;
    bool wpVersionIsWP6;
    bool decidedByContent;
};

// Expected from each file's first bytes as listed in PROVENANCE.md, and from
// libwpd where those leave it open: the WordPerfect 4.2 files (crypt1 and
// crypt4 encrypted) have no prefix, OLE_Document.wpd keeps its document in an
// OLE2 stream, and the Macintosh crypt3.wp keeps its key (00 41) where byte 12
// does not show it. Each row: a folder, what its files classify as, their names.
const std::vector<CorpusCase> corpusCases = [] {
    const struct {
        const char *folder;
        Kind kind;
        bool isEncrypted;
        bool wpVersionIsWP6;
        bool decidedByContent;
        const char *names;
    } groups[] = {
        {"wp", Kind::wpDocument, false, true, byContent,
         "01FINALE1.WPD 1414.wp 9140-columns.wpd M2-R.END.wpd RTassays2.wp TOPOPREC.WPD chars6.wp "
         "expectation_document.wpd feature_test.wpd header_footer.wpd keji2001finalrep.wpd "
         "opinion_wpd.wpd testWordPerfect.wpd testWordPerfect_6_61.wpd wordperfect.wpd"},
        {"wp", Kind::wpDocument, false, false, byContent,
         "B_WP1.wp42.wp FormTab5FE.wp OLE_Document.wpd SANYIG01.C3P algeria3.wp chars5.wp equation5.wp "
         "images5.wp prn_test5.wp test5.wp testWordPerfect_42.doc testWordPerfect_50.doc "
         "testWordPerfect_51_52.doc testWordPerfect_5_0.wp testWordPerfect_5_1.wp texchars.wp torture4.wp"},
        {"wp", Kind::wpDocument, true, false, byContent, "crypt1.wp crypt3.wp crypt4.wp crypt5.wp"},
        {"wpg", Kind::wpGraphic, false, false, byContent, "WPG.wpg"},
        {"wpg", Kind::wpGraphic, false, true, byContent,
         "embedded-1414-1.wpg embedded-M2-R.END-1.wpg embedded-TOPOPREC-1.wpg embedded-TOPOPREC-2.wpg "
         "embedded-expectation_document-1.wpg embedded-keji2001finalrep-1.wpg "
         "embedded-keji2001finalrep-10.wpg embedded-keji2001finalrep-11.wpg "
         "embedded-keji2001finalrep-12.wpg embedded-keji2001finalrep-2.wpg "
         "embedded-keji2001finalrep-3.wpg"},
        {"wpg", Kind::wpGraphic, false, false, byExtension,
         "embedded-images5-1.wpg embedded-images5-2.wpg embedded-prn_test5-1.wpg"},
        {"office", Kind::office, false, false, byContent,
         "2107-kde_pim.html 6337-Hebrew.rtf 6953-advanced_formatting.doc 6953-fonts.doc "
         "6953-headers_and_footnotes.doc 6953-tables.doc 9005-various_lists.doc 9044-table_in_header.doc "
         "OpenXML_text_reference_v1_2.docx Rwanda.docx SF-428-B.docx Sample_OpenXML_DOCX.docx "
         "footnotes.docx headerPic.docx ooo.doc ooo.rtf ooo.sxw sample.docx testComment.docx "
         "testHTML_embedded_img.html testRTF.rtf testRTFHyperlink.rtf testRTFJapanese.rtf "
         "testRTFListLibreOffice.rtf testRTFListMicrosoftWord.rtf testRTFRegularImages.rtf "
         "testRTFTableCellSeparation.rtf testRTFVarious.rtf testRTFWord2010CzechCharacters.rtf "
         "testWORD.doc testWORD.docx testWORD_embedded_pics.docx testWORD_endnote_table.docx "
         "testWORD_numbered_list.doc testWORD_numbered_list.docx testWORD_tableInRunInsideParagraph.docx "
         "tika_testRTF.rtf ucf-bulletedList.odt ucf-fontFamily.odt ucf-numberedList.odt "
         "ucf-tableWidth.odt wv-endnoteexample1.doc wv-example-graphic-inclusion.doc wv-plainUmlaute.doc "
         "wv-supported-footnote-1-features.doc wv-symbol.doc"},
        {"office", Kind::openDocument, false, false, byContent,
         "LibreOfficeWriter_odt_1.3.odt bug10808.odt cjk-office.odt demoLibreOfficeImagePasteBug.odt "
         "embedded-png.odt equation.odt ooo-test.fodt ooo-test.odt testODTEmbedded.odt "
         "testODTEncrypted.odt"},
        {"office", Kind::office, false, false, byExtension,
         "NEWSSLID.DOC test.html testHTML_utf8.html text-iso8859-15.txt text-utf8.txt"},
        {"office", Kind::openDocument, false, false, byExtension, "testODTMacro.fodt"},
    };
    std::vector<CorpusCase> cases;
    for (const auto &group : groups) {
        std::istringstream names(group.names);
        for (std::string name; names >> name;)
            cases.push_back({std::string(group.folder) + "/" + name, group.kind, group.isEncrypted,
                             group.wpVersionIsWP6, group.decidedByContent});
    }
    return cases;
}();

class CorpusClassification : public ::testing::Test {
protected:
    void SetUp() override
    {
        corpus = corpusDir();
        if (!corpus)
            GTEST_SKIP() << "../shared/corpus is not beside the checkout";
    }
    std::optional<fs::path> corpus;
};

} // namespace

TEST_F(CorpusClassification, EveryFileHasItsExpectedKindAndFlags)
{
    for (const auto &c : corpusCases) {
        SCOPED_TRACE(c.path);
        const InputFile file = InputFile::classify(*corpus / c.path);
        EXPECT_EQ(file.kind, c.kind) << kindName(file.kind);
        EXPECT_EQ(file.isEncrypted, c.isEncrypted);
        EXPECT_EQ(file.wpVersionIsWP6, c.wpVersionIsWP6);
        EXPECT_EQ(file.url, *corpus / c.path);
    }
}

TEST_F(CorpusClassification, TableCoversTheWholeCorpus)
{
    std::set<std::string> listed;
    for (const auto &c : corpusCases)
        listed.insert(c.path);
    for (const char *folder : {"wp", "wpg", "office"}) {
        for (const auto &entry : fs::directory_iterator(*corpus / folder)) {
            const std::string relative = std::string(folder) + "/" + entry.path().filename().string();
            EXPECT_TRUE(listed.contains(relative)) << relative << " is not in the table";
        }
    }
}

// A misleading name changes nothing when the bytes decide, and changes the
// kind when only the name decided.
TEST_F(CorpusClassification, ContentWinsOverExtension)
{
    TempDir dir;
    for (const auto &c : corpusCases) {
        SCOPED_TRACE(c.path);
        const std::string misleading = c.kind == Kind::office ? "renamed.wpd" : "renamed.txt";
        fs::copy_file(*corpus / c.path, dir / misleading, fs::copy_options::overwrite_existing);
        const InputFile renamed = InputFile::classify(dir / misleading);
        if (c.decidedByContent) {
            EXPECT_EQ(renamed.kind, c.kind);
            EXPECT_EQ(renamed.isEncrypted, c.isEncrypted);
            EXPECT_EQ(renamed.wpVersionIsWP6, c.wpVersionIsWP6);
        } else {
            EXPECT_EQ(renamed.kind, c.kind == Kind::office ? Kind::wpDocument : Kind::office);
        }
    }
}
