#include "WordPerfectFixtures.h"

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
