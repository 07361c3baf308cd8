#include "WordPerfectCipher.h"

#include <cctype>

namespace testing_support::WordPerfectCipher {
namespace {

std::string upper(const std::string &password)
{
    std::string key;
    for (const char c : password)
        key += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return key;
}

std::string encrypt(std::string bytes, const std::string &password, std::size_t start)
{
    const std::string key = upper(password);
    for (std::size_t i = start; i < bytes.size(); ++i) {
        const std::size_t n = i - start;
        const auto mask = static_cast<unsigned char>(key.size() + 1 + n);
        bytes[i] = static_cast<char>(bytes[i] ^ key[n % key.size()] ^ mask);
    }
    return bytes;
}

} // namespace

std::uint16_t checksum(const std::string &password)
{
    std::uint16_t sum = 0;
    for (const char c : upper(password))
        sum = static_cast<std::uint16_t>(((sum >> 1) | (sum << 15)) ^ (static_cast<unsigned char>(c) << 8));
    return sum;
}

std::string macintosh(const std::string &text, const std::string &password)
{
    const std::uint16_t sum = checksum(password);
    // Prefix: signature, document at 16, product WordPerfect, Macintosh file type, version 3.0.
    std::string bytes{'\xFF', 'W', 'P', 'C', 16, 0, 0, 0, 1, 0x2C, 3, 0};
    bytes += static_cast<char>(sum & 0xFF);
    bytes += static_cast<char>(sum >> 8);
    bytes += std::string(2, '\0');
    return encrypt(bytes + text, password, 16);
}

std::string wp5(std::string document, const std::string &password)
{
    const std::uint16_t sum = checksum(password);
    document[12] = static_cast<char>(sum >> 8);
    document[13] = static_cast<char>(sum & 0xFF);
    return encrypt(document, password, 16);
}

std::string wp42(const std::string &text, const std::string &password)
{
    const std::uint16_t sum = checksum(password);
    std::string bytes{'\xFE', '\xFF', 'a', 'a'};
    bytes += static_cast<char>(sum & 0xFF);
    bytes += static_cast<char>(sum >> 8);
    return encrypt(bytes + text, password, 6);
}

} // namespace testing_support::WordPerfectCipher
