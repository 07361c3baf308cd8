#pragma once

#include "richtext/Document.h"

#include <string>

// Helpers for the WordPerfect output tests: flat OpenDocument fixtures built in code, and
// WordPerfect bytes read back by libwpd, the independent reader.
namespace wptest {

// A flat OpenDocument text with these automatic styles, master styles and body.
std::string flatOdt(const std::string &automaticStyles, const std::string &body,
                    const std::string &masterStyles = {});

struct ReadBack {
    bool ok = false; // libwpd took the file as a supported WordPerfect document
    richtext::Document document;
};
ReadBack readWordPerfect(const std::string &bytes);

// The first text piece of the main text, notes and cells included, that contains needle.
const richtext::Inline *pieceWith(const richtext::Document &document, const std::string &needle);
const richtext::Paragraph *paragraphWith(const richtext::Document &document, const std::string &needle);
std::string property(const richtext::Properties &properties, const std::string &name);

} // namespace wptest
