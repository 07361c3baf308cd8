#pragma once

#include <cstdint>
#include <string>

// Encrypted WordPerfect files made in code, with the cipher libwpd undoes: the
// upper-cased password XORed over the bytes with a running counter, and a
// 16-bit checksum of the password where each generation keeps it.
namespace testing_support::WordPerfectCipher {

std::uint16_t checksum(const std::string &password);

// A WordPerfect for Macintosh 3 document holding `text`, its key in bytes 12-13
// (low byte first, so byte 12 may be zero) and everything after the prefix encrypted.
std::string macintosh(const std::string &text, const std::string &password);

// A WordPerfect 5 document encrypted: the checksum in bytes 12-13 (high byte first), everything
// after the 16-byte prefix encrypted.
std::string wp5(std::string document, const std::string &password);

// A WordPerfect 4.2 document: no prefix, the marker FE FF 61 61, the checksum,
// then the text encrypted.
std::string wp42(const std::string &text, const std::string &password);

} // namespace testing_support::WordPerfectCipher
