#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

class Prompter;

// The clash question: the naming is the destination's, the question the workflow's.
namespace Destination {

// Where to write, or nothing when the user cancelled (the `cancel` choice).
using Choice = std::optional<std::filesystem::path>;

// The proposed output beside `url`; when a file of that name exists, asks
// whether to keep both (a numbered name, also avoiding what `alsoTaken` claims),
// replace it, or cancel.
Choice resolve(const std::filesystem::path &url, const std::string &ext, Prompter &prompter,
               const std::function<bool(const std::filesystem::path &)> &alsoTaken = {});

// For the files of one folder: the question offers to answer the same for the
// rest of them, and once that is chosen the answer is given without asking.
struct FolderAnswer {
    std::optional<int> remembered; // the button chosen for every file of the folder
};
Choice resolve(const std::filesystem::path &url, const std::string &ext, Prompter &prompter,
               const std::function<bool(const std::filesystem::path &)> &alsoTaken, FolderAnswer *folder);

} // namespace Destination
