#include "HtmlReader.h"
#include "XmlTree.h"

#include "CodePages.h"
#include "CssStyles.h"
#include "HtmlContent.h"
#include "HtmlNotes.h"
#include "ReadError.h"
#include "Utf8.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstring>
#include <memory>
#include <mutex>

namespace richtext {
namespace {

bool named(const xmlNode *node, const char *name)
{
    return node && node->type == XML_ELEMENT_NODE &&
           xmlStrcasecmp(node->name, reinterpret_cast<const xmlChar *>(name)) == 0;
}

const xmlNode *findElement(const xmlNode *from, const char *name, int depth = 0)
{
    for (const xmlNode *node = from; node && depth < 8; node = node->next) {
        if (named(node, name))
            return node;
        if (const xmlNode *inside = findElement(node->children, name, depth + 1))
            return inside;
    }
    return nullptr;
}

std::string contentOf(const xmlNode *node)
{
    return Xml::text(node);
}
using Xml::plainAttribute;

// Style elements may stand anywhere, though they belong in the head.
void collectStyles(const xmlNode *node, CssStyles &sheet, int depth = 0)
{
    for (; node && depth < 64; node = node->next) {
        if (named(node, "style"))
            sheet.parse(contentOf(node));
        else
            collectStyles(node->children, sheet, depth + 1);
    }
}

// librevenge's HTML generator (wpd2html) numbers its classes from 0 and
// writes each rule's brace at the end of its selector's line.
bool writtenByLibrevenge(std::string_view html)
{
    return html.find(".span0 {\n") != std::string_view::npos ||
           html.find(".para0 {\n") != std::string_view::npos;
}

// librevenge writes an explicit space as &nbsp; but a no-break space of the
// text as the character itself; after parsing both would be U+00A0. The
// explicit ones become a noncharacter, which no text holds, to tell them apart.
std::string markExplicitSpaces(std::string_view html)
{
    std::string marked;
    marked.reserve(html.size());
    for (std::size_t at = 0;;) {
        const std::size_t entity = html.find("&nbsp;", at);
        marked.append(html.substr(at, entity - at));
        if (entity == std::string_view::npos)
            return marked;
        marked += "&#xFDD0;";
        at = entity + 6;
    }
}

// HTML that is not UTF-8 is nearly always in the 8-bit code page of its day;
// reading it as such keeps its text, where libxml2 would stop at the first bad byte.
std::string fromWindows1252(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 4);
    for (const char byte : bytes)
        Utf8::append(text, CodePages::fromWindows1252(static_cast<std::uint8_t>(byte)).value_or(U'\uFFFD'));
    return text;
}

librevenge::RVNGPropertyList metadata(const xmlNode *head)
{
    librevenge::RVNGPropertyList list;
    if (const xmlNode *title = findElement(head ? head->children : nullptr, "title"))
        if (const std::string text = contentOf(title); !text.empty())
            list.insert("dc:title", text.c_str());
    for (const xmlNode *node = head ? head->children : nullptr; node; node = node->next) {
        if (!named(node, "meta"))
            continue;
        const std::string name = plainAttribute(node, "name");
        const char *field = name == "author"        ? "meta:initial-creator"
                            : name == "subject"     ? "dc:subject"
                            : name == "keywords"    ? "meta:keyword"
                            : name == "description" ? "dc:description"
                                                    : nullptr;
        if (field)
            list.insert(field, plainAttribute(node, "content").c_str());
    }
    return list;
}

librevenge::RVNGPropertyList letterPage()
{
    // HTML says nothing of pages; WordPerfect documents are mostly US Letter with inch margins.
    librevenge::RVNGPropertyList page;
    page.insert("fo:page-width", 8.5);
    page.insert("fo:page-height", 11.0);
    for (const char *margin : {"fo:margin-left", "fo:margin-right", "fo:margin-top", "fo:margin-bottom"})
        page.insert(margin, 1.0);
    return page;
}

} // namespace

void HtmlReader::read(std::string_view bytes, librevenge::RVNGTextInterface &sink)
{
    static std::once_flag initialised;
    std::call_once(initialised, [] { xmlInitParser(); });

    if (std::all_of(bytes.begin(), bytes.end(),
                    [](char c) { return std::isspace(static_cast<unsigned char>(c)); }))
        throw ReadError("The HTML document is empty.");
    if (bytes.size() > static_cast<std::size_t>(INT_MAX))
        throw ReadError("The HTML document is too large to read.");

    std::string converted;
    if (!Utf8::isValid(bytes)) {
        converted = fromWindows1252(bytes);
        bytes = converted;
    }
    const bool fromLibrevenge = writtenByLibrevenge(bytes);
    if (fromLibrevenge) {
        converted = markExplicitSpaces(bytes);
        bytes = converted;
    }
    std::unique_ptr<htmlParserCtxt, void (*)(htmlParserCtxtPtr)> parser(htmlNewParserCtxt(),
                                                                        htmlFreeParserCtxt);
    if (!parser)
        throw ReadError("There was not enough memory to read the HTML document.");
    const int options = HTML_PARSE_RECOVER | HTML_PARSE_NONET | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING;
    std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> document(htmlCtxtReadMemory(parser.get(), bytes.data(),
                                                                             static_cast<int>(bytes.size()),
                                                                             nullptr, "UTF-8", options),
                                                          xmlFreeDoc);
    if (!document)
        throw ReadError("The HTML document cannot be read.");

    const xmlNode *root = xmlDocGetRootElement(document.get());
    CssStyles sheet;
    collectStyles(root, sheet);
    const xmlNode *head = findElement(root, "head");
    const xmlNode *body = findElement(root, "body");
    const HtmlNotes notes = HtmlNotes::find(body);

    sink.setDocumentMetaData(metadata(head));
    sink.startDocument({});
    sink.openPageSpan(letterPage());
    HtmlContent(sheet, notes, sink, fromLibrevenge).body(body);
    sink.closePageSpan();
    sink.endDocument();
}

} // namespace richtext
