#pragma once

#include <string>
#include <vector>

// Assembles an OpenDocument text package in memory: mimetype first and stored, so that the type
// can be read at a fixed offset, then the given entries, with a manifest that lists them all.
class OdtPackageWriter {
public:
    void add(std::string path, std::string mediaType, std::string data);

    // The whole zip archive; throws std::runtime_error if libzip fails.
    std::string write() const;

private:
    std::string manifest() const;

    struct Entry {
        std::string path;
        std::string mediaType;
        std::string data;
    };
    std::vector<Entry> entries;
};
