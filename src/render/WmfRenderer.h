#pragma once

#include <optional>
#include <string>
#include <string_view>

// The one place that talks to libwmf: draws a Windows metafile as PNG.
namespace WmfRenderer {

// The metafile drawn with its longer side about `longSide` pixels, or nothing
// when libwmf cannot read or draw it. A metafile shorter than its header
// declares is padded: WordPerfect graphics store theirs one byte short.
std::optional<std::string> renderPNG(std::string_view metafile, unsigned longSide);

} // namespace WmfRenderer
