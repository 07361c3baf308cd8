#include "TestSupport.h"
#include "classify/InputFile.h"

#include <gtest/gtest.h>

#include <set>

namespace fs = std::filesystem;
using testing_support::corpusDir;
using testing_support::TempDir;
using Kind = InputFile::Kind;

namespace {

constexpr bool byContent = true;
constexpr bool byExtension = false;

struct CorpusCase {
    const char *path;
    Kind kind;
    bool isEncrypted;
    bool wpVersionIsWP6;
    bool decidedByContent;
};

// Expected from each file's first bytes as listed in PROVENANCE.md, and from
// libwpd where those leave it open: the WordPerfect 4.2 files (crypt1 and
// crypt4 encrypted) have no prefix, OLE_Document.wpd keeps its document in an
// OLE2 stream, and the Macintosh crypt3.wp keeps its key (00 41) where byte 12
// does not show it.
const CorpusCase corpusCases[] = {
    {"wp/01FINALE1.WPD", Kind::wpDocument, false, true, byContent},
    {"wp/1414.wp", Kind::wpDocument, false, true, byContent},
    {"wp/9140-columns.wpd", Kind::wpDocument, false, true, byContent},
    {"wp/B_WP1.wp42.wp", Kind::wpDocument, false, false, byContent},
    {"wp/FormTab5FE.wp", Kind::wpDocument, false, false, byContent},
    {"wp/M2-R.END.wpd", Kind::wpDocument, false, true, byContent},
    {"wp/OLE_Document.wpd", Kind::wpDocument, false, false, byContent},
    {"wp/RTassays2.wp", Kind::wpDocument, false, true, byContent},
    {"wp/SANYIG01.C3P", Kind::wpDocument, false, false, byContent},
    {"wp/TOPOPREC.WPD", Kind::wpDocument, false, true, byContent},
    {"wp/algeria3.wp", Kind::wpDocument, false, false, byContent},
    {"wp/chars5.wp", Kind::wpDocument, false, false, byContent},
    {"wp/chars6.wp", Kind::wpDocument, false, true, byContent},
    {"wp/crypt1.wp", Kind::wpDocument, true, false, byContent},
    {"wp/crypt3.wp", Kind::wpDocument, true, false, byContent},
    {"wp/crypt4.wp", Kind::wpDocument, true, false, byContent},
    {"wp/crypt5.wp", Kind::wpDocument, true, false, byContent},
    {"wp/equation5.wp", Kind::wpDocument, false, false, byContent},
    {"wp/expectation_document.wpd", Kind::wpDocument, false, true, byContent},
    {"wp/feature_test.wpd", Kind::wpDocument, false, true, byContent},
    {"wp/header_footer.wpd", Kind::wpDocument, false, true, byContent},
    {"wp/images5.wp", Kind::wpDocument, false, false, byContent},
    {"wp/keji2001finalrep.wpd", Kind::wpDocument, false, true, byContent},
    {"wp/opinion_wpd.wpd", Kind::wpDocument, false, true, byContent},
    {"wp/prn_test5.wp", Kind::wpDocument, false, false, byContent},
    {"wp/test5.wp", Kind::wpDocument, false, false, byContent},
    {"wp/testWordPerfect.wpd", Kind::wpDocument, false, true, byContent},
    {"wp/testWordPerfect_42.doc", Kind::wpDocument, false, false, byContent},
    {"wp/testWordPerfect_50.doc", Kind::wpDocument, false, false, byContent},
    {"wp/testWordPerfect_51_52.doc", Kind::wpDocument, false, false, byContent},
    {"wp/testWordPerfect_5_0.wp", Kind::wpDocument, false, false, byContent},
    {"wp/testWordPerfect_5_1.wp", Kind::wpDocument, false, false, byContent},
    {"wp/testWordPerfect_6_61.wpd", Kind::wpDocument, false, true, byContent},
    {"wp/texchars.wp", Kind::wpDocument, false, false, byContent},
    {"wp/torture4.wp", Kind::wpDocument, false, false, byContent},
    {"wp/wordperfect.wpd", Kind::wpDocument, false, true, byContent},
    {"wpg/WPG.wpg", Kind::wpGraphic, false, false, byContent},
    {"wpg/embedded-1414-1.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-M2-R.END-1.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-TOPOPREC-1.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-TOPOPREC-2.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-expectation_document-1.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-images5-1.wpg", Kind::wpGraphic, false, false, byExtension},
    {"wpg/embedded-images5-2.wpg", Kind::wpGraphic, false, false, byExtension},
    {"wpg/embedded-keji2001finalrep-1.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-keji2001finalrep-10.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-keji2001finalrep-11.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-keji2001finalrep-12.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-keji2001finalrep-2.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-keji2001finalrep-3.wpg", Kind::wpGraphic, false, true, byContent},
    {"wpg/embedded-prn_test5-1.wpg", Kind::wpGraphic, false, false, byExtension},
    {"office/2107-kde_pim.html", Kind::office, false, false, byContent},
    {"office/6337-Hebrew.rtf", Kind::office, false, false, byContent},
    {"office/6953-advanced_formatting.doc", Kind::office, false, false, byContent},
    {"office/6953-fonts.doc", Kind::office, false, false, byContent},
    {"office/6953-headers_and_footnotes.doc", Kind::office, false, false, byContent},
    {"office/6953-tables.doc", Kind::office, false, false, byContent},
    {"office/9005-various_lists.doc", Kind::office, false, false, byContent},
    {"office/9044-table_in_header.doc", Kind::office, false, false, byContent},
    {"office/LibreOfficeWriter_odt_1.3.odt", Kind::openDocument, false, false, byContent},
    {"office/NEWSSLID.DOC", Kind::office, false, false, byExtension},
    {"office/OpenXML_text_reference_v1_2.docx", Kind::office, false, false, byContent},
    {"office/Rwanda.docx", Kind::office, false, false, byContent},
    {"office/SF-428-B.docx", Kind::office, false, false, byContent},
    {"office/Sample_OpenXML_DOCX.docx", Kind::office, false, false, byContent},
    {"office/bug10808.odt", Kind::openDocument, false, false, byContent},
    {"office/cjk-office.odt", Kind::openDocument, false, false, byContent},
    {"office/demoLibreOfficeImagePasteBug.odt", Kind::openDocument, false, false, byContent},
    {"office/embedded-png.odt", Kind::openDocument, false, false, byContent},
    {"office/equation.odt", Kind::openDocument, false, false, byContent},
    {"office/footnotes.docx", Kind::office, false, false, byContent},
    {"office/headerPic.docx", Kind::office, false, false, byContent},
    {"office/ooo-test.fodt", Kind::openDocument, false, false, byContent},
    {"office/ooo-test.odt", Kind::openDocument, false, false, byContent},
    {"office/ooo.doc", Kind::office, false, false, byContent},
    {"office/ooo.rtf", Kind::office, false, false, byContent},
    {"office/ooo.sxw", Kind::office, false, false, byContent},
    {"office/sample.docx", Kind::office, false, false, byContent},
    {"office/test.html", Kind::office, false, false, byExtension},
    {"office/testComment.docx", Kind::office, false, false, byContent},
    {"office/testHTML_embedded_img.html", Kind::office, false, false, byContent},
    {"office/testHTML_utf8.html", Kind::office, false, false, byExtension},
    {"office/testODTEmbedded.odt", Kind::openDocument, false, false, byContent},
    {"office/testODTEncrypted.odt", Kind::openDocument, false, false, byContent},
    {"office/testODTMacro.fodt", Kind::openDocument, false, false, byExtension},
    {"office/testRTF.rtf", Kind::office, false, false, byContent},
    {"office/testRTFHyperlink.rtf", Kind::office, false, false, byContent},
    {"office/testRTFJapanese.rtf", Kind::office, false, false, byContent},
    {"office/testRTFListLibreOffice.rtf", Kind::office, false, false, byContent},
    {"office/testRTFListMicrosoftWord.rtf", Kind::office, false, false, byContent},
    {"office/testRTFRegularImages.rtf", Kind::office, false, false, byContent},
    {"office/testRTFTableCellSeparation.rtf", Kind::office, false, false, byContent},
    {"office/testRTFVarious.rtf", Kind::office, false, false, byContent},
    {"office/testRTFWord2010CzechCharacters.rtf", Kind::office, false, false, byContent},
    {"office/testWORD.doc", Kind::office, false, false, byContent},
    {"office/testWORD.docx", Kind::office, false, false, byContent},
    {"office/testWORD_embedded_pics.docx", Kind::office, false, false, byContent},
    {"office/testWORD_endnote_table.docx", Kind::office, false, false, byContent},
    {"office/testWORD_numbered_list.doc", Kind::office, false, false, byContent},
    {"office/testWORD_numbered_list.docx", Kind::office, false, false, byContent},
    {"office/testWORD_tableInRunInsideParagraph.docx", Kind::office, false, false, byContent},
    {"office/text-iso8859-15.txt", Kind::office, false, false, byExtension},
    {"office/text-utf8.txt", Kind::office, false, false, byExtension},
    {"office/tika_testRTF.rtf", Kind::office, false, false, byContent},
    {"office/ucf-bulletedList.odt", Kind::office, false, false, byContent},
    {"office/ucf-fontFamily.odt", Kind::office, false, false, byContent},
    {"office/ucf-numberedList.odt", Kind::office, false, false, byContent},
    {"office/ucf-tableWidth.odt", Kind::office, false, false, byContent},
    {"office/wv-endnoteexample1.doc", Kind::office, false, false, byContent},
    {"office/wv-example-graphic-inclusion.doc", Kind::office, false, false, byContent},
    {"office/wv-plainUmlaute.doc", Kind::office, false, false, byContent},
    {"office/wv-supported-footnote-1-features.doc", Kind::office, false, false, byContent},
    {"office/wv-symbol.doc", Kind::office, false, false, byContent},
};

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
