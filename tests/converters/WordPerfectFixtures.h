#pragma once

#include <string>
#include <vector>

// WordPerfect files made in code, byte by byte, so the fast tests need no sample files.
class WordPerfectFixtures {
public:
    // A WordPerfect 5.1 document: the 16-byte prefix and the paragraphs as plain text, each ended
    // by a hard return.
    static std::string wp51(const std::vector<std::string> &paragraphs);

    // A WordPerfect 5.1 prefix whose document pointer lies past the end of the file.
    static std::string truncatedWp51();
    // A WordPerfect 6 prefix followed by bytes that are no WordPerfect structure.
    static std::string garbledWp6();
    // A WordPerfect 6 prefix with the encryption key set.
    static std::string encryptedWp6();
};
