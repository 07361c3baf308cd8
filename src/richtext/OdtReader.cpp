#include "OdtReader.h"

#include "OdfNames.h"
#include "OdtContent.h"
#include "OdtStyles.h"
#include "ReadError.h"
#include "XmlTree.h"
#include "ZipArchive.h"

#include <memory>
#include <optional>

namespace richtext {
namespace {

using namespace OdfNames;

bool isZip(std::string_view bytes)
{
    return bytes.size() >= 4 && bytes.substr(0, 4) == std::string_view("PK\x03\x04", 4);
}

bool looksLikeXml(std::string_view bytes)
{
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF")
        bytes.remove_prefix(3);
    while (!bytes.empty() && (bytes[0] == ' ' || bytes[0] == '\t' || bytes[0] == '\r' || bytes[0] == '\n'))
        bytes.remove_prefix(1);
    return !bytes.empty() && bytes[0] == '<';
}

librevenge::RVNGPropertyList metadata(const xmlNode *meta)
{
    librevenge::RVNGPropertyList list;
    for (const xmlNode *field : Xml::children(meta)) {
        const std::string name = Xml::localName(field);
        const std::string ns = Xml::nameSpaceOf(field);
        const char *prefix = prefixOf(ns.c_str());
        if (prefix && (ns == dc || ns == OdfNames::meta) && name != "user-defined" &&
            name != "document-statistic")
            list.insert((std::string(prefix) + ":" + name).c_str(), Xml::text(field).c_str());
    }
    return list;
}

const xmlNode *officeText(const xmlNode *root)
{
    const xmlNode *body = Xml::child(root, office, "body");
    const xmlNode *text = Xml::child(body, office, "text");
    if (!text)
        throw ReadError(body ? "The document holds no text: it is not a text document."
                             : "The document has no body, so there is no text to read.");
    return text;
}

// A configuration item of the writer's settings (office:settings), by its name.
std::optional<std::string> setting(const xmlNode *node, const char *name)
{
    if (!node)
        return std::nullopt;
    for (const xmlNode *child : Xml::children(node)) {
        if (Xml::is(child, config, "config-item") && Xml::attribute(child, config, "name") == name)
            return Xml::text(child);
        if (auto found = setting(child, name))
            return found;
    }
    return std::nullopt;
}

// What the document asks of the layout as a whole: whether the space below a paragraph and the
// space above the next add up (ODF's way) or only the larger counts (Writer's setting for Word's
// documents).
librevenge::RVNGPropertyList documentLayout(const xmlNode *settingsRoot)
{
    librevenge::RVNGPropertyList list;
    if (setting(Xml::child(settingsRoot, office, "settings"), "AddParaTableSpacing") == "false")
        list.insert("librevenge:paragraph-spacing", "larger");
    return list;
}

void emit(const xmlNode *documentRoot, const xmlNode *metaRoot, const xmlNode *settingsRoot,
          const OdtStyles &styles, librevenge::RVNGTextInterface &sink, OdtContent::PictureSource pictures)
{
    const xmlNode *text = officeText(documentRoot);
    sink.setDocumentMetaData(metadata(Xml::child(metaRoot, office, "meta")));
    sink.startDocument(documentLayout(settingsRoot));
    OdtContent content(styles, sink, std::move(pictures));
    content.body(text);
    sink.endDocument();
}

void readPackage(std::string_view bytes, librevenge::RVNGTextInterface &sink, InflateLimits limits)
{
    auto archive = std::make_shared<ZipArchive>(bytes, limits);
    // An encrypted package's entries are ciphertext; the manifest says so in the clear.
    if (const auto manifest = archive->read("META-INF/manifest.xml");
        manifest && manifest->find("encryption-data") != std::string::npos)
        throw ReadError("The document is protected by a password, and I cannot read encrypted "
                        "OpenDocument files.");
    const std::optional<std::string> contentXml = archive->read("content.xml");
    if (!contentXml)
        throw ReadError("The package has no content.xml, so it holds no document text.");
    const XmlTree content = XmlTree::parse(*contentXml, "content.xml");
    if (!Xml::is(content.root(), office, "document-content"))
        throw ReadError("content.xml is not OpenDocument content.");

    OdtStyles styles;
    std::optional<XmlTree> stylesTree;
    if (const auto stylesXml = archive->read("styles.xml")) {
        stylesTree = XmlTree::parse(*stylesXml, "styles.xml");
        styles.load(stylesTree->root(), OdtStyles::Scope::masterPages);
    }
    styles.load(content.root(), OdtStyles::Scope::body);
    std::optional<XmlTree> metaTree;
    if (const auto metaXml = archive->read("meta.xml")) {
        // Metadata is a nicety: a damaged meta.xml does not stop the document.
        try {
            metaTree = XmlTree::parse(*metaXml, "meta.xml");
        } catch (const ReadError &) {
        }
    }
    std::optional<XmlTree> settingsTree;
    if (const auto settingsXml = archive->read("settings.xml")) {
        // Settings only refine the layout: damaged ones are left out.
        try {
            settingsTree = XmlTree::parse(*settingsXml, "settings.xml");
        } catch (const ReadError &) {
        }
    }
    emit(content.root(), metaTree ? metaTree->root() : nullptr, settingsTree ? settingsTree->root() : nullptr,
         styles, sink, [archive](const std::string &href) -> std::optional<std::string> {
             if (href.find("://") != std::string::npos)
                 return std::nullopt; // pictures outside the package are never fetched
             try {
                 return archive->read(href.rfind("./", 0) == 0 ? href.substr(2) : href);
             } catch (const ReadError &) {
                 return std::nullopt;
             }
         });
}

void readFlat(std::string_view bytes, librevenge::RVNGTextInterface &sink)
{
    const XmlTree document = XmlTree::parse(bytes, "The document");
    if (!Xml::is(document.root(), office, "document"))
        throw ReadError("The XML is not an OpenDocument document.");
    OdtStyles styles;
    styles.load(document.root(), OdtStyles::Scope::body);
    emit(document.root(), document.root(), document.root(), styles, sink,
         [](const std::string &) -> std::optional<std::string> { return std::nullopt; });
}

} // namespace

void OdtReader::read(std::string_view bytes, librevenge::RVNGTextInterface &sink, InflateLimits limits)
{
    if (isZip(bytes))
        readPackage(bytes, sink, limits);
    else if (looksLikeXml(bytes))
        readFlat(bytes, sink);
    else if (bytes.empty())
        throw ReadError("The document is empty.");
    else
        throw ReadError("The document is neither an OpenDocument package nor OpenDocument XML.");
}

} // namespace richtext
