#include "SvmPainter.h"

#include "richtext/Utf8.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace richtext::wordperfect::svm {

namespace {

constexpr int mapRelative = 13;

// Millimetres per MapUnit; nothing for the relative unit and for numbers StarView does not have.
std::optional<double> millimetresPer(int unit)
{
    switch (unit) {
    case 0:
        return 0.01;
    case 1:
        return 0.1;
    case 2:
        return 1;
    case 3:
        return 10;
    case 4:
        return 0.0254;
    case 5:
        return 0.254;
    case 6:
        return 2.54;
    case 7:
        return 25.4;
    case 8:
        return 25.4 / 72;
    case 9:
        return 25.4 / 1440;
    case 10: // pixels, and the system and application font units that are counted in them
    case 11:
    case 12:
        return 25.4 / 96;
    }
    return std::nullopt;
}

// Far outside any canvas, yet inside cairo's fixed-point range.
constexpr double farAway = 1 << 22;

double clampCoordinate(double value)
{
    return std::isfinite(value) ? std::clamp(value, -farAway, farAway) : 0;
}

// The characters of a UTF-16 text, each with the index of its first unit.
std::vector<std::pair<std::size_t, char32_t>> charactersOf(std::u16string_view text)
{
    std::vector<std::pair<std::size_t, char32_t>> characters;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] < 0xE000) {
            characters.emplace_back(i, 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00));
            ++i;
        } else {
            // A NUL would end cairo's string early; a lone surrogate has no UTF-8 form.
            characters.emplace_back(i, c == 0 || (c >= 0xD800 && c < 0xE000) ? U'\uFFFD' : c);
        }
    }
    return characters;
}

// StarSymbol's glyphs live on as OpenSymbol, at the same code points. A name may list
// alternatives after semicolons; the first is the one meant.
std::string cairoFamily(const std::string &family)
{
    std::string first = family.substr(0, family.find(';'));
    std::string lower;
    for (char c : first)
        lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    if (lower == "starsymbol" || lower == "opensymbol")
        return "OpenSymbol";
    return first.empty() ? "serif" : first;
}

// Every picture may touch this many pixels, a few hundred times a full canvas: enough for any real
// drawing, and a bound on the time a hostile one takes.
constexpr double pixelBudget = 256.0 * 1024 * 1024;

} // namespace

std::optional<Painter> Painter::create(const MapMode &mapMode, double width, double height, int maxSide)
{
    const auto millimetres = millimetresPer(mapMode.unit);
    if (!millimetres)
        return std::nullopt;
    const double inchesPerUnit = *millimetres / 25.4;
    const auto size =
        canvasSizeFor(width * std::abs(mapMode.scaleX) * inchesPerUnit,
                      height * std::abs(mapMode.scaleY) * inchesPerUnit, drawingPixelsPerInch, maxSide);
    if (!size)
        return std::nullopt;
    // The picture's top-left is logical (0, 0), whatever origin its map mode names.
    Mapping mapping;
    mapping.scaleX = mapMode.scaleX * inchesPerUnit * size->pixelsPerInch;
    mapping.scaleY = mapMode.scaleY * inchesPerUnit * size->pixelsPerInch;
    Painter painter(*size, mapping);
    if (!painter.cr)
        return std::nullopt;
    return painter;
}

Painter::Painter(const CanvasSize &size, const Mapping &mapping)
    : canvas(std::make_unique<CairoCanvas>(size.width, size.height)), cr(canvas->context()),
      pixelsPerInch(size.pixelsPerInch), budget(pixelBudget)
{
    state.mapping = mapping;
    if (cr)
        cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
}

double Painter::pixelsPerUnit(int unit) const
{
    return millimetresPer(unit).value_or(0) / 25.4 * pixelsPerInch;
}

void Painter::setMapMode(const MapMode &mapMode)
{
    Mapping mapping = state.mapping;
    if (mapMode.unit == mapRelative) {
        mapping.offsetX += mapping.scaleX * mapMode.originX * mapMode.scaleX;
        mapping.offsetY += mapping.scaleY * mapMode.originY * mapMode.scaleY;
        mapping.scaleX *= mapMode.scaleX;
        mapping.scaleY *= mapMode.scaleY;
    } else {
        const double unit = pixelsPerUnit(mapMode.unit);
        if (unit <= 0)
            return;
        mapping.scaleX = mapMode.scaleX * unit;
        mapping.scaleY = mapMode.scaleY * unit;
        mapping.offsetX = mapMode.originX * mapping.scaleX;
        mapping.offsetY = mapMode.originY * mapping.scaleY;
    }
    // Relative map modes can multiply their scales past any number.
    if (std::isfinite(mapping.scaleX) && std::isfinite(mapping.scaleY) && std::isfinite(mapping.offsetX) &&
        std::isfinite(mapping.offsetY))
        state.mapping = mapping;
}

Point Painter::toPixels(Point logical) const
{
    const Mapping &m = state.mapping;
    return {clampCoordinate(logical.x * m.scaleX + m.offsetX),
            clampCoordinate(logical.y * m.scaleY + m.offsetY)};
}

void Painter::intersectClip(const Rect &rect)
{
    const Point a = toPixels({rect.left, rect.top});
    const Point b = toPixels({rect.right, rect.bottom});
    Rect pixels{std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
    if (state.clip) {
        pixels.left = std::max(pixels.left, state.clip->left);
        pixels.top = std::max(pixels.top, state.clip->top);
        pixels.right = std::max(pixels.left, std::min(pixels.right, state.clip->right));
        pixels.bottom = std::max(pixels.top, std::min(pixels.bottom, state.clip->bottom));
    }
    state.clip = pixels;
}

void Painter::moveClip(double dx, double dy)
{
    if (!state.clip)
        return;
    const double x = clampCoordinate(dx * state.mapping.scaleX);
    const double y = clampCoordinate(dy * state.mapping.scaleY);
    state.clip =
        Rect{state.clip->left + x, state.clip->top + y, state.clip->right + x, state.clip->bottom + y};
}

void Painter::push(unsigned flags)
{
    // Deeper nesting than any drawing needs is counted, not kept, so that pops still pair up.
    if (stack.size() >= 1024) {
        ++unsavedPushes;
        return;
    }
    stack.push_back({flags, state});
}

void Painter::pop()
{
    if (unsavedPushes > 0) {
        --unsavedPushes;
        return;
    }
    if (stack.empty())
        return;
    const Saved saved = std::move(stack.back());
    stack.pop_back();
    const State &old = saved.state;
    if (saved.flags & pushLineColor)
        state.line = old.line;
    if (saved.flags & pushFillColor)
        state.fill = old.fill;
    if (saved.flags & pushFont)
        state.font = old.font;
    if (saved.flags & pushTextColor)
        state.text = old.text;
    if (saved.flags & pushMapMode)
        state.mapping = old.mapping;
    if (saved.flags & pushClip)
        state.clip = old.clip;
    if (saved.flags & pushTextAlign)
        state.textAlign = old.textAlign;
}

// Clips to the current region, before a path is made (cairo's clip takes the current path); false
// once the budget is spent or cairo has failed.
bool Painter::begin()
{
    if (cairo_status(cr) != CAIRO_STATUS_SUCCESS || budget <= 0)
        return false;
    cairo_new_path(cr);
    cairo_reset_clip(cr);
    if (state.clip) {
        cairo_rectangle(cr, state.clip->left, state.clip->top, state.clip->right - state.clip->left,
                        state.clip->bottom - state.clip->top);
        cairo_clip(cr);
    }
    return true;
}

// Charges the budget for the extent of the path made.
bool Painter::charge()
{
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    cairo_path_extents(cr, &x1, &y1, &x2, &y2);
    return spend(x1, y1, x2, y2);
}

bool Painter::spend(double x1, double y1, double x2, double y2)
{
    const double width =
        std::clamp(x2, 0.0, double(canvas->width())) - std::clamp(x1, 0.0, double(canvas->width()));
    const double height =
        std::clamp(y2, 0.0, double(canvas->height())) - std::clamp(y1, 0.0, double(canvas->height()));
    budget -= std::max(0.0, width + 2) * std::max(0.0, height + 2);
    return budget > 0;
}

void Painter::setColor(Color color, double opacity)
{
    cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha * opacity);
}

void Painter::addPath(const PolyPolygon &polygons, bool close)
{
    for (const Polygon &polygon : polygons) {
        if (polygon.empty())
            continue;
        const Point first = toPixels(polygon.front().at);
        cairo_move_to(cr, first.x, first.y);
        for (std::size_t i = 1; i < polygon.size();) {
            if (polygon[i].control && i + 2 < polygon.size() && polygon[i + 1].control) {
                const Point a = toPixels(polygon[i].at);
                const Point b = toPixels(polygon[i + 1].at);
                const Point c = toPixels(polygon[i + 2].at);
                cairo_curve_to(cr, a.x, a.y, b.x, b.y, c.x, c.y);
                i += 3;
            } else {
                const Point p = toPixels(polygon[i].at);
                cairo_line_to(cr, p.x, p.y);
                ++i;
            }
        }
        if (close)
            cairo_close_path(cr);
    }
}

// Outlines are hairlines: one pixel, whatever the resolution.
void Painter::fillAndStroke(double opacity)
{
    if (state.fill) {
        setColor(*state.fill, opacity);
        cairo_fill_preserve(cr);
    }
    if (state.line) {
        setColor(*state.line, opacity);
        cairo_set_line_width(cr, 1);
        cairo_set_dash(cr, nullptr, 0, 0);
        cairo_stroke_preserve(cr);
    }
    cairo_new_path(cr);
}

void Painter::stroke(const LineStyle &style)
{
    if (state.line && style.visible) {
        const double scale = (std::abs(state.mapping.scaleX) + std::abs(state.mapping.scaleY)) / 2;
        const double width = std::clamp(style.width * scale, 1.0, farAway);
        cairo_set_line_width(cr, width);
        if (style.dashed) {
            const double pattern[] = {std::clamp(style.dash * scale, width, farAway),
                                      std::clamp(style.gap * scale, width, farAway)};
            cairo_set_dash(cr, pattern, 2, 0);
        } else {
            cairo_set_dash(cr, nullptr, 0, 0);
        }
        setColor(*state.line);
        cairo_stroke_preserve(cr);
    }
    cairo_new_path(cr);
}

void Painter::polyline(const Polygon &points, const LineStyle &style)
{
    if (!begin())
        return;
    addPath({points}, false);
    if (charge())
        stroke(style);
    cairo_new_path(cr);
}

void Painter::polyPolygon(const PolyPolygon &polygons, double opacity)
{
    if (!begin())
        return;
    addPath(polygons, true);
    if (charge())
        fillAndStroke(opacity);
    cairo_new_path(cr);
}

void Painter::fill(const PolyPolygon &polygons, Color color)
{
    if (!begin())
        return;
    addPath(polygons, true);
    if (charge()) {
        setColor(color);
        cairo_fill(cr);
    }
    cairo_new_path(cr);
}

void Painter::rect(const Rect &rect, double radiusX, double radiusY)
{
    if (!begin())
        return;
    const Point a = toPixels({rect.left, rect.top});
    const Point b = toPixels({rect.right, rect.bottom});
    const double left = std::min(a.x, b.x), right = std::max(a.x, b.x);
    const double top = std::min(a.y, b.y), bottom = std::max(a.y, b.y);
    const double rx = std::min(std::abs(radiusX * state.mapping.scaleX), (right - left) / 2);
    const double ry = std::min(std::abs(radiusY * state.mapping.scaleY), (bottom - top) / 2);
    if (rx < 0.5 || ry < 0.5) {
        cairo_rectangle(cr, left, top, right - left, bottom - top);
    } else {
        // Quarter ellipses as Bézier curves: the control points sit this far along the tangents.
        const double k = 0.5523;
        cairo_move_to(cr, left + rx, top);
        cairo_line_to(cr, right - rx, top);
        cairo_curve_to(cr, right - rx + k * rx, top, right, top + ry - k * ry, right, top + ry);
        cairo_line_to(cr, right, bottom - ry);
        cairo_curve_to(cr, right, bottom - ry + k * ry, right - rx + k * rx, bottom, right - rx, bottom);
        cairo_line_to(cr, left + rx, bottom);
        cairo_curve_to(cr, left + rx - k * rx, bottom, left, bottom - ry + k * ry, left, bottom - ry);
        cairo_line_to(cr, left, top + ry);
        cairo_curve_to(cr, left, top + ry - k * ry, left + rx - k * rx, top, left + rx, top);
        cairo_close_path(cr);
    }
    if (charge())
        fillAndStroke();
    cairo_new_path(cr);
}

// An arc of the ellipse inside rect, anticlockwise on the page from angle from to angle to
// (radians, anticlockwise from three o'clock).
void Painter::addEllipticArc(const Rect &rect, double from, double to)
{
    const Point a = toPixels({rect.left, rect.top});
    const Point b = toPixels({rect.right, rect.bottom});
    const double rx = std::abs(b.x - a.x) / 2, ry = std::abs(b.y - a.y) / 2;
    if (rx < 0.01 || ry < 0.01)
        return;
    cairo_save(cr);
    cairo_translate(cr, (a.x + b.x) / 2, (a.y + b.y) / 2);
    cairo_scale(cr, rx, ry);
    // Cairo's angles run clockwise on the page, as its y axis points down.
    cairo_arc_negative(cr, 0, 0, 1, -from, -to);
    cairo_restore(cr);
}

void Painter::ellipse(const Rect &rect)
{
    if (!begin())
        return;
    addEllipticArc(rect, 0, 2 * std::numbers::pi);
    cairo_close_path(cr);
    if (charge())
        fillAndStroke();
    cairo_new_path(cr);
}

void Painter::arc(ArcKind kind, const Rect &rect, Point start, Point end)
{
    const double cx = (rect.left + rect.right) / 2, cy = (rect.top + rect.bottom) / 2;
    const double rx = std::max(std::abs(rect.right - rect.left) / 2, 1e-9);
    const double ry = std::max(std::abs(rect.bottom - rect.top) / 2, 1e-9);
    const double from = std::atan2((cy - start.y) / ry, (start.x - cx) / rx);
    double to = std::atan2((cy - end.y) / ry, (end.x - cx) / rx);
    while (to <= from)
        to += 2 * std::numbers::pi; // the same point twice: the whole ellipse
    if (!begin())
        return;
    if (kind == ArcKind::pie) {
        const Point centre = toPixels({cx, cy});
        cairo_move_to(cr, centre.x, centre.y);
    }
    addEllipticArc(rect, from, to);
    if (kind == ArcKind::arc) {
        if (charge())
            stroke({});
    } else {
        cairo_close_path(cr);
        if (charge())
            fillAndStroke();
    }
    cairo_new_path(cr);
}

void Painter::pixel(Point at, Color color)
{
    if (!begin())
        return;
    const Point p = toPixels(at);
    const double side = std::clamp(std::abs(state.mapping.scaleX), 1.0, farAway);
    cairo_rectangle(cr, p.x, p.y, side, side);
    if (charge()) {
        setColor(color);
        cairo_fill(cr);
    }
    cairo_new_path(cr);
}

// Letters more than twice the picture's size show nothing of themselves, and far larger ones make
// cairo 1.16 leak its scaled fonts (FreeType refuses them).
double Painter::largestFont() const
{
    return 2.0 * std::max(canvas->width(), canvas->height());
}

double Painter::fontPixels() const
{
    // Without a height StarView uses its default font of 12 points.
    const double height = state.font.height != 0 ? std::abs(state.font.height * state.mapping.scaleY)
                                                 : 12.0 / 72 * pixelsPerInch;
    return std::isfinite(height) ? std::clamp(height, 0.5, largestFont()) : 0.5;
}

void Painter::selectFont(double horizontalScale)
{
    const Font &font = state.font;
    cairo_select_font_face(cr, cairoFamily(font.family).c_str(),
                           font.italic == 1   ? CAIRO_FONT_SLANT_OBLIQUE
                           : font.italic == 2 ? CAIRO_FONT_SLANT_ITALIC
                                              : CAIRO_FONT_SLANT_NORMAL,
                           font.weight >= 7 ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_matrix_t matrix;
    cairo_matrix_init_scale(&matrix, std::clamp(fontPixels() * horizontalScale, 0.01, largestFont()),
                            fontPixels());
    cairo_set_font_matrix(cr, &matrix);
}

void Painter::text(const TextRun &run)
{
    const auto characters = charactersOf(run.text);
    if (characters.empty() || !begin())
        return;
    const double size = fontPixels();
    const double canvasArea = double(canvas->width()) * canvas->height();
    budget -= std::min(double(characters.size()) * size * size, canvasArea) + 1;
    if (budget <= 0)
        return;
    std::string whole;
    for (const auto &[index, c] : characters)
        Utf8::append(whole, c);

    const Point at = toPixels(run.at);
    cairo_save(cr);
    cairo_translate(cr, at.x, at.y);
    cairo_rotate(cr, -state.font.orientation * std::numbers::pi / 1800);
    selectFont(1);
    if (run.stretchWidth) {
        cairo_text_extents_t extents;
        cairo_text_extents(cr, whole.c_str(), &extents);
        const double wanted = std::abs(*run.stretchWidth * state.mapping.scaleX);
        if (extents.x_advance > 0 && wanted > 0)
            selectFont(std::clamp(wanted / extents.x_advance, 0.02, 50.0));
    }
    cairo_font_extents_t font;
    cairo_font_extents(cr, &font);
    const double baseline = state.textAlign == 0 ? font.ascent : state.textAlign == 2 ? -font.descent : 0;
    setColor(state.text);
    if (run.advances.empty()) {
        cairo_move_to(cr, 0, baseline);
        cairo_show_text(cr, whole.c_str());
    } else {
        // Each character at its own place: advances[i] is where the character after UTF-16 unit i starts.
        const double scale = std::abs(state.mapping.scaleX);
        for (const auto &[index, c] : characters) {
            const double x = index == 0 ? 0 : run.advances[std::min(index, run.advances.size()) - 1] * scale;
            std::string one;
            Utf8::append(one, c);
            cairo_move_to(cr, clampCoordinate(x), baseline);
            cairo_show_text(cr, one.c_str());
        }
    }
    cairo_restore(cr);
}

} // namespace richtext::wordperfect::svm
