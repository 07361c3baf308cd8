#pragma once

#include "OdtFile.h"
#include "richtext/Document.h"
#include "richtext/InflateLimits.h"

#include <librevenge/librevenge.h>

#include <string>
#include <utility>
#include <vector>

// Small OpenDocument and HTML documents built in code, and the model our
// readers make of them.
namespace fixtures {

richtext::Document readOdt(const std::string &bytes, richtext::InflateLimits limits = {});
richtext::Document readHtml(const std::string &bytes);

// The main text's paragraphs as strings, tabs as '\t'.
std::vector<std::string> texts(const richtext::Document &document);
// The first text piece of the main text that contains `needle`.
const richtext::Inline *pieceWith(const richtext::Document &document, const std::string &needle);
std::string property(const richtext::Properties &properties, const std::string &name);

// A document that uses every callback our writers implement, told to `sink`.
void everything(librevenge::RVNGTextInterface &sink);

// A PNG's signature and size alone: 2 by 3 pixels.
std::string png2x3();
// office:binary-data of these bytes.
librevenge::RVNGBinaryData binary(const std::string &bytes);

// Whether the groups of an RTF text open and close in pairs, escapes aside.
bool balanced(const std::string &rtf);

} // namespace fixtures
