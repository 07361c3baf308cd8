#include "ScratchFolder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

ScratchFolder::ScratchFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "wpd2odt-test-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("mkdtemp failed");
    root = pattern;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::permissions(root, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(root, ignored);
}

std::string ScratchFolder::write(const std::string &name, const std::string &bytes) const
{
    std::string path = file(name);
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

std::set<std::string> ScratchFolder::names() const
{
    std::set<std::string> result;
    for (const auto &entry : std::filesystem::directory_iterator(root))
        result.insert(entry.path().filename().string());
    return result;
}

std::string ScratchFolder::readFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}
