#include "EvenPageHeaders.h"

#include <string_view>

void EvenPageHeaders::release(bool twinFollows)
{
    if (!held)
        return;
    const Held out = *held;
    held.reset();
    next.startElement(out.name.c_str(), out.attributes);
    if (!out.ended)
        return;
    if (twinFollows) {
        next.startElement("text:p", {});
        next.endElement("text:p");
    }
    next.endElement(out.name.c_str());
}

void EvenPageHeaders::startElement(const char *name, const librevenge::RVNGPropertyList &attributes)
{
    const std::string_view element(name);
    release(held && held->ended && element == held->name + "-left");
    if (element == "style:header" || element == "style:footer") {
        held = Held{name, attributes};
        return;
    }
    next.startElement(name, attributes);
}

void EvenPageHeaders::endElement(const char *name)
{
    if (held && !held->ended && held->name == name) {
        held->ended = true;
        return;
    }
    release(false);
    next.endElement(name);
}

void EvenPageHeaders::characters(const librevenge::RVNGString &text)
{
    release(false);
    next.characters(text);
}

void EvenPageHeaders::endDocument()
{
    release(false);
    next.endDocument();
}
