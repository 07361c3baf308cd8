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
    std::string owned;   // bytes made here (a drawing, a trimmed metafile)
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
    return size >= 18 && (littleEndian(bytes) == 1 || littleEndian(bytes) == 2) && littleEndian(bytes + 2) == 9 &&
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
    const unsigned long declared =
        (littleEndian(bytes + start + 6) | static_cast<unsigned long>(littleEndian(bytes + start + 8)) << 16) * 2;
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
    std::string png = painter(std::string(svg), pixelsWide, pixelsHigh);
    if (png.empty())
        return std::nullopt;
    Picture picture{"\\pngblip", nullptr, 0, pixelsWide, pixelsHigh, 0, 0, std::move(png)};
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

std::string textBoxOpening(const librevenge::RVNGPropertyList &frame)
{
    const int width = RtfFormat::twips(Units::inches(frame, "svg:width").value_or(2));
    const int height = RtfFormat::twips(Units::inches(frame, "svg:height").value_or(1));
    return "{\\shp{\\*\\shpinst\\shpleft0\\shptop0\\shpright" + std::to_string(width) + "\\shpbottom" +
           std::to_string(height) +
           "\\shpfhdr0\\shpbxcolumn\\shpbypara\\shpwr3\\shpz0{\\sp{\\sn shapeType}{\\sv 202}}{\\shptxt ";
}

} // namespace richtext::RtfPicture
