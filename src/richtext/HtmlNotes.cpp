#include "HtmlNotes.h"
#include "XmlTree.h"

#include <cctype>
#include <cstring>

namespace richtext {
namespace {

std::string idOf(const xmlNode *element)
{
    return Xml::plainAttribute(element, "id");
}

bool isLabel(const std::string &label)
{
    if (label.size() < 2 || std::strchr("FECT", label[0]) == nullptr)
        return false;
    for (std::size_t i = 1; i < label.size(); ++i)
        if (!std::isdigit(static_cast<unsigned char>(label[i])))
            return false;
    return true;
}

// The label of the first data mark at or below `node`.
std::string dataLabelWithin(const xmlNode *node, int depth = 0)
{
    if (!node || node->type != XML_ELEMENT_NODE || depth > 4)
        return {};
    if (HtmlNotes::isDataLabel(node))
        return idOf(node).substr(4);
    for (const xmlNode *child = node->children; child; child = child->next)
        if (std::string label = dataLabelWithin(child, depth + 1); !label.empty())
            return label;
    return {};
}

bool isRule(const xmlNode *node)
{
    return node->type == XML_ELEMENT_NODE &&
           std::strcmp(reinterpret_cast<const char *>(node->name), "hr") == 0;
}

} // namespace

bool HtmlNotes::isDataLabel(const xmlNode *element)
{
    const std::string id = idOf(element);
    return id.rfind("data", 0) == 0 && isLabel(id.substr(4));
}

HtmlNotes HtmlNotes::find(const xmlNode *body)
{
    HtmlNotes notes;
    if (!body)
        return notes;
    std::string current;
    for (const xmlNode *node = body->children; node; node = node->next) {
        if (isRule(node)) {
            // A zone starts at a rule whose next element opens a note.
            const xmlNode *next = node->next;
            while (next && next->type != XML_ELEMENT_NODE)
                next = next->next;
            if (!notes.zonesStart && !dataLabelWithin(next).empty())
                notes.zonesStart = node;
            current.clear();
            continue;
        }
        if (!notes.zonesStart)
            continue;
        if (std::string label = dataLabelWithin(node); !label.empty())
            current = label;
        if (!current.empty())
            notes.bodies[current].push_back(node);
    }
    return notes;
}

std::string HtmlNotes::calledLabel(const xmlNode *element) const
{
    const std::string id = idOf(element);
    if (id.rfind("called", 0) != 0)
        return {};
    const std::string label = id.substr(6);
    return bodies.count(label) ? label : std::string();
}

} // namespace richtext
