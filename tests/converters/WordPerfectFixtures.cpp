#include "WordPerfectFixtures.h"

#include <cctype>
#include <cstdint>
#include <random>

namespace {

std::string prefix(uint32_t documentPointer, char majorVersion, char minorVersion)
{
    std::string bytes = "\xFFWPC";
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>((documentPointer >> shift) & 0xFF);
    // product 1 (WordPerfect), file type 0x0A (document), version, no encryption, reserved
    bytes += {'\x01', '\x0A', majorVersion, minorVersion, '\0', '\0', '\0', '\0'};
    return bytes;
}

} // namespace

std::string WordPerfectFixtures::wp51(const std::vector<std::string> &paragraphs)
{
    // With the document pointer at 16 there are no prefix packets: the text starts at once.
    std::string document = prefix(16, 0, 1);
    for (const std::string &paragraph : paragraphs)
        document += paragraph + '\x0A';
    return document;
}

std::string WordPerfectFixtures::encryptWp5(std::string document, const std::string &password)
{
    std::string key;
    for (const char c : password)
        key += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    uint16_t checksum = 0;
    for (const char c : key)
        checksum = static_cast<uint16_t>(((checksum >> 1) | (checksum << 15)) ^
                                         (static_cast<unsigned char>(c) << 8));
    document[12] = static_cast<char>(checksum >> 8);
    document[13] = static_cast<char>(checksum & 0xFF);
    for (size_t i = 16; i < document.size(); ++i) {
        const size_t n = i - 16;
        const auto mask = static_cast<unsigned char>(key.size() + 1 + n);
        document[i] = static_cast<char>(document[i] ^ key[n % key.size()] ^ mask);
    }
    return document;
}

std::string WordPerfectFixtures::truncatedWp51()
{
    return prefix(0x200, 0, 1);
}

std::string WordPerfectFixtures::garbledWp6()
{
    std::string bytes = prefix(0x100, 2, 1);
    std::mt19937 random(1);
    for (int i = 0; i < 600; ++i)
        bytes += static_cast<char>(random() & 0xFF);
    return bytes;
}

std::string WordPerfectFixtures::encryptedWp6()
{
    std::string bytes = prefix(0x100, 2, 1);
    bytes[12] = '\x12';
    bytes[13] = '\x34';
    return bytes + std::string(600, '\0');
}
