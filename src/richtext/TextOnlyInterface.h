#pragma once

#include <librevenge/librevenge.h>

namespace richtext {

// The text interface without its drawing calls: our writers and the model
// builder carry text, tables and pictures, and a drawing libwpd or our readers
// hand over (a group of shapes) has no place in them, so they are left out here
// once instead of in each of them; each shape is one shapeLost(). So are the calls that only announce (the
// document's start, embedded fonts, named styles): every open call brings the
// properties in force, which is all any of them reads.
class TextOnlyInterface : public librevenge::RVNGTextInterface {
public:
    void startDocument(const librevenge::RVNGPropertyList &) override {}
    void definePageStyle(const librevenge::RVNGPropertyList &) override {}
    void defineEmbeddedFont(const librevenge::RVNGPropertyList &) override {}
    void defineParagraphStyle(const librevenge::RVNGPropertyList &) override {}
    void defineCharacterStyle(const librevenge::RVNGPropertyList &) override {}
    void defineSectionStyle(const librevenge::RVNGPropertyList &) override {}
    // A list element is a paragraph with a label, and ends as one.
    void closeListElement() override { closeParagraph(); }

    void openGroup(const librevenge::RVNGPropertyList &) override {}
    void closeGroup() override {}
    void defineGraphicStyle(const librevenge::RVNGPropertyList &) override {}
    void drawRectangle(const librevenge::RVNGPropertyList &) override { shapeLost(); }
    void drawEllipse(const librevenge::RVNGPropertyList &) override { shapeLost(); }
    void drawPolygon(const librevenge::RVNGPropertyList &) override { shapeLost(); }
    void drawPolyline(const librevenge::RVNGPropertyList &) override { shapeLost(); }
    void drawPath(const librevenge::RVNGPropertyList &) override { shapeLost(); }
    void drawConnector(const librevenge::RVNGPropertyList &) override { shapeLost(); }

protected:
    // A shape these writers cannot draw: a writer that reports what it loses says so.
    virtual void shapeLost() {}
};

} // namespace richtext
