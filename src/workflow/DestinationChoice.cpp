#include "DestinationChoice.h"

#include "destination/Destination.h"
#include "workflow/Prompter.h"

namespace fs = std::filesystem;

namespace Destination {

Choice resolve(const fs::path &url, const std::string &ext, Prompter &prompter,
               const std::function<bool(const fs::path &)> &alsoTaken)
{
    return resolve(url, ext, prompter, alsoTaken, nullptr);
}

Choice resolve(const fs::path &url, const std::string &ext, Prompter &prompter,
               const std::function<bool(const fs::path &)> &alsoTaken, FolderAnswer *folder)
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
    int button = 0;
    if (folder && folder->remembered) {
        button = *folder->remembered;
    } else {
        if (folder)
            alert.suppressionTitle = "Do the same for the other files of this folder";
        const Prompter::Answer answer = prompter.run(alert);
        button = answer.button;
        if (folder && answer.suppressed)
            folder->remembered = button;
    }
    switch (button) {
    case 0:
        return firstFreeNumberedURL(url, ext, alsoTaken);
    case 1:
        return proposed;
    default:
        return std::nullopt;
    }
}

} // namespace Destination
