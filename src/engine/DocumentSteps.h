#pragma once

#include "Decoded.h"
#include "richtext/Losses.h"

#include <filesystem>
#include <optional>
#include <string>

// The engine's steps for WordPerfect documents; they run on a worker thread.
namespace Converter::steps {

// Has wpd2odt write the package at `destination`. A missing or empty result
// is removed and becomes conversionFailed("") or, with a password, wrongPassword.
// Returns what wpd2odt said it could not carry.
richtext::Losses writeODTPackage(const std::filesystem::path &source,
                                 const std::optional<std::string> &password,
                                 const std::filesystem::path &destination);

// The whole document in memory: flat OpenDocument from `wpd2odt --stdout`,
// else HTML from wpd2html.
Decoded documentBytes(const std::filesystem::path &source, const std::optional<std::string> &password);

// Removes what stands at `path`, ignoring failure (most often: nothing is there).
void removeQuietly(const std::filesystem::path &path);

} // namespace Converter::steps
