#include "WpTestSupport.h"

#include "richtext/ModelBuilder.h"

#include <libwpd/libwpd.h>
#include <librevenge-stream/librevenge-stream.h>

namespace wptest {

std::string flatOdt(const std::string &automaticStyles, const std::string &body,
                    const std::string &masterStyles)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
           "<office:document"
           " xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
           " xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\""
           " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\""
           " xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\""
           " xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\""
           " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\""
           " xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
           " xmlns:meta=\"urn:oasis:names:tc:opendocument:xmlns:meta:1.0\""
           " xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\""
           " office:version=\"1.3\" office:mimetype=\"application/vnd.oasis.opendocument.text\">"
           "<office:automatic-styles>" +
           automaticStyles + "</office:automatic-styles><office:master-styles>" + masterStyles +
           "</office:master-styles><office:body><office:text>" + body +
           "</office:text></office:body></office:document>";
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

const richtext::Inline *pieceWith(const richtext::Document &document, const std::string &needle)
{
    const richtext::Paragraph *owner = nullptr;
    for (const richtext::PageSpan &span : document.pageSpans) {
        if (const auto *found = findIn(span.blocks, needle, &owner))
            return found;
    }
    return nullptr;
}

const richtext::Paragraph *paragraphWith(const richtext::Document &document, const std::string &needle)
{
    const richtext::Paragraph *owner = nullptr;
    for (const richtext::PageSpan &span : document.pageSpans) {
        if (findIn(span.blocks, needle, &owner))
            return owner;
    }
    return nullptr;
}

std::string property(const richtext::Properties &properties, const std::string &name)
{
    const auto found = properties.find(name);
    return found == properties.end() ? std::string() : found->second;
}

} // namespace wptest
