#include "SvgMetafiles.h"

#include "WmfRenderer.h"

#include <librevenge/librevenge.h>

#include <array>
#include <string_view>

namespace SvgMetafiles {
namespace {

// About 250 dots per inch for a picture five inches wide: libwmf draws
// without anti-aliasing, so it is drawn finer than it is shown.
constexpr unsigned drawingSide = 1280;

std::optional<std::string> pngUri(std::string_view base64)
{
    try {
        const librevenge::RVNGBinaryData metafile(librevenge::RVNGString(std::string(base64).c_str()));
        if (!metafile.getDataBuffer())
            return std::nullopt;
        const std::string_view bytes(reinterpret_cast<const char *>(metafile.getDataBuffer()), metafile.size());
        const std::optional<std::string> png = WmfRenderer::renderPNG(bytes, drawingSide);
        if (!png)
            return std::nullopt;
        librevenge::RVNGBinaryData pngData(reinterpret_cast<const unsigned char *>(png->data()), png->size());
        return "data:image/png;base64," + std::string(pngData.getBase64Data().cstr());
    } catch (...) {
        // librevenge's base64 decoder throws on characters outside the alphabet.
        return std::nullopt;
    }
}

} // namespace

std::string drawn(const std::string &svg)
{
    static constexpr std::array<std::string_view, 2> prefixes {"data:image/wmf;base64,", "data:image/x-wmf;base64,"};
    if (svg.find("wmf;base64,") == std::string::npos)
        return svg;
    std::string result;
    std::size_t from = 0;
    while (true) {
        std::size_t at = std::string::npos;
        std::string_view prefix;
        for (const std::string_view candidate : prefixes)
            if (const std::size_t found = svg.find(candidate, from); found < at) {
                at = found;
                prefix = candidate;
            }
        const std::size_t end = at == std::string::npos ? at : svg.find_first_of("\"'", at);
        if (end == std::string::npos)
            break;
        const std::string_view data = std::string_view(svg).substr(at + prefix.size(), end - at - prefix.size());
        result.append(svg, from, at - from);
        if (const std::optional<std::string> uri = pngUri(data))
            result += *uri;
        else
            result.append(svg, at, end - at);
        from = end;
    }
    result.append(svg, from, std::string::npos);
    return result;
}

} // namespace SvgMetafiles
