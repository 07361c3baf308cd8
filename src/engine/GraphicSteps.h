#pragma once

#include <filesystem>
#include <string>

// The engine's steps for WordPerfect graphics.
namespace Converter::steps {

// wpg2svg's whole output (worker thread); conversionFailed("") when it is empty.
std::string svgBytes(const std::filesystem::path &source);

// Replaces whatever stands at `destination` with `bytes` (main thread).
// Throws PlatformError with the system's reason when the write fails.
void writeWhole(const std::filesystem::path &destination, const std::string &bytes);

} // namespace Converter::steps
