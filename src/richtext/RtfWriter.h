#pragma once

#include "richtext/TextOnlyInterface.h"

#include "ListNumbering.h"
#include "Losses.h"
#include "RtfFormat.h"
#include "RtfLists.h"
#include "RtfOutput.h"
#include "RtfPicture.h"
#include "RtfSections.h"
#include "RtfTable.h"

#include <librevenge/librevenge.h>

#include <memory>
#include <string>
#include <vector>

namespace richtext {

// Writes the callback stream as RTF in the dialect the classic rewriting
// expects: {\rtf1\ansi\ansicpg1252, font, colour and list tables, 8-bit
// characters as \'hh of code page 1252, the rest as \uc1\uN\'3f. The tables
// are only known at the end, so the body is buffered until endDocument.
class RtfWriter : public richtext::TextOnlyInterface {
public:
    // Without a painter, SVG pictures are left out.
    explicit RtfWriter(RtfPicture::SvgPainter painter = {});
    ~RtfWriter() override;

    // The whole document; complete once endDocument has been called.
    const std::string &rtf() const { return document; }
    // What the document held that RTF could not carry: pictures in no format
    // it holds, comments, equations, the grid of tables inside tables.
    const richtext::Losses &losses() const { return lost; }

    void setDocumentMetaData(const librevenge::RVNGPropertyList &propList) override;
    void endDocument() override;
    void openPageSpan(const librevenge::RVNGPropertyList &propList) override;
    void closePageSpan() override;
    void openHeader(const librevenge::RVNGPropertyList &propList) override
    {
        openHeaderOrFooter(propList, false);
    }
    void closeHeader() override { closeHeaderOrFooter(); }
    void openFooter(const librevenge::RVNGPropertyList &propList) override
    {
        openHeaderOrFooter(propList, true);
    }
    void closeFooter() override { closeHeaderOrFooter(); }
    void openParagraph(const librevenge::RVNGPropertyList &propList) override
    {
        beginParagraph(propList, {}, {});
    }
    void closeParagraph() override;
    void openSpan(const librevenge::RVNGPropertyList &propList) override;
    void closeSpan() override;
    void openLink(const librevenge::RVNGPropertyList &propList) override;
    void closeLink() override;
    void openSection(const librevenge::RVNGPropertyList &propList) override;
    void closeSection() override;
    void insertTab() override;
    void insertSpace() override;
    void insertText(const librevenge::RVNGString &text) override;
    void insertLineBreak() override;
    void insertField(const librevenge::RVNGPropertyList &propList) override;
    void openOrderedListLevel(const librevenge::RVNGPropertyList &propList) override
    {
        startListLevel(propList, true);
    }
    void openUnorderedListLevel(const librevenge::RVNGPropertyList &propList) override
    {
        startListLevel(propList, false);
    }
    void closeOrderedListLevel() override { endListLevel(); }
    void closeUnorderedListLevel() override { endListLevel(); }
    void openListElement(const librevenge::RVNGPropertyList &propList) override;
    void openFootnote(const librevenge::RVNGPropertyList &) override { openNote(false); }
    void closeFootnote() override { closeNote(); }
    void openEndnote(const librevenge::RVNGPropertyList &) override { openNote(true); }
    void closeEndnote() override { closeNote(); }
    void openComment(const librevenge::RVNGPropertyList &propList) override;
    void closeComment() override;
    void openTextBox(const librevenge::RVNGPropertyList &propList) override;
    void closeTextBox() override;
    void openTable(const librevenge::RVNGPropertyList &propList) override;
    void openTableRow(const librevenge::RVNGPropertyList &propList) override;
    void closeTableRow() override;
    void openTableCell(const librevenge::RVNGPropertyList &propList) override;
    void closeTableCell() override;
    void insertCoveredTableCell(const librevenge::RVNGPropertyList &propList) override;
    void closeTable() override;
    void openFrame(const librevenge::RVNGPropertyList &propList) override { frame = propList; }
    void closeFrame() override { frame.clear(); }
    void insertBinaryObject(const librevenge::RVNGPropertyList &propList) override;
    void insertEquation(const librevenge::RVNGPropertyList &) override { lost.add(loss::equations); }
    void shapeLost() override { lost.add(loss::drawings); }

private:
    // A stretch of text that holds paragraphs: the body, a header, a note, a cell.
    struct Container {
        enum class Kind { body, header, note, cell, textBox, ignored };
        Kind kind = Kind::body;
        bool paragraphOpen = false;
        bool paragraphEnded = false; // its \par is owed when another paragraph follows
        bool paragraphEmpty = false; // nothing was written into the last paragraph
        int paragraphs = 0;
        bool anyParagraph = false;
        bool anyContent = false; // text, a field, a picture or a table, not empty paragraphs only
        bool noteMark = false;   // the note's own number is still to be written
        bool spanOpen = false;
        bool afterTable = false; // the last thing written here was a table
        int links = 0;           // hyperlink groups open
        int spanLinks = 0;       // links open when the span opened
        // The paragraph's last font and size, which its mark takes: Word makes
        // the last line as tall as the mark, and a line with no text is.
        std::string markFont;
        std::string markSize;
    };
    Container &container();
    void enter(Container::Kind kind);
    void leave();
    bool atTopLevel() const;
    void startSectionIfNeeded(bool textFollows = true);
    void endOwedParagraph();
    void beginParagraph(const librevenge::RVNGPropertyList &propList, const std::string &listWords,
                        const std::string &label);
    // `content`: what follows shows on the page (a span or link alone does not).
    void ensureParagraph(bool content = true);
    void openNote(bool endnote);
    void closeNote();
    void openHeaderOrFooter(const librevenge::RVNGPropertyList &propList, bool footer);
    void closeHeaderOrFooter();
    void closeContainer();
    void startListLevel(const librevenge::RVNGPropertyList &propList, bool ordered);
    librevenge::RVNGPropertyList placing(const librevenge::RVNGPropertyList &frame);
    void endListLevel();

    std::string document;
    std::string metadata;
    RtfOutput output;
    std::vector<Container> containers;
    RtfPalette palette;
    RtfLists lists;
    ListNumbering numbering;
    int currentList = 0;
    std::vector<double> labelWidths;  // per open list level
    std::vector<double> labelIndents; // per open list level, the label's start
    std::vector<std::unique_ptr<RtfTable>> tables;
    int flattenedTables = 0; // tables inside cells, written as plain paragraphs
    RtfSections sections;
    std::vector<librevenge::RVNGPropertyList> openSections;
    bool spanBlank = false;    // nothing has been written into the page span's text yet
    bool inFooter = false;     // the header group being written is a footer's
    bool oddPagesOnly = false; // ...and for the odd pages only
    std::string headerWord;    // ...and its group's word (\headerr, \footerl...)
    bool anyFootnote = false;
    bool anyEndnote = false;
    librevenge::RVNGPropertyList frame;
    RtfPicture::SvgPainter painter;
    Losses lost;
};

} // namespace richtext
