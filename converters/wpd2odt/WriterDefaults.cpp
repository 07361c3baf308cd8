#include "WriterDefaults.h"

#include <string_view>

namespace {

constexpr std::string_view defaultStyle = "style:default-style";
constexpr std::string_view textProperties = "style:text-properties";
constexpr const char *kerning = "style:letter-kerning";

} // namespace

void WriterDefaults::startElement(const char *name, const librevenge::RVNGPropertyList &attributes)
{
    const std::string_view element(name);
    if (element == defaultStyle) {
        const librevenge::RVNGProperty *family = attributes["style:family"];
        inParagraphDefaults = family && family->getStr() == "paragraph";
        sawTextProperties = false;
    } else if (inParagraphDefaults && element == textProperties) {
        sawTextProperties = true;
        if (!attributes[kerning]) {
            librevenge::RVNGPropertyList kerned(attributes);
            kerned.insert(kerning, true);
            next.startElement(name, kerned);
            return;
        }
    }
    next.startElement(name, attributes);
}

void WriterDefaults::endElement(const char *name)
{
    if (inParagraphDefaults && std::string_view(name) == defaultStyle) {
        if (!sawTextProperties) {
            librevenge::RVNGPropertyList kerned;
            kerned.insert(kerning, true);
            next.startElement(textProperties.data(), kerned);
            next.endElement(textProperties.data());
        }
        inParagraphDefaults = false;
    }
    next.endElement(name);
}

const char *WriterDefaults::settingsXml()
{
    // The values LibreOffice gives a document it creates; each one named here is one it would
    // otherwise set to its legacy value on loading (AddParaSpacingToTableCells, for one, drops the
    // space below paragraphs in table cells; DoNotJustifyLinesWithManualBreak leaves justified
    // lines that end in a line break ragged). One setting a line:
    // clang-format off
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<office:document-settings xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
           " xmlns:config=\"urn:oasis:names:tc:opendocument:xmlns:config:1.0\" office:version=\"1.1\">"
           "<office:settings><config:config-item-set config:name=\"ooo:configuration-settings\">"
           "<config:config-item config:name=\"PrinterIndependentLayout\" config:type=\"string\">"
           "high-resolution</config:config-item>"
#define QM_SETTING(name, value)                                                                              \
    "<config:config-item config:name=\"" name "\" config:type=\"boolean\">" value "</config:config-item>"
           QM_SETTING("AddExternalLeading", "true")
           QM_SETTING("UseFormerLineSpacing", "false")
           QM_SETTING("UseFormerObjectPositioning", "false")
           QM_SETTING("UseFormerTextWrapping", "false")
           QM_SETTING("UseOldNumbering", "false")
           QM_SETTING("AddParaSpacingToTableCells", "true")
           QM_SETTING("AddParaLineSpacingToTableCells", "true")
           QM_SETTING("AddParaTableSpacing", "true")
           QM_SETTING("AddParaTableSpacingAtStart", "true")
           QM_SETTING("ConsiderTextWrapOnObjPos", "false")
           QM_SETTING("IgnoreFirstLineIndentInNumbering", "false")
           QM_SETTING("DoNotJustifyLinesWithManualBreak", "false")
           QM_SETTING("DoNotResetParaAttrsForNumFont", "false")
           QM_SETTING("DoNotCaptureDrawObjsOnPage", "false")
           QM_SETTING("ClipAsCharacterAnchoredWriterFlyFrames", "false")
           QM_SETTING("UnxForceZeroExtLeading", "false")
           QM_SETTING("SmallCapsPercentage66", "false")
           QM_SETTING("TabOverflow", "true")
           QM_SETTING("TabsRelativeToIndent", "true")
           QM_SETTING("PropLineSpacingShrinksFirstLine", "true")
           QM_SETTING("SubtractFlysAnchoredAtFlys", "false")
           QM_SETTING("CollapseEmptyCellPara", "true")
           QM_SETTING("AutoFirstLineIndentDisregardLineSpace", "true")
           QM_SETTING("DropCapPunctuation", "true")
#undef QM_SETTING
           "</config:config-item-set></office:settings></office:document-settings>\n";
    // clang-format on
}
