#include "EmbeddedPictures.h"

namespace {

struct PictureKind {
    std::string_view mediaType;
    std::string_view extension;
};

// libodfgen hands over converted WordPerfect graphics as SVG, and any other binary object as it
// came from the document, with no type attached: the first bytes tell what it is.
PictureKind recognise(std::string_view bytes)
{
    const auto startsWith = [bytes](std::string_view prefix) { return bytes.starts_with(prefix); };
    if (startsWith("<?xml") || startsWith("<svg"))
        return {"image/svg+xml", "svg"};
    if (startsWith("\x89PNG"))
        return {"image/png", "png"};
    if (startsWith("\xFF\xD8\xFF"))
        return {"image/jpeg", "jpg"};
    if (startsWith("GIF8"))
        return {"image/gif", "gif"};
    if (startsWith("BM"))
        return {"image/bmp", "bmp"};
    if (startsWith(std::string_view("II*\0", 4)) || startsWith(std::string_view("MM\0*", 4)))
        return {"image/tiff", "tif"};
    if (startsWith("\xD7\xCD\xC6\x9A"))
        return {"image/x-wmf", "wmf"};
    if (startsWith("\xFFWPC"))
        return {"image/x-wpg", "wpg"};
    return {"application/octet-stream", "bin"};
}

} // namespace

std::string EmbeddedPictures::add(std::string bytes)
{
    const PictureKind kind = recognise(bytes);
    if (kind.extension == "bin")
        ++unknown;
    std::string path =
        "Pictures/image" + std::to_string(stored.size() + 1) + "." + std::string(kind.extension);
    stored.push_back({path, std::string(kind.mediaType), std::move(bytes)});
    return path;
}
