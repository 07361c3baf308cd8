#include "OdtFile.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>
#include <zip.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <memory>
#include <stdexcept>

namespace {

using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

Document parse(const std::string &xml)
{
    // HUGE: inline pictures make text nodes longer than libxml2 allows by default.
    return {xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "part.xml", nullptr,
                          XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE),
            &xmlFreeDoc};
}

std::string qualifiedName(const xmlNode *node)
{
    std::string local = reinterpret_cast<const char *>(node->name);
    if (!node->ns || !node->ns->prefix)
        return local;
    return reinterpret_cast<const char *>(node->ns->prefix) + (":" + local);
}

std::string take(xmlChar *text)
{
    std::string result = text ? reinterpret_cast<const char *>(text) : "";
    xmlFree(text);
    return result;
}

} // namespace

std::string zipOf(const std::vector<std::pair<std::string, std::string>> &entries, bool compress)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *buffer = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_t *archive = zip_open_from_source(buffer, ZIP_TRUNCATE, &error);
    if (!archive)
        throw std::runtime_error("cannot make a zip archive");
    zip_source_keep(buffer);
    for (const auto &[name, bytes] : entries) {
        zip_source_t *data = zip_source_buffer(archive, bytes.data(), bytes.size(), 0);
        const zip_int64_t index = zip_file_add(archive, name.c_str(), data, ZIP_FL_OVERWRITE);
        if (index < 0)
            throw std::runtime_error("cannot add " + name);
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index),
                                 compress && name != "mimetype" ? ZIP_CM_DEFLATE : ZIP_CM_STORE, 0);
    }
    if (zip_close(archive) != 0)
        throw std::runtime_error("cannot finish the zip archive");
    zip_source_open(buffer);
    zip_source_seek(buffer, 0, SEEK_END);
    const zip_int64_t size = zip_source_tell(buffer);
    zip_source_seek(buffer, 0, SEEK_SET);
    std::string result(static_cast<std::size_t>(size), '\0');
    zip_source_read(buffer, result.data(), static_cast<zip_uint64_t>(size));
    zip_source_close(buffer);
    zip_source_free(buffer);
    return result;
}

std::string odfRoot(const char *element)
{
    return std::string("<office:") + element +
           " xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
           " xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\""
           " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\""
           " xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\""
           " xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\""
           " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\""
           " xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\""
           " xmlns:xlink=\"http://www.w3.org/1999/xlink\""
           " xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
           " xmlns:meta=\"urn:oasis:names:tc:opendocument:xmlns:meta:1.0\""
           " xmlns:loext=\"urn:org:documentfoundation:names:experimental:office:xmlns:loext:1.0\""
           " office:version=\"1.3\"";
}

std::string Odt::flat() const
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + odfRoot("document") +
           " office:mimetype=\"application/vnd.oasis.opendocument.text\"><office:meta>" + meta +
           "</office:meta><office:font-face-decls>" + fontFaces +
           "</office:font-face-decls>"
           "<office:styles>" +
           styles +
           "</office:styles>"
           "<office:automatic-styles>" +
           automaticStyles +
           "</office:automatic-styles>"
           "<office:master-styles>" +
           masterStyles +
           "</office:master-styles>"
           "<office:body><office:text>" +
           body + "</office:text></office:body></office:document>";
}

std::string Odt::contentXml() const
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + odfRoot("document-content") +
           "><office:font-face-decls>" + fontFaces +
           "</office:font-face-decls>"
           "<office:automatic-styles>" +
           automaticStyles +
           "</office:automatic-styles>"
           "<office:body><office:text>" +
           body + "</office:text></office:body></office:document-content>";
}

std::string Odt::stylesXml() const
{
    // Page layouts are automatic styles of styles.xml, beside the master pages that use them.
    std::string layouts;
    for (std::size_t at = 0; (at = automaticStyles.find("<style:page-layout ", at)) != std::string::npos;) {
        const std::size_t end = automaticStyles.find("</style:page-layout>", at) + 20;
        layouts += automaticStyles.substr(at, end - at);
        at = end;
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + odfRoot("document-styles") +
           "><office:font-face-decls>" + fontFaces +
           "</office:font-face-decls>"
           "<office:styles>" +
           styles +
           "</office:styles>"
           "<office:automatic-styles>" +
           layouts +
           "</office:automatic-styles>"
           "<office:master-styles>" +
           masterStyles + "</office:master-styles></office:document-styles>";
}

std::string Odt::package(const std::vector<std::pair<std::string, std::string>> &extra) const
{
    std::vector<std::pair<std::string, std::string>> entries = {
        {"mimetype", "application/vnd.oasis.opendocument.text"},
        {"content.xml", contentXml()},
        {"styles.xml", stylesXml()},
    };
    entries.insert(entries.end(), extra.begin(), extra.end());
    return zipOf(entries);
}

OdtFile OdtFile::package(const std::string &path)
{
    OdtFile file;
    int error = 0;
    zip_t *archive = zip_open(path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &error);
    if (!archive)
        return file;
    file.opened = true;
    for (zip_uint64_t i = 0; file.opened && i < static_cast<zip_uint64_t>(zip_get_num_entries(archive, 0));
         ++i) {
        zip_stat_t stat;
        zip_file_t *entry =
            zip_stat_index(archive, i, 0, &stat) == 0 ? zip_fopen_index(archive, i, 0) : nullptr;
        std::string data(entry ? stat.size : 0, '\0');
        file.opened =
            entry && zip_fread(entry, data.data(), stat.size) == static_cast<zip_int64_t>(stat.size);
        if (entry) {
            zip_fclose(entry);
            file.entryList.push_back({stat.name, stat.comp_method == ZIP_CM_STORE, std::move(data)});
        }
    }
    zip_close(archive);
    return file;
}

bool OdtFile::has(const std::string &name) const
{
    return std::any_of(entryList.begin(), entryList.end(),
                       [&name](const Entry &e) { return e.name == name; });
}

std::string OdtFile::read(const std::string &name) const
{
    for (const Entry &entry : entryList) {
        if (entry.name == name)
            return entry.data;
    }
    return {};
}

bool OdtFile::isWellFormed(const std::string &xml)
{
    return parse(xml) != nullptr;
}

std::vector<std::string> OdtFile::select(const std::string &xml, const std::string &expression)
{
    std::vector<std::string> values;
    Document document = parse(xml);
    if (!document)
        return values;
    std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
        xmlXPathNewContext(document.get()), &xmlXPathFreeContext);
    const char *namespaces[][2] = {{"office", "urn:oasis:names:tc:opendocument:xmlns:office:1.0"},
                                   {"draw", "urn:oasis:names:tc:opendocument:xmlns:drawing:1.0"},
                                   {"text", "urn:oasis:names:tc:opendocument:xmlns:text:1.0"},
                                   {"table", "urn:oasis:names:tc:opendocument:xmlns:table:1.0"},
                                   {"fo", "urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0"},
                                   {"manifest", "urn:oasis:names:tc:opendocument:xmlns:manifest:1.0"},
                                   {"style", "urn:oasis:names:tc:opendocument:xmlns:style:1.0"},
                                   {"config", "urn:oasis:names:tc:opendocument:xmlns:config:1.0"},
                                   {"svg", "urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0"},
                                   {"xlink", "http://www.w3.org/1999/xlink"}};
    for (const auto &[prefix, uri] : namespaces)
        xmlXPathRegisterNs(context.get(), BAD_CAST prefix, BAD_CAST uri);
    std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> result(
        xmlXPathEvalExpression(BAD_CAST expression.c_str(), context.get()), &xmlXPathFreeObject);
    if (!result)
        return values;
    if (result->type != XPATH_NODESET) {
        values.push_back(take(xmlXPathCastToString(result.get())));
    } else if (result->nodesetval) {
        for (int i = 0; i < result->nodesetval->nodeNr; ++i)
            values.push_back(take(xmlNodeGetContent(result->nodesetval->nodeTab[i])));
    }
    return values;
}

std::set<std::string> OdtFile::words(const std::string &xml)
{
    Document document = parse(xml);
    if (!document)
        return {};
    // Spans and links may split a word; every other element (paragraph, tab, note...) separates.
    std::string text;
    const std::function<void(xmlNode *)> collect = [&](xmlNode *node) {
        for (xmlNode *child = node->children; child; child = child->next) {
            if (child->type == XML_TEXT_NODE) {
                text += reinterpret_cast<const char *>(child->content);
            } else if (child->type == XML_ELEMENT_NODE) {
                const std::string name = qualifiedName(child);
                const bool joins = name == "text:span" || name == "text:a";
                if (name == "office:binary-data")
                    continue;
                text += joins ? "" : " ";
                collect(child);
                text += joins ? "" : " ";
            }
        }
    };
    collect(xmlDocGetRootElement(document.get()));
    return wordsOfPlainText(text);
}

std::set<std::string> OdtFile::wordsOfPlainText(const std::string &text)
{
    // Letters only: numbers of lists and notes are made up by each reader in its own way, and
    // Latin-1 symbols (C2 xx) and general punctuation (E2 80 xx, E2 81 xx) separate words.
    std::set<std::string> words;
    std::string word;
    for (size_t i = 0; i <= text.size();) {
        const auto byte = i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
        const size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        const bool punctuation = byte == 0xC2 || (byte == 0xE2 && i + 1 < text.size() &&
                                                  (static_cast<unsigned char>(text[i + 1]) & 0xFE) == 0x80);
        if (std::isalpha(byte) || (byte >= 0xC0 && !punctuation)) {
            word += text.substr(i, length);
        } else if (!word.empty()) {
            words.insert(word);
            word.clear();
        }
        i += length;
    }
    return words;
}

bool OdtFile::hasWord(const std::set<std::string> &words, const std::string &word)
{
    if (words.count(word))
        return true;
    // wpd2text runs the text of consecutive list items together ("and" + "to" = "andto").
    for (size_t cut = 1; cut < word.size(); ++cut) {
        if (words.count(word.substr(0, cut)) && words.count(word.substr(cut)))
            return true;
    }
    return false;
}
