#pragma once

#include "richtext/Losses.h"

#include <string>

class WordPerfectDocument;

// Runs a WordPerfect document through libodfgen's OdtGenerator and returns the OpenDocument text.
// Both throw ConverterError when libwpd cannot read the document, and add to `losses` what the
// output could not carry.
class OdtConverter {
public:
    // One office:document, pictures inline.
    static std::string toFlatXml(const WordPerfectDocument &document, richtext::Losses &losses);
    // The bytes of a complete .odt package, pictures as files of their own.
    static std::string toPackage(const WordPerfectDocument &document, richtext::Losses &losses);
};
