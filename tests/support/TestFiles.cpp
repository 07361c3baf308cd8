#include "TestFiles.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace testing_support {

TempDir::TempDir()
{
    std::string pattern = (fs::temp_directory_path() / "quillmorph-test-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("cannot make a temporary folder");
    root = pattern;
}

TempDir::~TempDir()
{
    std::error_code ignored;
    fs::permissions(root, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(root, ignored);
}

std::string TempDir::write(const std::string &name, const std::string &bytes) const
{
    const std::string path = file(name);
    writeFile(path, bytes);
    return path;
}

std::set<std::string> TempDir::names() const
{
    return namesIn(root);
}

std::set<std::string> namesIn(const fs::path &folder)
{
    std::set<std::string> result;
    for (const auto &entry : fs::directory_iterator(folder))
        result.insert(entry.path().filename().string());
    return result;
}

void writeFile(const fs::path &path, const std::string &bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        throw std::runtime_error("cannot write " + path.string());
}

void writeFile(const fs::path &path, const std::vector<std::uint8_t> &bytes)
{
    writeFile(path, std::string(bytes.begin(), bytes.end()));
}

std::string readFile(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeScript(const fs::path &path, const std::string &body)
{
    fs::create_directories(path.parent_path());
    writeFile(path, "#!/bin/sh\n" + body + "\n");
    fs::permissions(path, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                              fs::perms::others_read | fs::perms::others_exec);
}

} // namespace testing_support
