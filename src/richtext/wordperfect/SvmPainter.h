#pragma once

#include "CairoCanvas.h"
#include "WpgImage.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// What a StarView metafile's actions draw, on a cairo canvas. SvmImage.cpp reads the bytes; this
// keeps the drawing state (colours, font, map mode, clip) and its push/pop stack.
namespace richtext::wordperfect::svm {

struct Color {
    double red = 0, green = 0, blue = 0, alpha = 1;
};

// In the metafile's logical units.
struct Point {
    double x = 0, y = 0;
};
struct Rect {
    double left = 0, top = 0, right = 0, bottom = 0;
};

// A control point and the next one shape a Bézier curve to the point after them.
struct PathPoint {
    Point at;
    bool control = false;
};
using Polygon = std::vector<PathPoint>;
using PolyPolygon = std::vector<Polygon>;

// Logical coordinates are (x + origin) * scale units; unit is StarView's MapUnit number.
struct MapMode {
    int unit = 0;
    double originX = 0, originY = 0;
    double scaleX = 1, scaleY = 1;
};

struct Font {
    std::string family;  // UTF-8
    double height = 0;   // logical units; 0 for the default size
    int weight = 0;      // 5 normal, 7 semibold, 8 bold
    int italic = 0;      // 0 upright, 1 oblique, 2 italic
    int orientation = 0; // tenths of a degree, anticlockwise
};

struct LineStyle {
    bool visible = true;
    double width = 0; // logical units; 0 for a hairline
    bool dashed = false;
    double dash = 0, gap = 0;
};

enum class ArcKind { arc, pie, chord };

// Text drawn from its start point; advances (logical units from the start, one per UTF-16 unit)
// place each character, stretchWidth squeezes or widens the whole run.
struct TextRun {
    Point at;
    std::u16string text;
    std::vector<double> advances;
    std::optional<double> stretchWidth;
};

// StarView's PushFlags for the parts of the state Painter keeps.
enum PushFlag : unsigned {
    pushLineColor = 0x1,
    pushFillColor = 0x2,
    pushFont = 0x4,
    pushTextColor = 0x8,
    pushMapMode = 0x10,
    pushClip = 0x20,
    pushTextAlign = 0x100,
};

class Painter {
public:
    // A canvas for a picture of width x height in mapMode's units; nothing when that size is not
    // a picture's.
    static std::optional<Painter> create(const MapMode &mapMode, double width, double height, int maxSide);

    void setLineColor(std::optional<Color> color) { state.line = color; }
    void setFillColor(std::optional<Color> color) { state.fill = color; }
    void setTextColor(Color color) { state.text = color; }
    void setTextAlign(int align) { state.textAlign = align; }
    void setFont(Font font) { state.font = std::move(font); }
    void setMapMode(const MapMode &mapMode);
    void intersectClip(const Rect &rect);
    void resetClip() { state.clip.reset(); }
    void moveClip(double dx, double dy);
    void push(unsigned flags);
    void pop();

    void polyline(const Polygon &points, const LineStyle &style);
    void polyPolygon(const PolyPolygon &polygons, double opacity = 1);
    void rect(const Rect &rect, double radiusX = 0, double radiusY = 0);
    void ellipse(const Rect &rect);
    void arc(ArcKind kind, const Rect &rect, Point start, Point end);
    void pixel(Point at, Color color);
    void fill(const PolyPolygon &polygons, Color color);
    void text(const TextRun &run);

    std::optional<Raster> finish() const { return canvas->raster(pixelsPerInch); }

private:
    // Pixel = logical * scale + offset.
    struct Mapping {
        double scaleX = 1, scaleY = 1, offsetX = 0, offsetY = 0;
    };
    struct State {
        std::optional<Color> line = Color{};
        std::optional<Color> fill = Color{1, 1, 1, 1};
        Color text;
        int textAlign = 0; // 0 top, 1 baseline, 2 bottom
        Font font;
        Mapping mapping;
        std::optional<Rect> clip; // pixels
    };
    struct Saved {
        unsigned flags;
        State state;
    };

    Painter(const CanvasSize &size, const Mapping &mapping);
    Point toPixels(Point logical) const;
    double pixelsPerUnit(int unit) const;
    void addPath(const PolyPolygon &polygons, bool close);
    void addEllipticArc(const Rect &rect, double from, double to);
    bool begin();
    bool charge();
    bool spend(double x1, double y1, double x2, double y2);
    void fillAndStroke(double opacity = 1);
    void stroke(const LineStyle &style);
    void setColor(Color color, double opacity = 1);
    double largestFont() const;
    double fontPixels() const;
    void selectFont(double horizontalScale);

    std::unique_ptr<CairoCanvas> canvas;
    cairo_t *cr = nullptr;
    double pixelsPerInch = 0;
    State state;
    std::vector<Saved> stack;
    int unsavedPushes = 0;
    double budget = 0; // pixels still to be touched before drawing stops
};

} // namespace richtext::wordperfect::svm
