#pragma once

#include <libodfgen/libodfgen.hxx>

#include <string>

// Sits between libodfgen and a writer and makes the document lay out as LibreOffice lays out its
// own WordPerfect import (the same libwpd and libodfgen stream, loaded into a new document).
//
// A new Writer document kerns letter pairs; a loaded file kerns only when its default style asks,
// and libodfgen's default style does not. Without it every line is slightly wider and lines break
// elsewhere, so the default paragraph style asks for pair kerning here.
class WriterDefaults : public OdfDocumentHandler {
public:
    explicit WriterDefaults(OdfDocumentHandler &next) : next(next) {}

    void startDocument() override { next.startDocument(); }
    void endDocument() override { next.endDocument(); }
    void startElement(const char *name, const librevenge::RVNGPropertyList &attributes) override;
    void endElement(const char *name) override;
    void characters(const librevenge::RVNGString &text) override { next.characters(text); }

    // settings.xml with the layout settings of a new document. A loaded file that leaves them out
    // is taken for one from an old office suite and laid out with that suite's quirks.
    static const char *settingsXml();

private:
    OdfDocumentHandler &next;
    bool inParagraphDefaults = false;
    bool sawTextProperties = false;
};
