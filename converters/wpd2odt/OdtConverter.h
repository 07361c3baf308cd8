#pragma once

#include <string>

class WordPerfectDocument;

// Runs a WordPerfect document through libodfgen's OdtGenerator and returns the OpenDocument text.
// Both throw ConverterError when libwpd cannot read the document.
class OdtConverter {
public:
    // One office:document, pictures inline.
    static std::string toFlatXml(const WordPerfectDocument &document);
    // The bytes of a complete .odt package, pictures as files of their own.
    static std::string toPackage(const WordPerfectDocument &document);
};
