#pragma once

#include "Fixtures.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "richtext/Document.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// Helpers for the WordPerfect output tests: flat OpenDocument fixtures built in code, and
// WordPerfect bytes read back by libwpd, the independent reader.
namespace wptest {

// A flat OpenDocument text with these automatic styles, master styles and body.
std::string flatOdt(const std::string &automaticStyles, const std::string &body,
                    const std::string &masterStyles = {});

// <style:style> of this name and family whose <style:{family}-properties> has these attributes and children.
std::string style(const std::string &name, const std::string &family, const std::string &attributes,
                  const std::string &children = {});

struct ReadBack {
    bool ok = false; // libwpd took the file as a supported WordPerfect document
    richtext::Document document;
};
ReadBack readWordPerfect(const std::string &bytes);

// The first text piece of the main text, notes and cells included, that contains needle.
// With owner, the paragraph that holds it.
const richtext::Inline *pieceWith(const richtext::Document &document, const std::string &needle,
                                  const richtext::Paragraph **owner = nullptr);
const richtext::Paragraph *paragraphWith(const richtext::Document &document, const std::string &needle);
using fixtures::property;

// The main text's paragraphs as strings; the headers' and footers' ("header:" or "footer:" and their
// words, boxes' words included); each section's style:columns; the text boxes and pictures
// (with data) anywhere in the main text.
using fixtures::texts;
std::vector<std::string> headersAndFooters(const richtext::Document &document);
// The paragraphs of every header and footer, in order.
std::vector<const richtext::Paragraph *> headerAndFooterParagraphs(const richtext::Document &document);
std::vector<std::string> sectionColumns(const richtext::Document &document);
std::vector<const richtext::Inline *> piecesOf(const richtext::Document &document,
                                               richtext::Inline::Kind kind);

// The corpus's office documents with these extensions (any case), the password-protected one left
// out, each with a key no other shares (its base name and extension, "name-odt"); sorted by key.
struct CorpusFile {
    std::string path, key;
};
std::vector<CorpusFile> officeCorpus(const std::vector<std::string> &extensions);

// One LibreOffice run for many inputs, with a private profile: each output in outdir, named after its input.
bool soffice(const std::string &format, const std::vector<std::string> &inputs, const std::string &outdir,
             const std::string &profile, const std::string &filter = {});

struct Version {
    const char *option;
    const char *extension;
};
inline const Version versions[] = {{"--wp6", "wpd"}, {"--wp5", "wp5"}};
inline void PrintTo(const Version &version, std::ostream *out)
{
    *out << version.option;
}
inline std::string versionName(const testing::TestParamInfo<Version> &info)
{
    return info.param.option + 2;
}

// odt2wp5 through its command line, once for each version.
class VersionTest : public testing::TestWithParam<Version> {
protected:
    // Converts the fixture; fails the test unless odt2wp5 and wpd2text both accept it.
    ReadBack convert(const std::string &odt, ProgramRun *run = nullptr);
    bool wp6() const { return std::string(GetParam().option) == "--wp6"; }

    testing_support::TempDir scratch;
};

} // namespace wptest
