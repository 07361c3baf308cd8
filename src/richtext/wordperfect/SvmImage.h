#pragma once

#include "WpgImage.h"

#include <optional>
#include <string_view>

namespace richtext::wordperfect {

// Whether the bytes are a StarView metafile, LibreOffice's own vector format.
bool isSvm(std::string_view bytes);

// The metafile drawn on white at drawingPixelsPerInch of its preferred size, fitted to maxSide;
// nothing when it is damaged. Lines, shapes, text and their colours, fonts, map modes and clips
// are drawn; bitmaps, hatches and other actions are passed over.
std::optional<Raster> renderSvm(std::string_view bytes, int maxSide);

} // namespace richtext::wordperfect
