#pragma once

#include <string>
#include <string_view>
#include <vector>

// The pictures of a document that are stored as files of the package (Pictures/...) rather than
// inline in its XML.
class EmbeddedPictures {
public:
    struct Picture {
        std::string path;
        std::string mediaType;
        std::string bytes;
    };

    // Keeps the picture and returns its path inside the package.
    std::string add(std::string bytes);

    const std::vector<Picture> &pictures() const { return stored; }

    // Pictures in no format an office suite shows: kept, but the reader sees a blank.
    int unrecognised() const { return unknown; }

private:
    std::vector<Picture> stored;
    int unknown = 0;
};
