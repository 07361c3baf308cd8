#pragma once

#include <libxml/tree.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace richtext {

// A parsed XML document, read the safe way: no network, no DTD, no entities.
// OpenDocument never declares a DTD, so a document that does is refused
// outright; that shuts out external entities and entity expansion bombs
// whatever libxml2's own limits are.
class XmlTree {
public:
    // Throws ReadError naming `what` ("content.xml") when the XML is not well-formed.
    static XmlTree parse(std::string_view bytes, const std::string &what);

    xmlNode *root() const;

private:
    explicit XmlTree(xmlDoc *document) : document(document, xmlFreeDoc) {}
    std::shared_ptr<xmlDoc> document;
};

// Reading elements and attributes by namespace URI and local name.
namespace Xml {

bool is(const xmlNode *node, const char *nameSpace, const char *localName);
// Element children only.
std::vector<xmlNode *> children(const xmlNode *node);
xmlNode *child(const xmlNode *node, const char *nameSpace, const char *localName);
std::optional<std::string> attribute(const xmlNode *node, const char *nameSpace, const char *localName);
// Every attribute as (prefix:name, value), with the prefix that ODF documents
// conventionally give the namespace, whatever prefix this document used.
std::vector<std::pair<std::string, std::string>> attributes(const xmlNode *node);
// The concatenated text of a node and its descendants.
std::string text(const xmlNode *node);
const char *localName(const xmlNode *node);
const char *nameSpaceOf(const xmlNode *node);

// HTML knows no namespaces and ignores case in its names.
// An attribute without namespace, empty when absent.
std::string plainAttribute(const xmlNode *node, const char *name);
// An element's name in lower case; empty for anything but an element.
std::string lowerTag(const xmlNode *node);
// ASCII letters in lower case, every other byte as it is.
std::string lowerAscii(std::string text);

} // namespace Xml
} // namespace richtext
