#include "WpTestSupport.h"

#include "OdtFile.h"

#include "richtext/ModelBuilder.h"

#include <libwpd/libwpd.h>
#include <librevenge-stream/librevenge-stream.h>

#include <algorithm>
#include <filesystem>

namespace wptest {

std::string flatOdt(const std::string &automaticStyles, const std::string &body,
                    const std::string &masterStyles)
{
    return Odt{.automaticStyles = automaticStyles, .masterStyles = masterStyles, .body = body}.flat();
}

std::string style(const std::string &name, const std::string &family, const std::string &attributes,
                  const std::string &children)
{
    const std::string element = "style:" + family + "-properties";
    return "<style:style style:name=\"" + name + "\" style:family=\"" + family + "\"><" + element + " " +
           attributes + (children.empty() ? "/>" : ">" + children + "</" + element + ">") + "</style:style>";
}

ReadBack readWordPerfect(const std::string &bytes)
{
    ReadBack result;
    librevenge::RVNGStringStream input(reinterpret_cast<const unsigned char *>(bytes.data()),
                                       static_cast<unsigned>(bytes.size()));
    if (libwpd::WPDocument::isFileFormatSupported(&input) != libwpd::WPD_CONFIDENCE_EXCELLENT)
        return result;
    richtext::ModelBuilder builder;
    result.ok = libwpd::WPDocument::parse(&input, &builder, nullptr) == libwpd::WPD_OK;
    result.document = builder.document();
    return result;
}

namespace {

const richtext::Inline *findIn(const richtext::Blocks &blocks, const std::string &needle,
                               const richtext::Paragraph **owner);

const richtext::Inline *findIn(const richtext::Paragraph &paragraph, const std::string &needle,
                               const richtext::Paragraph **owner)
{
    for (const richtext::Inline &piece : paragraph.content) {
        if (piece.kind == richtext::Inline::Kind::text && piece.text.find(needle) != std::string::npos) {
            if (owner)
                *owner = &paragraph;
            return &piece;
        }
        if (piece.content) {
            if (const auto *found = findIn(*piece.content, needle, owner))
                return found;
        }
    }
    return nullptr;
}

const richtext::Inline *findIn(const richtext::Blocks &blocks, const std::string &needle,
                               const richtext::Paragraph **owner)
{
    for (const richtext::Block &block : blocks) {
        if (const richtext::Paragraph *paragraph = block.paragraph()) {
            if (const auto *found = findIn(*paragraph, needle, owner))
                return found;
        } else if (const richtext::Table *table = block.table()) {
            for (const richtext::Row &row : table->rows) {
                for (const richtext::Cell &cell : row.cells) {
                    if (const auto *found = findIn(cell.blocks, needle, owner))
                        return found;
                }
            }
        }
    }
    return nullptr;
}

} // namespace

const richtext::Inline *pieceWith(const richtext::Document &document, const std::string &needle,
                                  const richtext::Paragraph **owner)
{
    for (const richtext::PageSpan &span : document.pageSpans) {
        if (const auto *found = findIn(span.blocks, needle, owner))
            return found;
    }
    return nullptr;
}

const richtext::Paragraph *paragraphWith(const richtext::Document &document, const std::string &needle)
{
    const richtext::Paragraph *owner = nullptr;
    return pieceWith(document, needle, &owner) ? owner : nullptr;
}

namespace {

void words(const richtext::Blocks &blocks, std::string &into)
{
    for (const richtext::Block &block : blocks) {
        if (const richtext::Paragraph *paragraph = block.paragraph()) {
            into += paragraph->text();
            for (const richtext::Inline &piece : paragraph->content)
                if (piece.content)
                    words(*piece.content, into);
        } else if (const richtext::Table *table = block.table()) {
            for (const richtext::Row &row : table->rows)
                for (const richtext::Cell &cell : row.cells)
                    words(cell.blocks, into += " ");
        }
    }
}

void collect(const richtext::Blocks &blocks, richtext::Inline::Kind kind,
             std::vector<const richtext::Inline *> &into)
{
    for (const richtext::Block &block : blocks) {
        if (const richtext::Paragraph *paragraph = block.paragraph()) {
            for (const richtext::Inline &piece : paragraph->content) {
                if (piece.kind == kind && (kind != richtext::Inline::Kind::image || !piece.data.empty()))
                    into.push_back(&piece);
                if (piece.content)
                    collect(*piece.content, kind, into);
            }
        } else if (const richtext::Table *table = block.table()) {
            for (const richtext::Row &row : table->rows)
                for (const richtext::Cell &cell : row.cells)
                    collect(cell.blocks, kind, into);
        }
    }
}

} // namespace

std::vector<std::string> headersAndFooters(const richtext::Document &document)
{
    std::vector<std::string> result;
    for (const richtext::PageSpan &span : document.pageSpans)
        for (const richtext::HeaderFooter &part : span.headersAndFooters)
            words(part.blocks, result.emplace_back(part.footer ? "footer:" : "header:"));
    return result;
}

std::vector<const richtext::Paragraph *> headerAndFooterParagraphs(const richtext::Document &document)
{
    std::vector<const richtext::Paragraph *> result;
    for (const richtext::PageSpan &span : document.pageSpans)
        for (const richtext::HeaderFooter &part : span.headersAndFooters)
            for (const richtext::Block &block : part.blocks)
                if (const richtext::Paragraph *paragraph = block.paragraph())
                    result.push_back(paragraph);
    return result;
}

std::vector<std::string> sectionColumns(const richtext::Document &document)
{
    std::vector<std::string> result;
    for (const richtext::PageSpan &span : document.pageSpans)
        for (const richtext::Properties &section : span.sections)
            result.push_back(property(section, "style:columns"));
    return result;
}

std::vector<const richtext::Inline *> piecesOf(const richtext::Document &document,
                                               richtext::Inline::Kind kind)
{
    std::vector<const richtext::Inline *> result;
    for (const richtext::PageSpan &span : document.pageSpans)
        collect(span.blocks, kind, result);
    return result;
}

std::vector<CorpusFile> officeCorpus(const std::vector<std::string> &extensions)
{
    std::vector<CorpusFile> found;
    const std::filesystem::path office = std::filesystem::path(QM_CORPUS_DIR) / "office";
    if (!std::filesystem::is_directory(office))
        return found;
    for (const auto &entry : std::filesystem::directory_iterator(office)) {
        std::string extension = entry.path().extension().string();
        std::transform(extension.begin(), extension.end(), extension.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (std::find(extensions.begin(), extensions.end(), extension) != extensions.end() &&
            entry.path().filename() != "testODTEncrypted.odt")
            found.push_back({entry.path().string(), entry.path().stem().string() + "-" +
                                                        entry.path().extension().string().substr(1)});
    }
    std::sort(found.begin(), found.end(), [](const auto &a, const auto &b) { return a.key < b.key; });
    return found;
}

bool soffice(const std::string &format, const std::vector<std::string> &inputs, const std::string &outdir,
             const std::string &profile, const std::string &filter)
{
    return ProgramRun::libreOffice(SOFFICE_PATH, profile, format, inputs, outdir, filter).status == 0;
}

ReadBack VersionTest::convert(const std::string &odt, ProgramRun *run)
{
    const std::string source = scratch.write("source.fodt", odt);
    const std::string destination = scratch.file(std::string("out.") + GetParam().extension);
    const ProgramRun conversion = ProgramRun::of({ODT2WP5_PATH, GetParam().option, source, destination});
    EXPECT_EQ(conversion.status, 0) << conversion.err;
    if (run)
        *run = conversion;
    const ProgramRun text = ProgramRun::of({WPD2TEXT_PATH, destination});
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.err, "");
    ReadBack back = readWordPerfect(testing_support::readFile(destination));
    EXPECT_TRUE(back.ok);
    return back;
}

} // namespace wptest
