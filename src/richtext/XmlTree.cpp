#include "XmlTree.h"

#include "OdfNames.h"
#include "ReadError.h"

#include <libxml/parser.h>

#include <cstring>
#include <mutex>

namespace richtext {
namespace {

// Set while this thread parses; libxml2 may reset the context's own fields.
thread_local bool *declaredDtd = nullptr;

void refuseDtd(void *context, const xmlChar *, const xmlChar *, const xmlChar *)
{
    if (declaredDtd)
        *declaredDtd = true;
    xmlStopParser(static_cast<xmlParserCtxtPtr>(context));
}

std::string describe(const xmlError *error)
{
    if (!error || !error->message)
        return "it is not well-formed XML";
    std::string message = error->message;
    while (!message.empty() && (message.back() == '\n' || message.back() == ' '))
        message.pop_back();
    return message + " (line " + std::to_string(error->line) + ")";
}

} // namespace

XmlTree XmlTree::parse(std::string_view bytes, const std::string &what)
{
    static std::once_flag initialised;
    std::call_once(initialised, [] { xmlInitParser(); });

    std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxtPtr)> parser(xmlNewParserCtxt(), xmlFreeParserCtxt);
    if (!parser)
        throw ReadError("There was not enough memory to read " + what + ".");
    bool dtd = false;
    declaredDtd = &dtd;
    parser->sax->internalSubset = refuseDtd;
    parser->sax->externalSubset = refuseDtd;
    // No XML_PARSE_NOENT and no DTD loading: entities are never substituted or
    // fetched. HUGE lifts the 10 MB limit on one text node, which a picture
    // held inline in flat ODF can pass; the DTD refusal keeps entity bombs out.
    const int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE;
    if (bytes.size() > static_cast<std::size_t>(INT32_MAX))
        throw ReadError(what + " is too large to read.");
    xmlDoc *document = xmlCtxtReadMemory(parser.get(), bytes.data(), static_cast<int>(bytes.size()),
                                         what.c_str(), nullptr, options);
    declaredDtd = nullptr;
    if (dtd) {
        if (document)
            xmlFreeDoc(document);
        throw ReadError(what + " declares a DTD, which OpenDocument files never do, so I did not read it.");
    }
    if (!document || !parser->wellFormed) {
        const std::string reason = describe(xmlCtxtGetLastError(parser.get()));
        if (document)
            xmlFreeDoc(document);
        throw ReadError(what + " is not well-formed XML: " + reason + ".");
    }
    if (!xmlDocGetRootElement(document)) {
        xmlFreeDoc(document);
        throw ReadError(what + " holds no XML element.");
    }
    return XmlTree(document);
}

xmlNode *XmlTree::root() const
{
    return xmlDocGetRootElement(document.get());
}

namespace Xml {

const char *localName(const xmlNode *node)
{
    return node && node->name ? reinterpret_cast<const char *>(node->name) : "";
}

const char *nameSpaceOf(const xmlNode *node)
{
    return node && node->ns && node->ns->href ? reinterpret_cast<const char *>(node->ns->href) : "";
}

bool is(const xmlNode *node, const char *nameSpace, const char *name)
{
    return node && node->type == XML_ELEMENT_NODE && std::strcmp(localName(node), name) == 0 &&
           std::strcmp(nameSpaceOf(node), nameSpace) == 0;
}

std::vector<xmlNode *> children(const xmlNode *node)
{
    std::vector<xmlNode *> result;
    if (!node)
        return result;
    for (xmlNode *child = node->children; child; child = child->next)
        if (child->type == XML_ELEMENT_NODE)
            result.push_back(child);
    return result;
}

xmlNode *child(const xmlNode *node, const char *nameSpace, const char *name)
{
    if (!node)
        return nullptr;
    for (xmlNode *child = node->children; child; child = child->next)
        if (is(child, nameSpace, name))
            return child;
    return nullptr;
}

std::optional<std::string> attribute(const xmlNode *node, const char *nameSpace, const char *name)
{
    if (!node || node->type != XML_ELEMENT_NODE)
        return std::nullopt;
    xmlChar *value = xmlGetNsProp(node, reinterpret_cast<const xmlChar *>(name),
                                  reinterpret_cast<const xmlChar *>(nameSpace));
    if (!value)
        return std::nullopt;
    std::string result(reinterpret_cast<const char *>(value));
    xmlFree(value);
    return result;
}

std::vector<std::pair<std::string, std::string>> attributes(const xmlNode *node)
{
    std::vector<std::pair<std::string, std::string>> result;
    if (!node || node->type != XML_ELEMENT_NODE)
        return result;
    for (const xmlAttr *attribute = node->properties; attribute; attribute = attribute->next) {
        if (!attribute->ns || !attribute->ns->href)
            continue;
        const char *prefix = OdfNames::prefixOf(reinterpret_cast<const char *>(attribute->ns->href));
        if (!prefix)
            continue;
        xmlChar *value = xmlNodeListGetString(attribute->doc, attribute->children, 1);
        result.emplace_back(std::string(prefix) + ":" + reinterpret_cast<const char *>(attribute->name),
                            value ? reinterpret_cast<const char *>(value) : "");
        xmlFree(value);
    }
    return result;
}

std::string text(const xmlNode *node)
{
    if (!node)
        return {};
    xmlChar *content = xmlNodeGetContent(node);
    std::string result = content ? reinterpret_cast<const char *>(content) : "";
    xmlFree(content);
    return result;
}

std::string plainAttribute(const xmlNode *node, const char *name)
{
    if (!node || node->type != XML_ELEMENT_NODE)
        return {};
    xmlChar *value = xmlGetProp(node, reinterpret_cast<const xmlChar *>(name));
    std::string result = value ? reinterpret_cast<const char *>(value) : "";
    xmlFree(value);
    return result;
}

std::string lowerTag(const xmlNode *node)
{
    if (!node || node->type != XML_ELEMENT_NODE || !node->name)
        return {};
    return lowerAscii(reinterpret_cast<const char *>(node->name));
}

std::string lowerAscii(std::string text)
{
    for (char &c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

} // namespace Xml

const char *OdfNames::prefixOf(const char *nameSpace)
{
    static const std::pair<const char *, const char *> known[] = {
        {office, "office"}, {style, "style"}, {text, "text"},   {table, "table"},
        {fo, "fo"},         {svg, "svg"},     {draw, "draw"},   {xlink, "xlink"},
        {dc, "dc"},         {meta, "meta"},   {loext, "loext"},
    };
    for (const auto &[uri, prefix] : known)
        if (std::strcmp(uri, nameSpace) == 0)
            return prefix;
    return nullptr;
}

} // namespace richtext
