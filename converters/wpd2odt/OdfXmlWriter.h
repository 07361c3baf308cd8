#pragma once

#include <libodfgen/libodfgen.hxx>

#include <optional>
#include <string>

class EmbeddedPictures;

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
};
