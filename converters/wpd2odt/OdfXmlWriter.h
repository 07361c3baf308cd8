#pragma once

#include <libodfgen/libodfgen.hxx>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class EmbeddedPictures;

// Appends UTF-8 text escaped for XML content, or for an attribute value in double quotes.
void appendEscapedXml(std::string &out, std::string_view text, bool inAttribute);

// Turns the element stream of libodfgen into one XML document held in memory.
//
// Given a picture store, the writer moves inline pictures (draw:image holding office:binary-data)
// out into the package and points at them with xlink:href instead, which is how office suites
// themselves store pictures. Without one, pictures stay inline, as flat XML needs them.
class OdfXmlWriter : public OdfDocumentHandler {
public:
    explicit OdfXmlWriter(EmbeddedPictures *pictures = nullptr);

    void startDocument() override;
    void endDocument() override;
    void startElement(const char *name, const librevenge::RVNGPropertyList &attributes) override;
    void endElement(const char *name) override;
    void characters(const librevenge::RVNGString &text) override;

    const std::string &xml() const { return out; }

private:
    void writeStartTag(const std::string &name, const std::string &attributes);
    void closeStartTag();
    void flushHeldImage();
    // Where they were met, or the plain ones together at the end of out.
    void writeLeadingSpaces(bool whereMet);

    EmbeddedPictures *pictures;
    std::string out;
    // A start tag is left open until the next event, so that empty elements come out as <x/>.
    bool startTagOpen = false;
    // The serialised attributes of a draw:image whose start tag waits to learn whether its
    // picture data follows (and so moves to the package).
    std::optional<std::string> heldImage;
    bool inPictureData = false;
    std::string pictureData;
    // Nothing has been written in the open paragraph yet: ODF readers drop spaces here unless they
    // are text:s, and libodfgen writes a single leading space as plain text.
    bool atParagraphStart = false;
    // Spaces met while nothing else has been written in the paragraph: where in out they go and
    // how many. They are written once the paragraph turns out to hold more than spaces. A
    // paragraph of plain spaces alone stays empty, as in LibreOffice's own import, which drops
    // them and so makes the line as tall as the paragraph's style and not as its spans' fonts;
    // that import keeps a run of spaces (libodfgen's text:s), and so do we.
    struct LeadingSpaces {
        std::size_t position;
        std::size_t count;
        bool plain; // characters, not a text:s of libodfgen's
    };
    std::vector<LeadingSpaces> leadingSpaces;
    // Inside a text:s that went into leadingSpaces instead of out.
    bool inLeadingSpace = false;
    // The open paragraph's leading spaces include a text:s from libodfgen.
    bool spaceElementSeen = false;
};
