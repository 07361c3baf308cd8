#pragma once

#include <librevenge/librevenge.h>

namespace richtext {

// The text interface without its drawing calls: our writers and the model
// builder carry text, tables and pictures, and a drawing libwpd or our readers
// hand over (a group of shapes) has no place in them, so they are left out here
// once instead of in each of them.
class TextOnlyInterface : public librevenge::RVNGTextInterface {
public:
    void openGroup(const librevenge::RVNGPropertyList &) override {}
    void closeGroup() override {}
    void defineGraphicStyle(const librevenge::RVNGPropertyList &) override {}
    void drawRectangle(const librevenge::RVNGPropertyList &) override {}
    void drawEllipse(const librevenge::RVNGPropertyList &) override {}
    void drawPolygon(const librevenge::RVNGPropertyList &) override {}
    void drawPolyline(const librevenge::RVNGPropertyList &) override {}
    void drawPath(const librevenge::RVNGPropertyList &) override {}
    void drawConnector(const librevenge::RVNGPropertyList &) override {}
};

} // namespace richtext
