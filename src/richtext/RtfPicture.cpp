#include "RtfPicture.h"
#include "Base64.h"

#include "RtfFormat.h"
#include "Units.h"

#include <optional>

namespace richtext::RtfPicture {
namespace {

struct Picture {
    std::string blip; // \pngblip, \jpegblip, \emfblip
    const unsigned char *bytes = nullptr;
    unsigned long size = 0;
    int widthPixels = 0;
    int heightPixels = 0;
};

std::uint32_t bigEndian(const unsigned char *at)
{
    return (std::uint32_t(at[0]) << 24) | (std::uint32_t(at[1]) << 16) | (std::uint32_t(at[2]) << 8) | at[3];
}

// The kind is told from the bytes: producers' MIME types are not always right.
std::optional<Picture> recognise(const unsigned char *bytes, unsigned long size)
{
    Picture picture{{}, bytes, size, 0, 0};
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

std::optional<Picture> fromData(const librevenge::RVNGPropertyList &object, librevenge::RVNGBinaryData &keep)
{
    const librevenge::RVNGProperty *data = object["office:binary-data"];
    if (!data)
        return std::nullopt;
    keep = decodeBase64(data->getStr().cstr());
    if (!keep.getDataBuffer())
        return std::nullopt;
    return recognise(keep.getDataBuffer(), keep.size());
}

} // namespace

std::string group(const librevenge::RVNGPropertyList &object, const librevenge::RVNGPropertyList &frame)
{
    librevenge::RVNGBinaryData data;
    std::optional<Picture> picture = fromData(object, data);
    if (const librevenge::RVNGPropertyListVector *others = object.child("librevenge:replacement-objects"))
        for (unsigned long n = 0; !picture && n < others->count(); ++n)
            picture = fromData((*others)[n], data);
    if (!picture)
        return {};

    const double width = Units::inches(frame, "svg:width")
                             .value_or(picture->widthPixels > 0 ? picture->widthPixels / 96.0 : 1.0);
    const double height = Units::inches(frame, "svg:height")
                              .value_or(picture->heightPixels > 0 ? picture->heightPixels / 96.0 : 1.0);
    const int pixelsWide = picture->widthPixels > 0 ? picture->widthPixels : RtfFormat::twips(width) / 15;
    const int pixelsHigh = picture->heightPixels > 0 ? picture->heightPixels : RtfFormat::twips(height) / 15;

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
