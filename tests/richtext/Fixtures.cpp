#include "Fixtures.h"

#include "richtext/HtmlReader.h"
#include "richtext/ModelBuilder.h"
#include "richtext/OdtReader.h"

#include <memory>
#include <stdexcept>

namespace fixtures {

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
