#include "Destination.h"

#include "classify/InputFile.h"

#include <climits>
#include <unistd.h>

namespace fs = std::filesystem;

namespace Destination {
namespace {

bool isKnownInputExtension(const std::string &ext)
{
    return InputFile::wpDocumentExtensions().contains(ext) ||
           InputFile::wpGraphicExtensions().contains(ext) || InputFile::officeExtensions().contains(ext) ||
           ext == "odt" || ext == "fodt";
}

bool occupied(const fs::path &path)
{
    std::error_code error;
    return fs::exists(path, error);
}

// A name longer than the folder's file system holds would only fail once the converter had run;
// the base name gives up its tail instead (whole UTF-8 sequences), so the suffix survives.
fs::path fittedName(const fs::path &folder, std::string stem, const std::string &suffix)
{
    long limit = ::pathconf(folder.empty() ? "." : folder.c_str(), _PC_NAME_MAX);
    if (limit <= 0)
        limit = NAME_MAX;
    const auto room = static_cast<std::size_t>(limit) > suffix.size() ? limit - suffix.size() : 1;
    if (stem.size() > room) {
        std::size_t cut = room;
        while (cut > 0 && (static_cast<unsigned char>(stem[cut]) & 0xC0) == 0x80)
            --cut; // never split a multi-byte character
        stem.resize(cut);
    }
    return folder / (stem + suffix);
}

} // namespace

std::string baseName(const fs::path &url)
{
    const std::string name = url.filename().string();
    const std::string ext = lowercaseExtension(url);
    if (!ext.empty() && isKnownInputExtension(ext))
        return name.substr(0, name.size() - ext.size() - 1);
    return name;
}

fs::path proposedURL(const fs::path &url, const std::string &ext)
{
    return fittedName(url.parent_path(), baseName(url), "." + ext);
}

fs::path firstFreeNumberedURL(const fs::path &url, const std::string &ext,
                              const std::function<bool(const fs::path &)> &alsoTaken)
{
    const std::string base = baseName(url);
    for (unsigned long n = 1;; ++n) {
        const fs::path candidate = fittedName(url.parent_path(), base, " (" + std::to_string(n) + ")." + ext);
        if (!occupied(candidate) && !(alsoTaken && alsoTaken(candidate)))
            return candidate;
    }
}

std::optional<std::string> whyNotReplaceable(const fs::path &output)
{
    std::error_code error;
    if (fs::is_directory(fs::symlink_status(output, error)) || fs::is_directory(output, error))
        return "\u201C" + output.filename().string() +
               "\u201D is a folder, so a converted file cannot replace it.";
    return std::nullopt;
}

} // namespace Destination
