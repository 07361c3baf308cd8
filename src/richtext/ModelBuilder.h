#pragma once

#include "richtext/TextOnlyInterface.h"

#include "Document.h"
#include "ListNumbering.h"

#include <librevenge/librevenge.h>

#include <vector>

namespace richtext {

// Collects a whole callback stream into a Document. Tolerant of streams that
// skip steps (text before any page span or paragraph): it opens what is missing.
class ModelBuilder : public richtext::TextOnlyInterface {
public:
    ModelBuilder();

    const Document &document() const { return result; }

    // Every property as its text, child lists flattened as "name/0/key".
    static Properties propertiesOf(const librevenge::RVNGPropertyList &list);

    void setDocumentMetaData(const librevenge::RVNGPropertyList &propList) override;
    void endDocument() override {}
    void openPageSpan(const librevenge::RVNGPropertyList &propList) override;
    void closePageSpan() override {}
    void openHeader(const librevenge::RVNGPropertyList &propList) override;
    void closeHeader() override { leave(); }
    void openFooter(const librevenge::RVNGPropertyList &propList) override;
    void closeFooter() override { leave(); }
    void openParagraph(const librevenge::RVNGPropertyList &propList) override;
    void closeParagraph() override;
    void openSpan(const librevenge::RVNGPropertyList &propList) override;
    void closeSpan() override;
    void openLink(const librevenge::RVNGPropertyList &propList) override;
    void closeLink() override;
    void openSection(const librevenge::RVNGPropertyList &propList) override;
    void closeSection() override {}
    void insertTab() override;
    void insertSpace() override;
    void insertText(const librevenge::RVNGString &text) override;
    void insertLineBreak() override;
    void insertField(const librevenge::RVNGPropertyList &propList) override;
    void openOrderedListLevel(const librevenge::RVNGPropertyList &propList) override;
    void openUnorderedListLevel(const librevenge::RVNGPropertyList &propList) override;
    void closeOrderedListLevel() override { numbering.closeLevel(); }
    void closeUnorderedListLevel() override { numbering.closeLevel(); }
    void openListElement(const librevenge::RVNGPropertyList &propList) override;
    void openFootnote(const librevenge::RVNGPropertyList &propList) override;
    void closeFootnote() override { leave(); }
    void openEndnote(const librevenge::RVNGPropertyList &propList) override;
    void closeEndnote() override { leave(); }
    void openComment(const librevenge::RVNGPropertyList &propList) override;
    void closeComment() override { leave(); }
    void openTextBox(const librevenge::RVNGPropertyList &propList) override;
    void closeTextBox() override { leave(); }
    void openTable(const librevenge::RVNGPropertyList &propList) override;
    void openTableRow(const librevenge::RVNGPropertyList &propList) override;
    void closeTableRow() override {}
    void openTableCell(const librevenge::RVNGPropertyList &propList) override;
    void closeTableCell() override { leave(); }
    void insertCoveredTableCell(const librevenge::RVNGPropertyList &propList) override;
    void closeTable() override;
    void openFrame(const librevenge::RVNGPropertyList &propList) override;
    void closeFrame() override { frame.clear(); }
    void insertBinaryObject(const librevenge::RVNGPropertyList &propList) override;
    void insertEquation(const librevenge::RVNGPropertyList &propList) override;

private:
    // Where content goes now: a page span's body, a header, a cell, a note...
    struct Place {
        Blocks *blocks = nullptr;
        Paragraph *paragraph = nullptr;
        Properties span;
        std::string link;
    };
    struct OpenTable {
        Table *table = nullptr;
        int nextColumn = 0;
        int horizontallyCovered = 0;
    };

    Place &place();
    Blocks &blocks();
    Paragraph &paragraph();
    void enter(Blocks &blocks);
    void leave();
    void openAnyParagraph(const librevenge::RVNGPropertyList &propList, int listLevel);
    Inline &append(Inline::Kind kind);
    Inline &appendObject(Inline::Kind kind, const librevenge::RVNGPropertyList &propList);

    Document result;
    std::vector<Place> places;
    std::vector<OpenTable> tables;
    ListNumbering numbering;
    Properties frame;
};

} // namespace richtext
