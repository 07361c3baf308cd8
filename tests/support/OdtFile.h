#pragma once

#include <set>
#include <string>
#include <vector>

// A converted document as a reader sees it: the zip entries of an .odt package, and the few XML
// questions the tests ask of its parts or of a flat document.
class OdtFile {
public:
    struct Entry {
        std::string name;
        bool stored; // uncompressed
        std::string data;
    };

    // Reads a whole package; ok() tells whether libzip could.
    static OdtFile package(const std::string &path);

    bool ok() const { return opened; }
    const std::vector<Entry> &entries() const { return entryList; }
    bool has(const std::string &name) const;
    std::string read(const std::string &name) const;

    static bool isWellFormed(const std::string &xml);
    // The string values of what an XPath expression selects; ODF's usual prefixes are known.
    static std::vector<std::string> select(const std::string &xml, const std::string &expression);
    // The words (runs of letters, any script) of the text of an XML document or of plain text.
    static std::set<std::string> words(const std::string &xml);
    static std::set<std::string> wordsOfPlainText(const std::string &text);
    // Whether a word of wpd2text's output is among the words of a converted document.
    static bool hasWord(const std::set<std::string> &words, const std::string &word);

private:
    bool opened = false;
    std::vector<Entry> entryList;
};
