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

private:
    std::vector<Picture> stored;
};
