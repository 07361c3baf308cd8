#pragma once

#include <string>

// Web engines enlarge a bitmap with a bilinear filter whose weights come in
// sixteenths; librsvg's (pixman's) has finer weights, so every soft edge of an
// enlarged bitmap comes out a few levels apart from the page. This step
// resamples each enlarged bitmap onto the canvas's own pixel grid the way the
// page does, so that librsvg only has to copy it.
namespace UpscaledBitmaps {

// The markup with every enlarged bitmap resampled for a canvas of the given
// size (the drawing fitted into it as RsvgRenderer fits it), or the markup
// unchanged when none qualifies or anything about it is unclear. Never throws.
std::string resample(const std::string &markup, int canvasWidth, int canvasHeight);

} // namespace UpscaledBitmaps
