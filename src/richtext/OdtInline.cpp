#include "OdtInline.h"
#include "Base64.h"

#include "OdfNames.h"
#include "OdtContent.h"
#include "OdtProperties.h"
#include "SymbolFonts.h"
#include "Utf8.h"
#include "XmlTree.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <cstring>

namespace richtext {
namespace {

using namespace OdfNames;
using librevenge::RVNGPropertyList;

constexpr int maximumSpaces = 10'000;

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Inline elements that carry no text of the document.
bool isMark(const char *name)
{
    static const char *const marks[] = {
        "bookmark",
        "bookmark-start",
        "bookmark-end",
        "reference-mark",
        "reference-mark-start",
        "reference-mark-end",
        "soft-page-break",
        "change-start",
        "change-end",
        "toc-mark",
        "toc-mark-start",
        "toc-mark-end",
        "alphabetical-index-mark",
        "alphabetical-index-mark-start",
        "alphabetical-index-mark-end",
        "user-index-mark",
        "annotation-end",
        "note-citation",
        "ruby-text", // a reading aid set above its base; text exports keep only the base, as we do
    };
    for (const char *mark : marks)
        if (std::strcmp(name, mark) == 0)
            return true;
    return false;
}

// What a picture's bytes are, for consumers that go by MIME type.
const char *mimeTypeOf(const std::string &bytes)
{
    if (bytes.rfind("\x89PNG", 0) == 0)
        return "image/png";
    if (bytes.rfind("\xFF\xD8\xFF", 0) == 0)
        return "image/jpeg";
    if (bytes.rfind("GIF8", 0) == 0)
        return "image/gif";
    if (bytes.rfind("BM", 0) == 0)
        return "image/bmp";
    if (bytes.size() > 44 && bytes.compare(40, 4, " EMF") == 0)
        return "image/emf";
    if (bytes.rfind("\xD7\xCD\xC6\x9A", 0) == 0)
        return "image/wmf";
    if (bytes.find("<svg") != std::string::npos)
        return "image/svg+xml";
    return "application/octet-stream";
}

// A frame may hold its picture in several forms, the preferred first: LibreOffice gives a Windows
// metafile a PNG beside it. A metafile, which no writer here can hold, gives way to the next form.
const xmlNode *heldPicture(const xmlNode *frame)
{
    const xmlNode *first = Xml::child(frame, draw, "image");
    const auto mimeType = [](const xmlNode *image) {
        return Xml::attribute(image, draw, "mime-type")
            .value_or(Xml::attribute(image, loext, "mime-type").value_or(""));
    };
    const auto metafile = [](const std::string &type) {
        return type.find("wmf") != std::string::npos || type.find("emf") != std::string::npos;
    };
    if (!first || !metafile(mimeType(first)))
        return first;
    for (const xmlNode *next = first->next; next; next = next->next)
        if (Xml::is(next, draw, "image")) {
            const std::string type = mimeType(next);
            return type.starts_with("image/") && !metafile(type) ? next : first;
        }
    return first;
}

} // namespace

OdtInline::OdtInline(OdtContent &content, const OdfProperties &paragraphText) : content(content)
{
    formats.push_back(paragraphText);
}

void OdtInline::walk(const xmlNode *parent)
{
    for (const xmlNode *node = parent->children; node; node = node->next) {
        if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE)
            characters(reinterpret_cast<const char *>(node->content));
        else if (node->type == XML_ELEMENT_NODE)
            element(node);
    }
}

void OdtInline::characters(const char *text)
{
    if (!text)
        return;
    for (const char *c = text; *c; ++c) {
        if (isSpace(*c)) {
            if (!ignoreSpace)
                pending += ' ';
            ignoreSpace = true;
        } else {
            pending += *c;
            ignoreSpace = false;
        }
    }
}

void OdtInline::flush()
{
    if (pending.empty())
        return;
    const OdtStyles::SymbolEncoding encoding = content.styles().symbolEncoding(formats.back());
    if (encoding.font == SymbolFonts::Font::none) {
        emit(pending, formats.back());
        pending.clear();
        return;
    }
    // The glyphs of a symbol font become the characters they show, set in the font around them:
    // readers recode text in a font named Symbol as its codes (LibreOffice draws a × in it as ⋅,
    // Symbol's 0xD7, and libwpd reads a plain "a" in it as α). The glyphs without a meaning stay
    // as they are, in their font.
    const OdfProperties plain = plainFormat();
    for (const auto &piece : SymbolFonts::translate(encoding.font, pending, encoding.plainCodes))
        emit(piece.text, piece.translated ? plain : formats.back());
    pending.clear();
}

// Each run of one script goes out in a span of that script's properties. Punctuation, digits and
// spaces belong to the script before them, or at a paragraph's start to the first one after them.
void OdtInline::emit(const std::string &text, const OdfProperties &format)
{
    if (text.empty())
        return;
    using OdtProperties::Script;
    if (script == Script::western &&
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        // Plain ASCII after western text, by far the most of it: one run, no script of its own.
        scriptKnown = scriptKnown || std::any_of(text.begin(), text.end(), [](char c) {
                          return (c | 0x20) >= 'a' && (c | 0x20) <= 'z';
                      });
        ensureSpanFor(format, script);
        content.output().insertText(librevenge::RVNGString(text.c_str()));
        return;
    }
    const std::u32string characters = Utf8::decode(text);
    if (!scriptKnown)
        for (const char32_t c : characters)
            if (const Script own = OdtProperties::scriptOf(c); own != Script::neutral) {
                script = own;
                break;
            }
    std::string run;
    for (const char32_t c : characters) {
        const Script own = OdtProperties::scriptOf(c);
        if (own != Script::neutral && own != script) {
            if (!run.empty()) {
                ensureSpanFor(format, script);
                content.output().insertText(librevenge::RVNGString(run.c_str()));
                run.clear();
            }
            script = own;
        }
        if (own != Script::neutral)
            scriptKnown = true;
        Utf8::append(run, c);
    }
    ensureSpanFor(format, script);
    content.output().insertText(librevenge::RVNGString(run.c_str()));
}

// The current formatting with the font of the nearest enclosing text that is not in a symbol font.
OdfProperties OdtInline::plainFormat() const
{
    static const char *const fontKeys[] = {"style:font-name", "fo:font-family", "style:font-charset"};
    OdfProperties format = formats.back();
    for (const char *key : fontKeys)
        format.erase(key);
    const OdtStyles &styles = content.styles();
    std::vector<OdfProperties> around(formats.rbegin(), formats.rend());
    around.push_back(styles.resolve("text", "", "text-properties", content.scope()));
    for (const OdfProperties &outer : around) {
        if (styles.symbolEncoding(outer).font != SymbolFonts::Font::none)
            continue;
        for (const char *key : fontKeys)
            if (const auto found = outer.find(key); found != outer.end())
                format[key] = found->second;
        break;
    }
    return format;
}

void OdtInline::ensureSpan()
{
    ensureSpanFor(formats.back(), script);
}

void OdtInline::ensureSpanFor(const OdfProperties &format, OdtProperties::Script written)
{
    using OdtProperties::Script;
    if (written == Script::asian || written == Script::complex)
        ensureSpan(OdtProperties::forScript(format, written));
    else
        ensureSpan(format);
}

void OdtInline::ensureSpan(const OdfProperties &format)
{
    if (spanOpen && openFormat == format)
        return;
    closeSpan();
    RVNGPropertyList properties;
    OdtProperties::addText(properties, format, content.styles());
    content.output().openSpan(properties);
    openFormat = format;
    spanOpen = true;
    spoken = true;
}

void OdtInline::closeSpan()
{
    if (!spanOpen)
        return;
    content.output().closeSpan();
    spanOpen = false;
}

void OdtInline::pushStyle(const xmlNode *node)
{
    OdfProperties format = formats.back();
    const OdfProperties own = content.styles().resolve(
        "text", Xml::attribute(node, text, "style-name").value_or(""), "text-properties", content.scope());
    // A span's own style sits on the paragraph's formatting; it does not restart from the defaults.
    const OdfProperties defaults = content.styles().resolve("text", "", "text-properties", content.scope());
    for (const auto &[name, value] : own) {
        const auto fallback = defaults.find(name);
        if (fallback == defaults.end() || fallback->second != value || !format.count(name))
            format[name] = value;
    }
    formats.push_back(std::move(format));
}

void OdtInline::element(const xmlNode *node)
{
    const char *name = Xml::localName(node);
    librevenge::RVNGTextInterface &out = content.output();
    if (std::strcmp(Xml::nameSpaceOf(node), text) == 0) {
        if (std::strcmp(name, "span") == 0) {
            flush();
            pushStyle(node);
            if (content.enter()) {
                walk(node);
                content.leave();
            }
            flush();
            formats.pop_back();
        } else if (std::strcmp(name, "a") == 0) {
            flush();
            closeSpan();
            RVNGPropertyList link;
            link.insert("xlink:type", "simple");
            link.insert("xlink:href", Xml::attribute(node, xlink, "href").value_or("").c_str());
            out.openLink(link);
            pushStyle(node);
            if (content.enter()) {
                walk(node);
                content.leave();
            }
            flush();
            closeSpan();
            formats.pop_back();
            out.closeLink();
        } else if (std::strcmp(name, "s") == 0) {
            flush();
            ensureSpan();
            const auto count = Xml::attribute(node, text, "c");
            for (int n = count ? std::max(1, std::min(std::atoi(count->c_str()), maximumSpaces)) : 1; n > 0;
                 --n)
                out.insertSpace();
            ignoreSpace = false;
        } else if (std::strcmp(name, "tab") == 0) {
            flush();
            ensureSpan();
            out.insertTab();
            ignoreSpace = false;
        } else if (std::strcmp(name, "line-break") == 0) {
            flush();
            ensureSpan();
            out.insertLineBreak();
            ignoreSpace = false;
        } else if (std::strcmp(name, "note") == 0) {
            note(node);
        } else if (std::strcmp(name, "change") == 0) {
            deleted(node);
        } else if (std::strcmp(name, "page-number") == 0) {
            field("text:page-number", node);
        } else if (std::strcmp(name, "page-count") == 0) {
            field("text:page-count", node);
        } else if (!isMark(name) && content.enter()) {
            // Other fields show their current value as their content.
            walk(node);
            content.leave();
        }
    } else if (Xml::is(node, draw, "frame")) {
        frame(node);
    } else if (isShape(node)) {
        shape(node);
    } else if (Xml::is(node, draw, "a") && content.enter()) {
        walk(node);
        content.leave();
    } else if (Xml::is(node, office, "annotation")) {
        flush();
        ensureSpan();
        out.openComment({});
        content.blocks(node);
        out.closeComment();
    } else if (!OdfNames::prefixOf(Xml::nameSpaceOf(node)) && content.enter()) {
        // An element of another vocabulary: its text still belongs to the paragraph.
        walk(node);
        content.leave();
    }
}

void OdtInline::deleted(const xmlNode *node)
{
    const std::string id = Xml::attribute(node, text, "change-id").value_or("");
    const xmlNode *deletion = content.takeDeletion(id);
    if (!deletion)
        return;
    flush();
    OdfProperties struck = formats.back();
    struck["style:text-line-through-style"] = "solid";
    formats.push_back(std::move(struck));
    // The removed paragraphs run on inline: they stood where the mark is, inside this paragraph.
    std::function<void(const xmlNode *)> paragraphs = [&](const xmlNode *parent) {
        for (const xmlNode *child : Xml::children(parent)) {
            if (!content.enter())
                return;
            if (Xml::is(child, text, "p") || Xml::is(child, text, "h")) {
                if (!pending.empty() || spanOpen)
                    characters(" ");
                walk(child);
            } else if (Xml::is(child, text, "list") || Xml::is(child, text, "list-item")) {
                paragraphs(child);
            }
            content.leave();
        }
    };
    paragraphs(deletion);
    flush();
    formats.pop_back();
    content.returnDeletion(id, deletion);
}

void OdtInline::field(const char *type, const xmlNode *node)
{
    flush();
    ensureSpan();
    RVNGPropertyList properties;
    properties.insert("librevenge:field-type", type);
    if (const auto format = Xml::attribute(node, style, "num-format"))
        properties.insert("style:num-format", format->c_str());
    // What the field showed when the document was saved, for writers whose format lacks it.
    const std::string shown = Xml::text(node);
    if (!shown.empty())
        properties.insert("office:string-value", shown.c_str());
    content.output().insertField(properties);
    ignoreSpace = false;
}

void OdtInline::note(const xmlNode *node)
{
    flush();
    ensureSpan();
    const bool endnote = Xml::attribute(node, text, "note-class").value_or("footnote") == "endnote";
    RVNGPropertyList properties;
    if (const xmlNode *citation = Xml::child(node, text, "note-citation")) {
        properties.insert("librevenge:number", Xml::text(citation).c_str());
        // A mark the author chose, not a number the application counted.
        if (const auto label = Xml::attribute(citation, text, "label"); label && !label->empty())
            properties.insert("text:label", label->c_str());
    }
    librevenge::RVNGTextInterface &out = content.output();
    endnote ? out.openEndnote(properties) : out.openFootnote(properties);
    if (const xmlNode *body = Xml::child(node, text, "note-body"); body && content.enter()) {
        content.blocks(body);
        content.leave();
    }
    endnote ? out.closeEndnote() : out.closeFootnote();
    ignoreSpace = false;
}

// A frame's or shape's properties: anchoring, wrap and position mostly live in its graphic style.
RVNGPropertyList OdtInline::frameProperties(const xmlNode *node)
{
    OdfProperties odf =
        content.styles().resolve("graphic", Xml::attribute(node, draw, "style-name").value_or(""),
                                 "graphic-properties", content.scope());
    for (auto &[name, value] : Xml::attributes(node))
        odf[name] = value;
    return OdtProperties::frame(odf);
}

void OdtInline::textBox(const RVNGPropertyList &frame, const xmlNode *body)
{
    librevenge::RVNGTextInterface &out = content.output();
    ensureSpan();
    out.openFrame(frame);
    out.openTextBox({});
    if (content.enter()) {
        content.blocks(body);
        content.leave();
    }
    out.closeTextBox();
    out.closeFrame();
    ignoreSpace = false;
}

void OdtInline::frame(const xmlNode *node)
{
    const RVNGPropertyList properties = frameProperties(node);
    flush();
    if (const xmlNode *box = Xml::child(node, draw, "text-box")) {
        textBox(properties, box);
    } else if (const xmlNode *picture = heldPicture(node)) {
        if (image(picture, properties))
            ignoreSpace = false;
    }
}

bool OdtInline::isShape(const xmlNode *node)
{
    if (std::strcmp(Xml::nameSpaceOf(node), draw) != 0)
        return false;
    static const char *const shapes[] = {
        "custom-shape",    "rect", "ellipse",   "circle",  "line",    "polyline", "polygon",
        "regular-polygon", "path", "connector", "caption", "measure", "g"};
    const char *name = Xml::localName(node);
    return std::any_of(std::begin(shapes), std::end(shapes),
                       [name](const char *shape) { return std::strcmp(name, shape) == 0; });
}

bool OdtInline::holdsWords(const xmlNode *shape)
{
    for (const xmlNode *child : Xml::children(shape)) {
        if (Xml::is(child, text, "p") || Xml::is(child, text, "h") || Xml::is(child, text, "list") ||
            Xml::is(child, table, "table"))
            return true;
        if (Xml::is(shape, draw, "g") && isShape(child) && holdsWords(child))
            return true;
    }
    return false;
}

// A drawing shape: its text (Word's text boxes come as shapes) stands in a text box of the shape's
// size and place; the drawing itself is for a writer that draws, and the others report it lost.
void OdtInline::shape(const xmlNode *node)
{
    librevenge::RVNGTextInterface &out = content.output();
    flush();
    if (Xml::is(node, draw, "g")) {
        if (content.enter()) {
            for (const xmlNode *child : Xml::children(node))
                if (isShape(child))
                    shape(child);
            content.leave();
        }
        return;
    }
    const bool words = holdsWords(node);
    RVNGPropertyList drawn;
    for (const char *name : {"svg:x", "svg:y", "svg:width", "svg:height"})
        if (const auto value = Xml::attribute(node, svg, name + 4))
            drawn.insert(name, value->c_str());
    // A shape with words draws a frame behind them: the text box stands for both.
    if (!words || !Xml::is(node, draw, "custom-shape"))
        Xml::is(node, draw, "rect")                                       ? out.drawRectangle(drawn)
        : Xml::is(node, draw, "ellipse") || Xml::is(node, draw, "circle") ? out.drawEllipse(drawn)
                                                                          : out.drawPath(drawn);
    if (words)
        textBox(frameProperties(node), node);
}

bool OdtInline::image(const xmlNode *node, const RVNGPropertyList &frame)
{
    librevenge::RVNGBinaryData data;
    std::string base64;
    if (const xmlNode *inlined = Xml::child(node, office, "binary-data")) {
        base64 = Xml::text(inlined);
        std::erase_if(base64, isSpace);
        data = decodeBase64(base64);
    } else if (const auto href = Xml::attribute(node, xlink, "href")) {
        if (const auto bytes = content.picture(*href))
            data = librevenge::RVNGBinaryData(reinterpret_cast<const unsigned char *>(bytes->data()),
                                              bytes->size());
    }
    if (data.empty())
        return false;
    const std::string head(reinterpret_cast<const char *>(data.getDataBuffer()),
                           std::min<unsigned long>(data.size(), 4096));
    RVNGPropertyList object;
    object.insert("librevenge:mime-type", mimeTypeOf(head));
    // The text as it came, when there is one: librevenge would encode the
    // bytes again for every reader of the property, a long wait for large pictures.
    if (!base64.empty())
        object.insert("office:binary-data", base64.c_str());
    else
        object.insert("office:binary-data", data);
    ensureSpan();
    content.output().openFrame(frame);
    content.output().insertBinaryObject(object);
    content.output().closeFrame();
    return true;
}

void OdtInline::label(const std::string &text, const std::string &followedBy)
{
    pending += text;
    if (followedBy == "listtab") {
        flush();
        ensureSpan();
        content.output().insertTab();
    } else if (followedBy != "nothing") {
        pending += ' ';
    }
    ignoreSpace = true;
}

void OdtInline::finish()
{
    flush();
    // An empty paragraph still has a font, and its line is as tall as that font: say which.
    if (!spoken && formats.size() == 1 && !formats.back().empty())
        ensureSpan();
    closeSpan();
}

} // namespace richtext
