#include "RtfPicture.h"
#include "Base64.h"

#include "RtfFormat.h"
#include "Units.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

namespace richtext::RtfPicture {
namespace {

struct Picture {
    std::string blip; // \pngblip, \jpegblip, \emfblip, \wmetafile8
    const unsigned char *bytes = nullptr;
    unsigned long size = 0;
    int widthPixels = 0;
    int heightPixels = 0;
    int widthTwips = 0; // the picture's own size, when it states one
    int heightTwips = 0;
    std::string owned; // bytes made here (a drawing, a trimmed metafile)
};

// Drawn pictures get about this many pixels per inch of their frame.
constexpr double drawnPixelsPerInch = 150;
constexpr double drawnLongestSide = 2400;

unsigned littleEndian(const unsigned char *at)
{
    return at[0] | unsigned(at[1]) << 8;
}

std::uint32_t bigEndian(const unsigned char *at)
{
    return (std::uint32_t(at[0]) << 24) | (std::uint32_t(at[1]) << 16) | (std::uint32_t(at[2]) << 8) | at[3];
}

// The kind is told from the bytes: producers' MIME types are not always right.
std::optional<Picture> recognise(const unsigned char *bytes, unsigned long size)
{
    Picture picture{{}, bytes, size, 0, 0, 0, 0, {}};
    if (size > 24 && bytes[0] == 0x89 && bytes[1] == 'P' && bytes[2] == 'N' && bytes[3] == 'G') {
        picture.blip = "\\pngblip";
        picture.widthPixels = static_cast<int>(std::min<std::uint32_t>(bigEndian(bytes + 16), 1u << 20));
        picture.heightPixels = static_cast<int>(std::min<std::uint32_t>(bigEndian(bytes + 20), 1u << 20));
        return picture;
    }
    if (size > 4 && bytes[0] == 0xFF && bytes[1] == 0xD8 && bytes[2] == 0xFF) {
        picture.blip = "\\jpegblip";
        return picture;
    }
    if (size > 44 && bytes[0] == 1 && bytes[40] == ' ' && bytes[41] == 'E' && bytes[42] == 'M' &&
        bytes[43] == 'F') {
        picture.blip = "\\emfblip";
        return picture;
    }
    return std::nullopt;
}

bool isStandardMetafile(const unsigned char *bytes, unsigned long size)
{
    return size >= 18 && (littleEndian(bytes) == 1 || littleEndian(bytes) == 2) &&
           littleEndian(bytes + 2) == 9 &&
           (littleEndian(bytes + 4) == 0x100 || littleEndian(bytes + 4) == 0x300);
}

// RTF carries a Windows metafile without its placeable header, whose
// picture size becomes the goal size; producers sometimes store the file a
// byte or two shorter than its header declares, and readers want it whole.
std::optional<Picture> metafile(const unsigned char *bytes, unsigned long size)
{
    Picture picture{"\\wmetafile8", nullptr, 0, 0, 0, 0, 0, {}};
    unsigned long start = 0;
    if (size >= 22 + 18 && bytes[0] == 0xD7 && bytes[1] == 0xCD && bytes[2] == 0xC6 && bytes[3] == 0x9A) {
        start = 22;
        const int width = static_cast<std::int16_t>(littleEndian(bytes + 10)) -
                          static_cast<std::int16_t>(littleEndian(bytes + 6));
        const int height = static_cast<std::int16_t>(littleEndian(bytes + 12)) -
                           static_cast<std::int16_t>(littleEndian(bytes + 8));
        const unsigned perInch = littleEndian(bytes + 14);
        if (width > 0 && height > 0 && perInch > 0) {
            picture.widthTwips = static_cast<int>(width * 1440L / perInch);
            picture.heightTwips = static_cast<int>(height * 1440L / perInch);
        }
    }
    if (!isStandardMetafile(bytes + start, size - start))
        return std::nullopt;
    const unsigned long declared = (littleEndian(bytes + start + 6) |
                                    static_cast<unsigned long>(littleEndian(bytes + start + 8)) << 16) *
                                   2;
    picture.owned.assign(reinterpret_cast<const char *>(bytes + start), size - start);
    if (declared > picture.owned.size() && declared - picture.owned.size() <= 16)
        picture.owned.resize(declared, '\0');
    return picture;
}

bool isSvg(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && text[first] == '<' &&
           text.substr(0, 4096).find("<svg") != std::string_view::npos;
}

// An SVG drawn at the frame's size (or, without a frame, at its own).
std::optional<Picture> drawing(std::string_view svg, const librevenge::RVNGPropertyList &frame,
                               const SvgPainter &painter)
{
    if (!painter)
        return std::nullopt;
    const double width = Units::inches(frame, "svg:width").value_or(4);
    const double height = Units::inches(frame, "svg:height").value_or(3);
    if (!(width > 0) || !(height > 0))
        return std::nullopt;
    const double scale = std::min(drawnPixelsPerInch, drawnLongestSide / std::max(width, height));
    const int pixelsWide = std::max(1, static_cast<int>(std::lround(width * scale)));
    const int pixelsHigh = std::max(1, static_cast<int>(std::lround(height * scale)));
    std::string drawn = painter(std::string(svg), pixelsWide, pixelsHigh);
    std::optional<Picture> picture = recognise(reinterpret_cast<const unsigned char *>(drawn.data()),
                                               static_cast<unsigned long>(drawn.size()));
    if (!picture || picture->blip == "\\emfblip")
        return std::nullopt;
    picture->owned = std::move(drawn);
    return picture;
}

std::optional<Picture> fromData(const librevenge::RVNGPropertyList &object, librevenge::RVNGBinaryData &keep,
                                const librevenge::RVNGPropertyList &frame, const SvgPainter &painter)
{
    const librevenge::RVNGProperty *data = object["office:binary-data"];
    if (!data)
        return std::nullopt;
    keep = decodeBase64(data->getStr().cstr());
    if (!keep.getDataBuffer())
        return std::nullopt;
    const unsigned char *bytes = keep.getDataBuffer();
    if (std::optional<Picture> picture = recognise(bytes, keep.size()))
        return picture;
    if (std::optional<Picture> picture = metafile(bytes, keep.size()))
        return picture;
    const std::string_view text(reinterpret_cast<const char *>(bytes), keep.size());
    if (isSvg(text))
        return drawing(text, frame, painter);
    return std::nullopt;
}

} // namespace

std::string group(const librevenge::RVNGPropertyList &object, const librevenge::RVNGPropertyList &frame,
                  const SvgPainter &painter)
{
    librevenge::RVNGBinaryData data;
    std::optional<Picture> picture = fromData(object, data, frame, painter);
    if (const librevenge::RVNGPropertyListVector *others = object.child("librevenge:replacement-objects"))
        for (unsigned long n = 0; !picture && n < others->count(); ++n)
            picture = fromData((*others)[n], data, frame, painter);
    if (!picture)
        return {};
    if (!picture->owned.empty()) {
        picture->bytes = reinterpret_cast<const unsigned char *>(picture->owned.data());
        picture->size = picture->owned.size();
    }

    const double ownWidth = picture->widthTwips > 0    ? picture->widthTwips / 1440.0
                            : picture->widthPixels > 0 ? picture->widthPixels / 96.0
                                                       : 1.0;
    const double ownHeight = picture->heightTwips > 0    ? picture->heightTwips / 1440.0
                             : picture->heightPixels > 0 ? picture->heightPixels / 96.0
                                                         : 1.0;
    const double width = Units::inches(frame, "svg:width").value_or(ownWidth);
    const double height = Units::inches(frame, "svg:height").value_or(ownHeight);
    int pixelsWide = picture->widthPixels > 0 ? picture->widthPixels : RtfFormat::twips(width) / 15;
    int pixelsHigh = picture->heightPixels > 0 ? picture->heightPixels : RtfFormat::twips(height) / 15;
    if (picture->blip == "\\wmetafile8") {
        // A metafile's \picw and \pich are its extent in hundredths of a millimetre.
        pixelsWide = static_cast<int>(std::lround(width * 2540));
        pixelsHigh = static_cast<int>(std::lround(height * 2540));
    }

    std::string group = "{\\pict" + picture->blip + "\\picw" + std::to_string(pixelsWide) + "\\pich" +
                        std::to_string(pixelsHigh) + "\\picwgoal" + std::to_string(RtfFormat::twips(width)) +
                        "\\pichgoal" + std::to_string(RtfFormat::twips(height)) + "\n";
    static const char digits[] = "0123456789abcdef";
    group.reserve(group.size() + picture->size * 2 + picture->size / 64 + 2);
    for (unsigned long i = 0; i < picture->size; ++i) {
        group += digits[picture->bytes[i] >> 4];
        group += digits[picture->bytes[i] & 0xF];
        if (i % 64 == 63)
            group += '\n';
    }
    return group + "}";
}

namespace {

struct Axis {
    std::string word;  // \shpbxpage, \shpbymargin...
    double offset = 0; // from the area's start
    int alignment = 0; // posh/posv: 0 absolute, 1 start, 2 centre, 3 end
};

Axis horizontal(const librevenge::RVNGPropertyList &frame, const PageArea &page, double width)
{
    const std::string relation = Units::text(frame, "style:horizontal-rel").value_or("paragraph");
    const std::string position = Units::text(frame, "style:horizontal-pos").value_or("from-left");
    Axis axis{"\\shpbxcolumn", Units::inches(frame, "svg:x").value_or(0), 0};
    double areaWidth = page.width - page.left - page.right;
    if (relation == "page" || relation == "page-start-margin") {
        axis.word = "\\shpbxpage";
        areaWidth = relation == "page" ? page.width : page.left;
    } else if (relation == "page-end-margin") {
        // RTF has no area for the right margin: counted from the page's edge.
        axis.word = "\\shpbxpage";
        axis.offset += page.width - page.right;
        areaWidth = page.right;
    } else if (relation == "page-content") {
        axis.word = "\\shpbxmargin";
    }
    if (position == "left") {
        axis = {axis.word, 0, 1};
    } else if (position == "center") {
        axis = {axis.word, (areaWidth - width) / 2, 2};
    } else if (position == "right") {
        axis = {axis.word, areaWidth - width, 3};
    }
    return axis;
}

Axis vertical(const librevenge::RVNGPropertyList &frame, const PageArea &page, double height)
{
    const std::string relation = Units::text(frame, "style:vertical-rel").value_or("paragraph");
    const std::string position = Units::text(frame, "style:vertical-pos").value_or("from-top");
    Axis axis{"\\shpbypara", Units::inches(frame, "svg:y").value_or(0), 0};
    double areaHeight = 0; // a paragraph's is not known here
    if (relation == "page") {
        axis.word = "\\shpbypage";
        areaHeight = page.height;
    } else if (relation == "page-content") {
        // The text area: between the margins, less a header's and a footer's room.
        axis.word = "\\shpbymargin";
        areaHeight = page.height - page.top - page.headerRoom - page.bottom - page.footerRoom;
    }
    if (position == "top") {
        axis = {axis.word, 0, 1};
    } else if (position == "middle" || position == "center") {
        axis = {axis.word, std::max(0.0, areaHeight - height) / 2, 2};
    } else if (position == "bottom") {
        axis = {axis.word, std::max(0.0, areaHeight - height), 3};
    }
    // LibreOffice puts a shape counted from the top margin well below its
    // place, and drops its alignment; counted from the page's edge it stands
    // where every reader puts it.
    if (axis.word == "\\shpbymargin")
        axis = {"\\shpbypage", page.top + page.headerRoom + axis.offset, 0};
    return axis;
}

// `before` and `after`: the room the text column leaves on each side of the
// frame. Text is not set in a strip narrower than two centimetres beside a
// frame, as ODF readers lay it out; a reader of Word's documents would fill
// it with a word or two.
std::string wrap(const librevenge::RVNGPropertyList &frame, double before, double after)
{
    constexpr double narrowest = 2 / 2.54;
    const std::string wrap = Units::text(frame, "style:wrap").value_or("parallel");
    const bool leftUsable = before >= narrowest;
    const bool rightUsable = after >= narrowest;
    if (wrap == "none" || (wrap == "left" && !leftUsable) || (wrap == "right" && !rightUsable) ||
        (!leftUsable && !rightUsable && wrap != "run-through"))
        return "\\shpwr1";
    if (wrap == "run-through")
        return "\\shpwr3\\shpfblwtxt0";
    if (wrap == "left")
        return "\\shpwr2\\shpwrk1";
    if (wrap == "right")
        return "\\shpwr2\\shpwrk2";
    if (wrap == "biggest")
        return "\\shpwr2\\shpwrk3";
    return "\\shpwr2\\shpwrk0";
}

std::string property(const char *name, int value)
{
    return std::string("{\\sp{\\sn ") + name + "}{\\sv " + std::to_string(value) + "}}";
}

} // namespace

std::string placed(const std::string &pictureGroup, const librevenge::RVNGPropertyList &frame,
                   const PageArea &page)
{
    const std::string anchor = Units::text(frame, "text:anchor-type").value_or("as-char");
    if (anchor == "as-char" || pictureGroup.empty())
        return pictureGroup;
    const double width = Units::inches(frame, "svg:width").value_or(1);
    const double height = Units::inches(frame, "svg:height").value_or(1);
    const Axis x = horizontal(frame, page, width);
    const Axis y = vertical(frame, page, height);
    const int left = RtfFormat::twips(x.offset);
    const int top = RtfFormat::twips(y.offset);
    // A frame beside the text column never meets the text; a reader that
    // keeps text above and below it anyway would push it to another page.
    const double textWidth = page.width - page.left - page.right;
    const double start = x.word == "\\shpbxpage" ? x.offset - page.left : x.offset;
    const bool besideText = x.alignment == 0 && (start >= textWidth || start + width <= 0);
    std::string shape =
        "{\\shp{\\*\\shpinst\\shpleft" + std::to_string(left) + "\\shptop" + std::to_string(top) +
        "\\shpright" + std::to_string(left + RtfFormat::twips(width)) + "\\shpbottom" +
        std::to_string(top + RtfFormat::twips(height)) + "\\shpfhdr0" + x.word + y.word +
        (besideText ? "\\shpwr3\\shpfblwtxt0" : wrap(frame, start, textWidth - start - width)) + "\\shpz0" +
        property("shapeType", 75);
    // Word and LibreOffice keep text an eighth of an inch from a shape unless told; an ODF frame
    // keeps it at the frame's margins, none unless set.
    for (const auto &[side, name] :
         {std::pair{"fo:margin-left", "dxWrapDistLeft"}, std::pair{"fo:margin-right", "dxWrapDistRight"},
          std::pair{"fo:margin-top", "dyWrapDistTop"}, std::pair{"fo:margin-bottom", "dyWrapDistBottom"}})
        shape +=
            property(name, static_cast<int>(std::lround(Units::inches(frame, side).value_or(0) * 914400)));
    if (x.alignment)
        shape += property("posh", x.alignment);
    if (y.alignment)
        shape += property("posv", y.alignment);
    return shape + "{\\sp{\\sn pib}{\\sv " + pictureGroup + "}}}}";
}

std::string textBoxOpening(const librevenge::RVNGPropertyList &frame)
{
    const int width = RtfFormat::twips(Units::inches(frame, "svg:width").value_or(2));
    const int height = RtfFormat::twips(Units::inches(frame, "svg:height").value_or(1));
    return "{\\shp{\\*\\shpinst\\shpleft0\\shptop0\\shpright" + std::to_string(width) + "\\shpbottom" +
           std::to_string(height) +
           "\\shpfhdr0\\shpbxcolumn\\shpbypara\\shpwr3\\shpz0{\\sp{\\sn shapeType}{\\sv 202}}{\\shptxt ";
}

} // namespace richtext::RtfPicture
