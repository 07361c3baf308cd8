#include "WpgToSvg.h"

#include "SvgImages.h"

#include <librevenge-stream/librevenge-stream.h>
#include <librevenge/librevenge.h>
#include <libwpg/libwpg.h>

#include <string>
#include <string_view>
#include <utility>

namespace {

thread_local richtext::Losses losses;

bool convertToSvg(const librevenge::RVNGBinaryData &wpg, librevenge::RVNGBinaryData &svg)
try {
    librevenge::RVNGStringStream stream(wpg.getDataBuffer(), static_cast<unsigned>(wpg.size()));
    // WordPerfect 5 stores its graphics without the WPC prefix, so libwpg cannot recognise them;
    // they are WPG 1 records and parse as such when told so.
    const libwpg::WPGFileFormat format =
        libwpg::WPGraphics::isSupported(&stream) ? libwpg::WPG_AUTODETECT : libwpg::WPG_WPG1;

    librevenge::RVNGStringVector pages;
    // An empty namespace gives plain <svg> elements, which is what a standalone SVG file wants.
    librevenge::RVNGSVGDrawingGenerator generator(pages, "");
    if (!libwpg::WPGraphics::parse(&stream, &generator, format) || pages.empty() || pages[0].empty())
        return false;

    std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n";
    // Office suites show an SVG's metafile images as blanks, so they go in drawn.
    int undrawn = 0;
    const std::string drawn = SvgImages::placeWpg1Bitmaps(
        pages[0].cstr(), std::string_view(reinterpret_cast<const char *>(wpg.getDataBuffer()), wpg.size()));
    document += SvgImages::compressBitmaps(SvgImages::drawMetafiles(drawn, &undrawn));
    if (undrawn > 0)
        losses.add(richtext::loss::unreadablePictures);
    svg.clear();
    svg.append(reinterpret_cast<const unsigned char *>(document.data()), document.size());
    return true;
} catch (...) {
    // libodfgen calls this in the middle of writing the document: a graphic that cannot be
    // converted must never end the conversion.
    return false;
}

} // namespace

bool WpgToSvg::convert(const librevenge::RVNGBinaryData &wpg, librevenge::RVNGBinaryData &svg)
{
    if (wpg.empty())
        return false;
    if (convertToSvg(wpg, svg))
        return true;
    losses.add(richtext::loss::unreadablePictures);
    // Better the original graphic than none: office suites that read WPG still show it.
    svg = wpg;
    return true;
}

richtext::Losses WpgToSvg::takeLosses()
{
    return std::exchange(losses, {});
}
