// StarView metafiles read by hand: no library in Debian outside LibreOffice reads them.

#include "SvmImage.h"

#include "SvmPainter.h"
#include "SvmRecords.h"

#include <algorithm>
#include <cstdint>

namespace richtext::wordperfect {

namespace {

using namespace svm;

enum ActionType : int {
    pixelAction = 100,
    pointAction,
    lineAction,
    rectAction,
    roundRectAction,
    ellipseAction,
    arcAction,
    pieAction,
    chordAction,
    polylineAction,
    polygonAction,
    polyPolygonAction,
    textAction,
    textArrayAction,
    stretchTextAction,
    textRectAction,
    gradientAction = 125,
    clipRegionAction = 128,
    intersectRectClipAction,
    intersectRegionClipAction,
    moveClipAction,
    lineColorAction,
    fillColorAction,
    textColorAction,
    textFillColorAction,
    textAlignAction,
    mapModeAction,
    fontAction,
    pushAction,
    popAction,
    transparentAction = 142,
    gradientExAction = 148,
};

TextRun textRun(Point at, const std::u16string &text, std::size_t index, std::size_t length)
{
    index = std::min(index, text.size());
    length = std::min(length, text.size() - index);
    return {at, text.substr(index, length), {}, std::nullopt};
}

// The actions, played on a painter in their order.
class Player {
public:
    explicit Player(Painter &painter) : painter(painter) {}
    void play(int type, int version, Reader &in);

private:
    void font(Reader &in);
    void textArray(int version, Reader &in);
    void gradient(Reader &in, const PolyPolygon &area);

    Painter &painter;
    int charset = 0; // of 8-bit strings, as the last font set it
};

void Player::font(Reader &in)
{
    Versioned block = versioned(in);
    Reader &body = block.body;
    Font font;
    font.family = name(body);
    name(body); // style
    body.i32(); // average width
    font.height = body.i32();
    const int fontCharset = body.u16();
    body.u16(); // family
    body.u16(); // pitch
    font.weight = body.u16();
    body.u16(); // underline
    body.u16(); // strikeout
    font.italic = body.u16();
    body.u16(); // language
    body.u16(); // width
    font.orientation = body.i16();
    in.check(body);
    charset = fontCharset;
    painter.setFont(std::move(font));
}

void Player::textArray(int version, Reader &in)
{
    const Point at = point(in);
    std::u16string text = byteString(in, charset);
    std::size_t index = in.u16();
    std::size_t length = in.u16();
    const std::int32_t count = in.i32();
    if (!in.ok())
        return;
    // LibreOffice draws the whole text, unspaced, from a damaged index or a short array.
    if (index > text.size() || length > text.size() - index) {
        painter.text(textRun(at, text, 0, text.size()));
        return;
    }
    std::vector<double> advances;
    if (count > 0) {
        if (std::size_t(count) > length) {
            painter.text(textRun(at, text, index, length));
            return;
        }
        if (!in.need(std::uint64_t(count) * 4))
            return;
        for (std::int32_t i = 0; i < count; ++i)
            advances.push_back(in.i32());
        advances.resize(length, 0);
    }
    if (version >= 2) {
        text = unicodeString(in);
        if (index > text.size() || length > text.size() - index) {
            index = 0;
            length = text.size();
            advances.clear();
        }
    }
    TextRun run = textRun(at, text, index, length);
    run.advances = std::move(advances);
    painter.text(run);
}

// Gradients are filled with the mean of their two colours.
void Player::gradient(Reader &in, const PolyPolygon &area)
{
    Versioned block = versioned(in);
    Reader &body = block.body;
    body.u16(); // style
    const Color start = namedColor(body);
    const Color end = namedColor(body);
    body.bytes(8); // angle, border, offsets
    const double startIntensity = std::min(body.u16(), std::uint16_t(100)) / 100.0;
    const double endIntensity = std::min(body.u16(), std::uint16_t(100)) / 100.0;
    in.check(body);
    if (!in.ok())
        return;
    const Color mean{(start.red * startIntensity + end.red * endIntensity) / 2,
                     (start.green * startIntensity + end.green * endIntensity) / 2,
                     (start.blue * startIntensity + end.blue * endIntensity) / 2, 1};
    painter.fill(area, mean);
}

void Player::play(int type, int version, Reader &in)
{
    switch (type) {
    case pixelAction: {
        const Point at = point(in);
        const Color c = color(in);
        if (in.ok())
            painter.pixel(at, c);
        break;
    }
    case pointAction: {
        const Point at = point(in);
        if (in.ok())
            painter.polyline({{at}, {{at.x + 1, at.y}}}, {});
        break;
    }
    case lineAction: {
        const Point from = point(in);
        const Point to = point(in);
        const LineStyle style = version >= 2 ? lineInfo(in) : LineStyle{};
        if (in.ok())
            painter.polyline({{from}, {to}}, style);
        break;
    }
    case rectAction:
    case roundRectAction:
    case ellipseAction: {
        const auto r = rect(in);
        const double radiusX = type == roundRectAction ? in.u32() : 0;
        const double radiusY = type == roundRectAction ? in.u32() : 0;
        if (!in.ok() || !r)
            break;
        if (type == ellipseAction)
            painter.ellipse(*r);
        else
            painter.rect(*r, radiusX, radiusY);
        break;
    }
    case arcAction:
    case pieAction:
    case chordAction: {
        const auto r = rect(in);
        const Point start = point(in);
        const Point end = point(in);
        if (in.ok() && r)
            painter.arc(type == arcAction   ? ArcKind::arc
                        : type == pieAction ? ArcKind::pie
                                            : ArcKind::chord,
                        *r, start, end);
        break;
    }
    case polylineAction: {
        Polygon line = simplePolygon(in);
        const LineStyle style = version >= 2 ? lineInfo(in) : LineStyle{};
        if (version >= 3 && in.u8())
            line = flaggedPolygon(in);
        if (in.ok())
            painter.polyline(line, style);
        break;
    }
    case polygonAction: {
        Polygon shape = simplePolygon(in);
        if (version >= 2 && in.u8())
            shape = flaggedPolygon(in);
        if (in.ok())
            painter.polyPolygon({shape});
        break;
    }
    case polyPolygonAction: {
        PolyPolygon shapes = polyPolygon(in);
        if (version >= 2)
            replaceCurved(in, shapes);
        if (in.ok())
            painter.polyPolygon(shapes);
        break;
    }
    case textAction:
    case stretchTextAction: {
        const Point at = point(in);
        std::u16string text = byteString(in, charset);
        const std::optional<double> width =
            type == stretchTextAction ? std::optional<double>(in.u32()) : std::nullopt;
        const std::size_t index = in.u16();
        const std::size_t length = in.u16();
        if (version >= 2)
            text = unicodeString(in);
        TextRun run = textRun(at, text, index, length);
        run.stretchWidth = width;
        if (in.ok())
            painter.text(run);
        break;
    }
    case textArrayAction:
        textArray(version, in);
        break;
    case textRectAction: {
        const auto r = rect(in);
        std::u16string text = byteString(in, charset);
        in.u16(); // layout flags
        if (version >= 2)
            text = unicodeString(in);
        if (in.ok() && r) {
            painter.push(pushTextAlign);
            painter.setTextAlign(0);
            painter.text(textRun({r->left, r->top}, text, 0, text.size()));
            painter.pop();
        }
        break;
    }
    case gradientAction: {
        const auto r = rect(in);
        if (in.ok() && r)
            gradient(in, {{{{r->left, r->top}},
                           {{r->right, r->top}},
                           {{r->right, r->bottom}},
                           {{r->left, r->bottom}}}});
        break;
    }
    case gradientExAction: {
        const PolyPolygon area = polyPolygon(in);
        gradient(in, area);
        break;
    }
    case transparentAction: {
        const PolyPolygon shapes = polyPolygon(in);
        const double transparency = std::min(in.u16(), std::uint16_t(100)) / 100.0;
        if (in.ok())
            painter.polyPolygon(shapes, 1 - transparency);
        break;
    }
    // Regions are not read: without their clip the picture shows more, never less.
    case clipRegionAction:
        painter.resetClip();
        break;
    case intersectRectClipAction:
        if (const auto r = rect(in); in.ok() && r)
            painter.intersectClip(*r);
        break;
    case moveClipAction: {
        const double dx = in.i32();
        const double dy = in.i32();
        painter.moveClip(dx, dy);
        break;
    }
    case lineColorAction:
        painter.setLineColor(colorIfSet(in));
        break;
    case fillColorAction:
        painter.setFillColor(colorIfSet(in));
        break;
    case textColorAction:
        painter.setTextColor(color(in));
        break;
    case textAlignAction:
        painter.setTextAlign(in.u16());
        break;
    case mapModeAction: {
        const MapMode mode = mapMode(in);
        if (in.ok())
            painter.setMapMode(mode);
        break;
    }
    case fontAction:
        font(in);
        break;
    case pushAction:
        painter.push(in.u16());
        break;
    case popAction:
        painter.pop();
        break;
    default:
        break;
    }
}

} // namespace

bool isSvm(std::string_view bytes)
{
    return bytes.substr(0, 6) == "VCLMTF";
}

std::optional<Raster> renderSvm(std::string_view bytes, int maxSide)
{
    if (!isSvm(bytes))
        return std::nullopt;
    Reader in(bytes.substr(6));
    Versioned header = versioned(in);
    header.body.u32(); // compression, which LibreOffice's own reader ignores
    const MapMode preferred = mapMode(header.body);
    const double width = header.body.i32();
    const double height = header.body.i32();
    const std::uint32_t count = header.body.u32();
    if (!header.body.ok())
        return std::nullopt;
    auto painter = Painter::create(preferred, width, height, maxSide);
    if (!painter)
        return std::nullopt;
    Player player(*painter);
    // A picture with fewer actions than it counts is damaged, and left out whole.
    for (std::uint32_t i = 0; i < count; ++i) {
        const int type = in.u16();
        if (!in.ok())
            return std::nullopt;
        if (type == 0)
            continue; // the empty action has neither version nor length
        Versioned action = versioned(in);
        if (!in.ok())
            return std::nullopt;
        player.play(type, action.version, action.body);
        if (!action.body.ok())
            return std::nullopt;
    }
    return painter->finish();
}

} // namespace richtext::wordperfect
