#pragma once

#include <stdexcept>
#include <string>

// The one place that talks to librsvg and cairo: draws SVG markup onto a
// white W×H canvas as a web page shows an inline <svg> sized W×H pixels,
// and encodes the result as PNG.
namespace RsvgRenderer {

class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// With a viewBox the drawing is fitted and centred (its preserveAspectRatio
// decides); without one it is drawn at its own size from the top-left.
// Throws Failure when librsvg cannot read the markup or cairo cannot draw.
std::string renderPNG(const std::string &markup, int width, int height);

} // namespace RsvgRenderer
