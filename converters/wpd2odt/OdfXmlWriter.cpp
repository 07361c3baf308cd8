#include "OdfXmlWriter.h"

#include "EmbeddedPictures.h"

#include "richtext/Utf8.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

const std::string imageElement = "draw:image";
const std::string binaryDataElement = "office:binary-data";

bool isXmlCharacter(char32_t c)
{
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

} // namespace

// Damaged documents can carry control codes and stray bytes that XML does not allow at all; the
// codes are dropped and the stray bytes become U+FFFD, so the output always parses.
void appendEscapedXml(std::string &out, std::string_view text, bool inAttribute)
{
    for (const char32_t c : richtext::Utf8::decode(text)) {
        if (!isXmlCharacter(c))
            continue;
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += inAttribute ? "&quot;" : "\"";
            break;
        // Attribute values would have these normalised to spaces by any reader.
        case '\t':
            out += inAttribute ? "&#9;" : "\t";
            break;
        case '\n':
            out += inAttribute ? "&#10;" : "\n";
            break;
        case '\r':
            out += "&#13;";
            break;
        default:
            richtext::Utf8::append(out, c);
        }
    }
}

namespace {

std::string spaceElement(std::size_t count)
{
    return count == 1 ? std::string("<text:s/>") : "<text:s text:c=\"" + std::to_string(count) + "\"/>";
}

std::string serialiseAttributes(const librevenge::RVNGPropertyList &attributes)
{
    std::string result;
    librevenge::RVNGPropertyList::Iter i(attributes);
    for (i.rewind(); i.next();) {
        // librevenge:* entries are private notes between the libraries, not ODF attributes.
        if (!i() || std::strncmp(i.key(), "librevenge:", 11) == 0)
            continue;
        result += ' ';
        result += i.key();
        result += "=\"";
        appendEscapedXml(result, i()->getStr().cstr(), true);
        result += '"';
    }
    return result;
}

} // namespace

OdfXmlWriter::OdfXmlWriter(EmbeddedPictures *pictures) : pictures(pictures) {}

void OdfXmlWriter::startDocument()
{
    out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    startTagOpen = false;
    heldImage.reset();
    inPictureData = false;
    leadingSpaces.clear();
    inLeadingSpace = false;
}

void OdfXmlWriter::endDocument()
{
    flushHeldImage();
    closeStartTag();
    out += '\n';
}

void OdfXmlWriter::startElement(const char *name, const librevenge::RVNGPropertyList &attributes)
{
    if (pictures && name == binaryDataElement && heldImage && !inPictureData) {
        inPictureData = true;
        pictureData.clear();
        return;
    }
    flushHeldImage();
    const std::string_view element(name);
    if (element == "text:p" || element == "text:h") {
        atParagraphStart = true;
        spaceElementSeen = false;
        leadingSpaces.clear();
    } else if (atParagraphStart && element == "text:s") {
        // libodfgen writes the second and later of a run of spaces this way.
        closeStartTag();
        std::size_t count = 1;
        if (const librevenge::RVNGProperty *c = attributes["text:c"])
            count = static_cast<std::size_t>(std::max(1, c->getInt()));
        leadingSpaces.push_back({out.size(), count, false});
        inLeadingSpace = true;
        spaceElementSeen = true;
        return;
    } else if (element != "text:span" && element != "text:a") {
        writeLeadingSpaces(false);
    }
    if (pictures && name == imageElement) {
        closeStartTag();
        heldImage = serialiseAttributes(attributes);
        return;
    }
    writeStartTag(name, serialiseAttributes(attributes));
}

void OdfXmlWriter::endElement(const char *name)
{
    if (inPictureData && name == binaryDataElement) {
        inPictureData = false;
        const librevenge::RVNGBinaryData data(pictureData.c_str());
        std::string bytes(reinterpret_cast<const char *>(data.getDataBuffer()), data.size());
        std::string reference = " xlink:href=\"";
        appendEscapedXml(reference, pictures->add(std::move(bytes)), true);
        reference += "\" xlink:type=\"simple\" xlink:show=\"embed\" xlink:actuate=\"onLoad\"";
        writeStartTag(imageElement, *heldImage + reference);
        heldImage.reset();
        return;
    }
    flushHeldImage();
    const std::string_view element(name);
    if (inLeadingSpace && element == "text:s") {
        inLeadingSpace = false;
        return;
    }
    if (element == "text:p" || element == "text:h") {
        if (spaceElementSeen)
            writeLeadingSpaces(true);
        atParagraphStart = false;
        leadingSpaces.clear();
    }
    if (startTagOpen) {
        out += "/>";
        startTagOpen = false;
        return;
    }
    out += "</";
    out += name;
    out += '>';
}

void OdfXmlWriter::characters(const librevenge::RVNGString &text)
{
    if (inPictureData) {
        pictureData += text.cstr();
        return;
    }
    flushHeldImage();
    closeStartTag();
    const char *rest = text.cstr();
    if (atParagraphStart && *rest) {
        std::size_t spaces = 0;
        while (rest[spaces] == ' ')
            ++spaces;
        if (spaces > 0)
            leadingSpaces.push_back({out.size(), spaces, true});
        rest += spaces;
        if (*rest)
            writeLeadingSpaces(false);
    }
    appendEscapedXml(out, rest, false);
}

void OdfXmlWriter::writeLeadingSpaces(bool whereMet)
{
    atParagraphStart = false;
    std::size_t moved = 0;
    // From the last, so that the positions before it stay where they are.
    for (auto i = leadingSpaces.rbegin(); i != leadingSpaces.rend(); ++i) {
        // A plain space goes with the text that follows it, in its font: left in a span of its
        // own (a footnote's opening space in the body's font, say) it would make the first line
        // as tall as that span's font. Runs stay in their spans, which may be underlined to
        // draw a line to write on.
        if (!whereMet && i->plain)
            moved += i->count;
        else
            out.insert(i->position, spaceElement(i->count));
    }
    if (moved > 0) {
        closeStartTag();
        out += spaceElement(moved);
    }
    leadingSpaces.clear();
}

void OdfXmlWriter::writeStartTag(const std::string &name, const std::string &attributes)
{
    closeStartTag();
    out += '<';
    out += name;
    out += attributes;
    startTagOpen = true;
}

void OdfXmlWriter::closeStartTag()
{
    if (startTagOpen) {
        out += '>';
        startTagOpen = false;
    }
}

void OdfXmlWriter::flushHeldImage()
{
    if (heldImage) {
        writeStartTag(imageElement, *heldImage);
        heldImage.reset();
    }
}
