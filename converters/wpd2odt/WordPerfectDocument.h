#pragma once

#include <optional>
#include <string>
#include <vector>

namespace librevenge {
class RVNGTextInterface;
}

// A WordPerfect document read whole into memory, so that a source which vanishes or changes
// during the conversion cannot leave libwpd reading half a file.
class WordPerfectDocument {
public:
    // Throws ConverterError when the file cannot be read, is not a format libwpd reads, or is
    // encrypted and the password is missing or wrong.
    static WordPerfectDocument open(const std::string &path, const std::optional<std::string> &password);

    // Sends the document to the generator; throws ConverterError when libwpd gives up on it.
    void parse(librevenge::RVNGTextInterface &generator) const;

    const std::string &path() const { return location; }
    const std::vector<unsigned char> &contents() const { return bytes; }

private:
    WordPerfectDocument(std::string path, std::vector<unsigned char> bytes);
    void checkFormat(const std::optional<std::string> &password);

    std::string location;
    std::vector<unsigned char> bytes;
    // Only set for encrypted documents: libwpd refuses a password for a plain one.
    std::optional<std::string> password;
};
