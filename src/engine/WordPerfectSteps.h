#pragma once

#include "richtext/Losses.h"
#include "settings/Targets.h"

#include <filesystem>

// The engine's steps towards WordPerfect; they run on a worker thread.
namespace Converter::steps {

// Has odt2wp5 write `destination`; a missing or empty result is removed and
// becomes conversionFailed(""). Returns what odt2wp5 said it could not carry.
richtext::Losses generateWP(const std::filesystem::path &odt, WPTarget target,
                            const std::filesystem::path &destination);

// Imports an office document to a temporary ODT, then generateWP; the
// import's work folder is removed however generateWP ends.
richtext::Losses officeToWP(const std::filesystem::path &source, WPTarget target,
                            const std::filesystem::path &destination);

} // namespace Converter::steps
