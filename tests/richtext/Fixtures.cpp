#include "Fixtures.h"

#include "richtext/HtmlReader.h"
#include "richtext/ModelBuilder.h"
#include "richtext/OdtReader.h"

#include <zip.h>

#include <memory>
#include <stdexcept>

namespace fixtures {

std::string zipOf(const std::vector<std::pair<std::string, std::string>> &entries, bool compress)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *buffer = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_t *archive = zip_open_from_source(buffer, ZIP_TRUNCATE, &error);
    if (!archive)
        throw std::runtime_error("cannot make a zip archive");
    zip_source_keep(buffer);
    for (const auto &[name, bytes] : entries) {
        zip_source_t *data = zip_source_buffer(archive, bytes.data(), bytes.size(), 0);
        const zip_int64_t index = zip_file_add(archive, name.c_str(), data, ZIP_FL_OVERWRITE);
        if (index < 0)
            throw std::runtime_error("cannot add " + name);
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index),
                                 compress && name != "mimetype" ? ZIP_CM_DEFLATE : ZIP_CM_STORE, 0);
    }
    if (zip_close(archive) != 0)
        throw std::runtime_error("cannot finish the zip archive");
    zip_source_open(buffer);
    zip_source_seek(buffer, 0, SEEK_END);
    const zip_int64_t size = zip_source_tell(buffer);
    zip_source_seek(buffer, 0, SEEK_SET);
    std::string result(static_cast<std::size_t>(size), '\0');
    zip_source_read(buffer, result.data(), static_cast<zip_uint64_t>(size));
    zip_source_close(buffer);
    zip_source_free(buffer);
    return result;
}

std::string odfRoot(const char *element)
{
    return std::string("<office:") + element +
           " xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
           " xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\""
           " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\""
           " xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\""
           " xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\""
           " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\""
           " xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\""
           " xmlns:xlink=\"http://www.w3.org/1999/xlink\""
           " xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
           " xmlns:meta=\"urn:oasis:names:tc:opendocument:xmlns:meta:1.0\""
           " xmlns:loext=\"urn:org:documentfoundation:names:experimental:office:xmlns:loext:1.0\""
           " office:version=\"1.3\"";
}

std::string Odt::flat() const
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + odfRoot("document") +
           " office:mimetype=\"application/vnd.oasis.opendocument.text\">"
           "<office:font-face-decls>" +
           fontFaces +
           "</office:font-face-decls>"
           "<office:styles>" +
           styles +
           "</office:styles>"
           "<office:automatic-styles>" +
           automaticStyles +
           "</office:automatic-styles>"
           "<office:master-styles>" +
           masterStyles +
           "</office:master-styles>"
           "<office:body><office:text>" +
           body + "</office:text></office:body></office:document>";
}

std::string Odt::contentXml() const
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + odfRoot("document-content") +
           "><office:font-face-decls>" + fontFaces +
           "</office:font-face-decls>"
           "<office:automatic-styles>" +
           automaticStyles +
           "</office:automatic-styles>"
           "<office:body><office:text>" +
           body + "</office:text></office:body></office:document-content>";
}

std::string Odt::stylesXml() const
{
    // Page layouts are automatic styles of styles.xml, beside the master pages that use them.
    std::string layouts;
    for (std::size_t at = 0; (at = automaticStyles.find("<style:page-layout ", at)) != std::string::npos;) {
        const std::size_t end = automaticStyles.find("</style:page-layout>", at) + 20;
        layouts += automaticStyles.substr(at, end - at);
        at = end;
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + odfRoot("document-styles") +
           "><office:font-face-decls>" + fontFaces +
           "</office:font-face-decls>"
           "<office:styles>" +
           styles +
           "</office:styles>"
           "<office:automatic-styles>" +
           layouts +
           "</office:automatic-styles>"
           "<office:master-styles>" +
           masterStyles + "</office:master-styles></office:document-styles>";
}

std::string Odt::package(const std::vector<std::pair<std::string, std::string>> &extra) const
{
    std::vector<std::pair<std::string, std::string>> entries = {
        {"mimetype", "application/vnd.oasis.opendocument.text"},
        {"content.xml", contentXml()},
        {"styles.xml", stylesXml()},
    };
    entries.insert(entries.end(), extra.begin(), extra.end());
    return zipOf(entries);
}

richtext::Document readOdt(const std::string &bytes, richtext::InflateLimits limits)
{
    richtext::ModelBuilder builder;
    richtext::OdtReader::read(bytes, builder, limits);
    return builder.document();
}

richtext::Document readHtml(const std::string &bytes)
{
    richtext::ModelBuilder builder;
    richtext::HtmlReader::read(bytes, builder);
    return builder.document();
}

std::vector<std::string> texts(const richtext::Document &document)
{
    std::vector<std::string> result;
    for (const richtext::Paragraph *paragraph : document.paragraphs())
        result.push_back(paragraph->text());
    return result;
}

const richtext::Inline *pieceWith(const richtext::Document &document, const std::string &needle)
{
    for (const richtext::Paragraph *paragraph : document.paragraphs())
        for (const richtext::Inline &piece : paragraph->content)
            if (piece.kind == richtext::Inline::Kind::text && piece.text.find(needle) != std::string::npos)
                return &piece;
    return nullptr;
}

std::string property(const richtext::Properties &properties, const std::string &name)
{
    const auto found = properties.find(name);
    return found == properties.end() ? std::string() : found->second;
}

void everything(librevenge::RVNGTextInterface &sink)
{
    using librevenge::RVNGPropertyList;
    auto list = [](std::initializer_list<std::pair<const char *, const char *>> entries) {
        RVNGPropertyList properties;
        for (const auto &[name, value] : entries)
            properties.insert(name, value);
        return properties;
    };
    RVNGPropertyList meta = list({{"dc:title", "Everything"}});
    sink.setDocumentMetaData(meta);
    sink.startDocument({});
    RVNGPropertyList page;
    page.insert("fo:page-width", 8.5);
    page.insert("fo:page-height", 11.0);
    page.insert("fo:margin-left", 1.0);
    sink.openPageSpan(page);
    sink.openHeader(list({{"librevenge:occurrence", "all"}}));
    sink.openParagraph({});
    sink.insertText("Head ");
    sink.insertField(list({{"librevenge:field-type", "text:page-number"}}));
    sink.closeParagraph();
    sink.closeHeader();

    sink.openParagraph(list({{"fo:text-align", "center"}}));
    sink.openSpan(list({{"fo:font-weight", "bold"}, {"style:font-name", "Arial"}, {"fo:color", "#ff0000"}}));
    sink.insertText("Bold caf\xC3\xA9 \xE2\x98\xBA {braces} back\\slash");
    sink.closeSpan();
    sink.openSpan({});
    sink.insertTab();
    sink.insertText("note");
    sink.openFootnote({});
    sink.openParagraph({});
    sink.insertText("The note.");
    sink.closeParagraph();
    sink.closeFootnote();
    sink.insertLineBreak();
    sink.closeSpan();
    sink.openLink(list({{"xlink:href", "https://example.org/?q=\"x\""}}));
    sink.openSpan({});
    sink.insertText("link");
    sink.closeSpan();
    sink.closeLink();
    sink.closeParagraph();

    RVNGPropertyList level = list({{"style:num-format", "A"}, {"style:num-suffix", "."}});
    level.insert("text:start-value", 2);
    sink.openOrderedListLevel(level);
    sink.openListElement({});
    sink.insertText("item");
    sink.closeListElement();
    sink.closeOrderedListLevel();

    RVNGPropertyList table;
    librevenge::RVNGPropertyListVector columns;
    for (int i = 0; i < 2; ++i) {
        RVNGPropertyList column;
        column.insert("style:column-width", 1.0);
        columns.append(column);
    }
    table.insert("librevenge:table-columns", columns);
    sink.openTable(table);
    sink.openTableRow({});
    RVNGPropertyList wide;
    wide.insert("table:number-columns-spanned", 2);
    sink.openTableCell(wide);
    sink.openParagraph({});
    sink.insertText("cell");
    sink.closeParagraph();
    sink.closeTableCell();
    sink.insertCoveredTableCell({});
    sink.closeTableRow();
    sink.closeTable();
    sink.closePageSpan();

    // Page numbers in roman figures from 5 on, two columns, tab stops and pictures.
    RVNGPropertyList roman = page;
    roman.insert("style:num-format", "i");
    roman.insert("style:page-number", 5);
    sink.openPageSpan(roman);
    RVNGPropertyList section;
    librevenge::RVNGPropertyListVector sectionColumns;
    for (const double indent : {0.0, 0.25}) {
        RVNGPropertyList column;
        column.insert("fo:start-indent", indent);
        column.insert("fo:end-indent", 0.25 - indent);
        sectionColumns.append(column);
    }
    section.insert("style:columns", sectionColumns);
    sink.openSection(section);
    RVNGPropertyList tabbed;
    librevenge::RVNGPropertyListVector stops;
    RVNGPropertyList stop = list({{"style:type", "right"}, {"style:leader-text", "."}});
    stop.insert("style:position", 3.0);
    stops.append(stop);
    tabbed.insert("librevenge:tab-stops", stops);
    sink.openParagraph(tabbed);
    sink.insertText("page");
    sink.insertTab();
    sink.insertField(list({{"librevenge:field-type", "text:page-number"}, {"style:num-format", "i"}}));
    static const char pngHeader[] = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x02\0\0\0\x03\x08\x02\0\0\0";
    static const char metafile[] = "\xD7\xCD\xC6\x9A\0\0\0\0\0\0\xE8\x03\xE8\x03\xE8\x03\0\0\0\0\0\0"
                                   "\x01\0\x09\0\0\x03\x0C\0\0\0\0\0\x03\0\0\0\0\0\x03\0\0\0\0\0";
    for (const auto &[bytes, size, anchor] : {std::tuple{pngHeader, sizeof pngHeader - 1, "paragraph"},
                                              std::tuple{metafile, sizeof metafile - 1, "as-char"}}) {
        RVNGPropertyList frame =
            list({{"text:anchor-type", anchor}, {"style:horizontal-rel", "page-end-margin"}});
        frame.insert("svg:width", 1.0);
        frame.insert("svg:height", 1.0);
        frame.insert("svg:x", -2.0);
        RVNGPropertyList object;
        object.insert("office:binary-data",
                      librevenge::RVNGBinaryData(reinterpret_cast<const unsigned char *>(bytes), size));
        sink.openFrame(frame);
        sink.insertBinaryObject(object);
        sink.closeFrame();
    }
    sink.closeParagraph();
    sink.closeSection();
    sink.openParagraph({});
    sink.insertText("second section");
    sink.closeParagraph();
    sink.closePageSpan();
    sink.endDocument();
}

std::string png2x3()
{
    static const char header[] = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x02\0\0\0\x03\x08\x02\0\0\0";
    return std::string(header, sizeof header - 1);
}

librevenge::RVNGBinaryData binary(const std::string &bytes)
{
    return librevenge::RVNGBinaryData(reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size());
}

bool balanced(const std::string &rtf)
{
    int depth = 0;
    for (std::size_t i = 0; i < rtf.size(); ++i) {
        if (rtf[i] == '\\') {
            ++i; // the escaped character, or the first letter of a control word
            continue;
        }
        depth += rtf[i] == '{' ? 1 : rtf[i] == '}' ? -1 : 0;
        if (depth < 0)
            return false;
    }
    return depth == 0;
}

} // namespace fixtures
