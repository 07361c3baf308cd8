#include "DestinationChoice.h"

#include "destination/Destination.h"
#include "workflow/Prompter.h"

namespace fs = std::filesystem;

namespace Destination {

Choice resolve(const fs::path &url, const std::string &ext, Prompter &prompter,
               const std::function<bool(const fs::path &)> &alsoTaken)
{
    const fs::path proposed = proposedURL(url, ext);
    std::error_code error;
    if (!std::filesystem::exists(proposed, error))
        return proposed;
    Prompter::Alert alert;
    alert.style = Prompter::Alert::Style::warning;
    alert.message = "A file named \u201C" + proposed.filename().string() + "\u201D already exists.";
    alert.informative = "Do you want to replace it, or keep both files?";
    alert.buttons = {"Keep Both", "Replace", "Cancel"};
    alert.topic = Prompter::Alert::Topic::clash;
    alert.file = url.filename().string();
    switch (prompter.run(alert).button) {
    case 0: return firstFreeNumberedURL(url, ext, alsoTaken);
    case 1: return proposed;
    default: return std::nullopt;
    }
}

} // namespace Destination
