#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

// A zip archive of the entries, in order; `compress` deflates them (mimetype always stored).
std::string zipOf(const std::vector<std::pair<std::string, std::string>> &entries, bool compress = true);

// The root element with every ODF namespace declared, its tag left open.
std::string odfRoot(const char *element);

// An OpenDocument text made in code; each part holds the XML inside its element.
struct Odt {
    std::string fontFaces = {};
    std::string styles = {};          // office:styles
    std::string automaticStyles = {}; // office:automatic-styles (of the content)
    std::string masterStyles = {};    // office:master-styles
    std::string body = {};            // office:text
    std::string meta = {};            // office:meta (the flat form only)

    std::string flat() const;
    // content.xml and styles.xml in a package; master pages and their layouts go to styles.xml.
    std::string package(const std::vector<std::pair<std::string, std::string>> &extra = {}) const;
    std::string contentXml() const;
    std::string stylesXml() const;
};

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
