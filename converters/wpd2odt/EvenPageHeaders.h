#pragma once

#include <libodfgen/libodfgen.hxx>

#include <optional>
#include <string>

// Keeps a header (or footer) for the even pages only visible. WordPerfect may head only the even
// pages; libodfgen then writes an empty <style:header/> for the odd ones beside the
// <style:header-left>, and LibreOffice, which takes an empty header for none, shows the even
// pages' header nowhere. An empty paragraph in the odd pages' header keeps it switched on; it
// takes the least height LibreOffice gives any header, as the empty one did.
class EvenPageHeaders : public OdfDocumentHandler {
public:
    explicit EvenPageHeaders(OdfDocumentHandler &next) : next(next) {}

    void startDocument() override { next.startDocument(); }
    void endDocument() override;
    void startElement(const char *name, const librevenge::RVNGPropertyList &attributes) override;
    void endElement(const char *name) override;
    void characters(const librevenge::RVNGString &text) override;

private:
    // A <style:header> or <style:footer> whose start is held back until it is known to be empty
    // and followed by its even pages' twin.
    struct Held {
        std::string name;
        librevenge::RVNGPropertyList attributes;
        bool ended = false;
    };

    // Passes on what is held, an empty paragraph inside it when the even pages' twin follows.
    void release(bool twinFollows);

    OdfDocumentHandler &next;
    std::optional<Held> held;
};
