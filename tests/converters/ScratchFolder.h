#pragma once

#include <set>
#include <string>

// A fresh folder under the system's temporary folder, removed with everything in it.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    const std::string &path() const { return root; }
    std::string file(const std::string &name) const { return root + "/" + name; }
    // Writes name with the given bytes and returns its path.
    std::string write(const std::string &name, const std::string &bytes) const;
    std::set<std::string> names() const;

    static std::string readFile(const std::string &path);

private:
    std::string root;
};
