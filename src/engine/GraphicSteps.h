#pragma once

#include "richtext/Losses.h"

#include <filesystem>
#include <string>

// The engine's steps for WordPerfect graphics.
namespace Converter::steps {

struct Drawing {
    std::string svg;
    richtext::Losses losses;
};

// wpg2svg's output with its metafiles drawn and its bitmaps compressed, as
// every SVG reader shows them (worker thread); conversionFailed("") when
// wpg2svg gives nothing.
Drawing svgBytes(const std::filesystem::path &source);

// SVG drawn on a white width×height canvas, as PNG: by svg2png in a process of
// its own when it is installed (a large picture's memory and any crash of the
// libraries that read it stay out of ours), else here. Throws
// RsvgRenderer::Failure when it cannot be drawn. Any thread.
std::string drawPNG(const std::string &svg, int width, int height);

// Replaces whatever stands at `destination` with `bytes` (main thread).
// Throws PlatformError with the system's reason when the write fails.
void writeWhole(const std::filesystem::path &destination, const std::string &bytes);

} // namespace Converter::steps
