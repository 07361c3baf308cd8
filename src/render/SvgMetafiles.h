#pragma once

#include <string>

// libwpg keeps a Windows metafile inside a WordPerfect graphic as an <image>
// of type image/wmf, which no SVG renderer draws: such a graphic would come
// out blank. This draws each one through libwmf into a PNG in its place.
namespace SvgMetafiles {

// The markup with every metafile image replaced by its PNG drawing; a
// metafile that cannot be drawn stays as it was. Never throws.
std::string drawn(const std::string &svg);

} // namespace SvgMetafiles
