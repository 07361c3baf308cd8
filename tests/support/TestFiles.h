#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace testing_support {

// A fresh folder under /tmp, removed with everything in it at the end.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    const std::filesystem::path &path() const { return root; }
    std::filesystem::path operator/(const std::string &name) const { return root / name; }
    // The path of `name` in here, as a program's argument wants it.
    std::string file(const std::string &name) const { return (root / name).string(); }
    // Writes `name` with the given bytes and returns its path.
    std::string write(const std::string &name, const std::string &bytes) const;
    std::set<std::string> names() const;

private:
    std::filesystem::path root;
};

// The names of what a folder holds.
std::set<std::string> namesIn(const std::filesystem::path &folder);

void writeFile(const std::filesystem::path &path, const std::string &bytes);
void writeFile(const std::filesystem::path &path, const std::vector<std::uint8_t> &bytes);
std::string readFile(const std::filesystem::path &path);

// A shell script at `folder`/`name`, executable.
void writeScript(const std::filesystem::path &path, const std::string &body);

} // namespace testing_support
