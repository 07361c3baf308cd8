#pragma once

#include "richtext/TextOnlyInterface.h"

#include "richtext/ListNumbering.h"
#include "richtext/Losses.h"

#include <librevenge/librevenge.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace richtext::wordperfect {

// WordPerfect attribute numbers, the same in 5.1 and 6.
enum Attribute : int {
    superscript = 5,
    subscript = 6,
    outline = 7,
    italic = 8,
    shadow = 9,
    doubleUnderline = 0x0B,
    bold = 0x0C,
    strikeout = 0x0D,
    underline = 0x0E,
    smallCaps = 0x0F,
};

struct CharacterFormat {
    std::uint32_t attributes = 0;           // bit n = attribute n
    std::string font;                       // empty: not chosen yet
    int size = 0;                           // 1/50 point; 0: not chosen yet
    std::uint32_t colour = 0;               // 0xRRGGBB
    std::optional<std::uint32_t> highlight; // 0xRRGGBB behind the text
    bool capitals = false; // lower case shown as upper: WordPerfect has no code, the letters change
    bool operator==(const CharacterFormat &) const = default;
};

struct TabStop {
    int position = 0; // WPU from the left margin
    int kind = 0;     // 0 left, 1 centre, 2 right, 3 decimal
    bool dotLeader = false;
    bool operator==(const TabStop &) const = default;
};

struct ParagraphFormat {
    int justification = 0; // 0 left, 1 full, 2 centre, 3 right
    int leftIndent = 0;    // WPU, from the page margin
    int rightIndent = 0;
    int firstLine = 0;         // WPU, relative to leftIndent
    int lineSpacing = 0x10000; // 16.16
    std::vector<TabStop> tabs;
    int tabSpacing = 0; // WPU between the stops a tab goes to past the set ones; 0: WordPerfect's own
    bool operator==(const ParagraphFormat &) const = default;
};

// Newspaper columns: a count of 1 is none. Balanced ones end level where their text ends, as a
// section's columns do in Word and LibreOffice; a page style's fill each column in turn.
struct TextColumns {
    int count = 1;
    int gap = 600; // WPU
    bool balanced = false;
    bool operator==(const TextColumns &) const = default;
};

struct PageSetup {
    int width = 10200, height = 13200; // WPU (US Letter)
    int top = 1200, bottom = 1200, left = 1200, right = 1200;
};

// What the document's metadata says, as WordPerfect's document summary holds it.
struct DocumentSummary {
    std::string title, author, subject, description, keywords;
    bool empty() const
    {
        return title.empty() && author.empty() && subject.empty() && description.empty() && keywords.empty();
    }
};

struct Raster;
class CharacterMap;

// Where a box stands: in the line like a character, or at an offset from its paragraph or page.
struct BoxPlacement {
    enum class Anchor { character, paragraph, page } anchor = Anchor::character;
    int x = 0; // WPU: from the left margin (paragraph), or from the paper's left edge (page)
    int y = 0; // WPU: from the paragraph's top, or from the paper's top edge
    bool centred = false;
    // A box that stands in its own line (character-anchored) but lay this far below its
    // paragraph's top: the line moves down as far.
    int drop = 0; // WPU
};

struct CellShape {
    int column = 0;
    int columnSpan = 1;
    int rowSpan = 1;
    bool coveredFromAbove = false;
    int borders = 0;                         // bit 0 left, 1 right, 2 top, 3 bottom: lines are drawn
    int doubleLines = 0;                     // the same bits: the line is double
    std::optional<std::uint32_t> fill;       // 0xRRGGBB background
    std::optional<std::uint32_t> lineColour; // 0xRRGGBB, of all its lines
    int verticalAlign = 0;                   // 0 top, 1 middle, 2 bottom
    // Of the row a row's first cell opens: its height in WPU (0: as its text needs), whether that is
    // the least it takes, and whether it repeats at the top of each page.
    int rowHeight = 0;
    bool rowAtLeast = true;
    bool headerRow = false;
};

// librevenge's text callbacks written as a WordPerfect document. Everything is buffered; the file
// is complete after endDocument(), when the prefix (font lists, note bodies) is known.
class WordPerfectWriter : public richtext::TextOnlyInterface {
public:
    enum class Version { wp5, wp6 };
    static std::unique_ptr<WordPerfectWriter> create(Version version);
    ~WordPerfectWriter() override;

    // The whole file; empty before endDocument().
    const std::string &fileBytes() const { return file; }
    // What the file could not carry, or carries only in another form.
    const richtext::Losses &losses() const { return lost; }

    void setDocumentMetaData(const librevenge::RVNGPropertyList &propList) override;
    void startDocument(const librevenge::RVNGPropertyList &propList) override;
    void endDocument() override;
    void openPageSpan(const librevenge::RVNGPropertyList &propList) override;
    void closePageSpan() override {}
    void openHeader(const librevenge::RVNGPropertyList &propList) override;
    void closeHeader() override;
    void openFooter(const librevenge::RVNGPropertyList &propList) override;
    void closeFooter() override;
    void openParagraph(const librevenge::RVNGPropertyList &propList) override;
    void closeParagraph() override;
    void openSpan(const librevenge::RVNGPropertyList &propList) override;
    void closeSpan() override;
    void openLink(const librevenge::RVNGPropertyList &) override {}
    void closeLink() override {}
    void openSection(const librevenge::RVNGPropertyList &propList) override;
    void closeSection() override;
    void insertTab() override;
    void insertSpace() override;
    void insertText(const librevenge::RVNGString &text) override;
    void insertLineBreak() override;
    void insertField(const librevenge::RVNGPropertyList &propList) override;
    void openOrderedListLevel(const librevenge::RVNGPropertyList &propList) override;
    void openUnorderedListLevel(const librevenge::RVNGPropertyList &propList) override;
    void closeOrderedListLevel() override;
    void closeUnorderedListLevel() override;
    void openListElement(const librevenge::RVNGPropertyList &propList) override;
    void openFootnote(const librevenge::RVNGPropertyList &propList) override;
    void closeFootnote() override;
    void openEndnote(const librevenge::RVNGPropertyList &propList) override;
    void closeEndnote() override;
    void openComment(const librevenge::RVNGPropertyList &) override;
    void closeComment() override;
    void openTextBox(const librevenge::RVNGPropertyList &) override;
    void closeTextBox() override;
    void openTable(const librevenge::RVNGPropertyList &propList) override;
    void openTableRow(const librevenge::RVNGPropertyList &propList) override;
    void closeTableRow() override {}
    void openTableCell(const librevenge::RVNGPropertyList &propList) override;
    void closeTableCell() override;
    void insertCoveredTableCell(const librevenge::RVNGPropertyList &propList) override;
    void closeTable() override;
    void openFrame(const librevenge::RVNGPropertyList &propList) override;
    void closeFrame() override;
    void insertBinaryObject(const librevenge::RVNGPropertyList &propList) override;
    void insertEquation(const librevenge::RVNGPropertyList &) override {}

protected:
    WordPerfectWriter();

    // The bytes of the text being written now: the document, or a note, header or footer body.
    std::string &out() { return streams.back().bytes; }
    const PageSetup &pageSetup() const { return page; }
    // Writing a note, header or footer body rather than the document's own text.
    bool inSubDocument() const { return streams.back().subDocument; }
    // Writing a table's cells (or a table flattened into one of them).
    bool inTable() const { return !tables.empty(); }
    // Writing the cells of a table that stands in the text, not in another table's cell.
    bool inCellStream() const
    {
        return tables.size() == 1 && tables.back().stream == streams.size() && !tables.back().degraded &&
               !tables.back().cells.empty();
    }
    const DocumentSummary &summary() const { return documentSummary; }
    // WordPerfect's own tab stops, every half inch from the paper's edge across the page, measured
    // from the margin.
    static constexpr int defaultTabSpacing = 600;
    std::vector<TabStop> defaultTabStops(const ParagraphFormat &format) const;
    // Where a paragraph's tab stop positions are measured from, on the paper.
    virtual int tabOrigin(const ParagraphFormat &) const { return page.left; }

    // What each version writes; every one appends to out().
    // The codes of one byte, where the versions differ only in its value.
    struct OneByteCodes {
        unsigned char space;
        unsigned char hardSpace;  // a space no line ends at
        unsigned char softHyphen; // a hyphen shown only where a line breaks
        unsigned char hardHyphen; // a hyphen no line ends at
        unsigned char hardReturn;
        unsigned char pageBreak;
    };
    virtual const OneByteCodes &oneByteCodes() const = 0;
    void writeAscii(char c) { out() += c; } // 0x21..0x7E, the same in both versions
    void writeSpace() { out() += static_cast<char>(oneByteCodes().space); }
    void writeHardSpace() { out() += static_cast<char>(oneByteCodes().hardSpace); }
    void writeSoftHyphen() { out() += static_cast<char>(oneByteCodes().softHyphen); }
    void writeHardHyphen() { out() += static_cast<char>(oneByteCodes().hardHyphen); }
    void writeHardReturn() { out() += static_cast<char>(oneByteCodes().hardReturn); }
    virtual bool writeCharacter(std::u32string_view text, std::size_t &used) = 0; // false: no pair
    virtual const CharacterMap &characters() const = 0;
    // A private-use bullet glyph of an unknown symbol font, or an ornament the version has no
    // code for, written as the nearest character it has.
    bool writeSymbolFontCharacter(char32_t c);
    bool writeOtherWidth(char32_t c);
    bool writeAsKatakana(char32_t c);
    virtual void writeLineBreak() = 0;
    // A tab to `stop`, whose position is measured from the paper's left edge.
    virtual void writeTab(const TabStop &stop) = 0;
    virtual void writeAttribute(int attribute, bool on) = 0;
    virtual void writeFont(const CharacterFormat &format) = 0;
    virtual void writeColour(std::uint32_t rgb) = 0;
    // A colour behind the text, where the version has one (6); 5.1 has none.
    virtual void writeHighlight(std::optional<std::uint32_t> rgb) { (void)rgb; }
    virtual bool writesHighlight() const { return false; }
    virtual void writeParagraphFormat(const ParagraphFormat &from, const ParagraphFormat &to) = 0;
    // The space after each paragraph from here on, in WPU; only where the version has a code
    // libwpd reads.
    virtual bool writesParagraphSpacing() const { return false; }
    // Cells show their fill colour where the version has a code libwpd reads.
    virtual bool writesCellFills() const { return true; }
    // Cells show only the lines they have, where the version has a code libwpd reads.
    virtual bool writesCellBorders() const { return true; }
    virtual void writeParagraphSpacing(int) {}
    // At the start of every paragraph, after its format: for what a format holds only per paragraph.
    virtual void writeParagraphStart(const ParagraphFormat &) {}
    virtual void writePageSetup() = 0;
    // The page's left and right margins again: readers lay a header, footer or note out from their
    // own default margins unless its text sets the page's.
    virtual void writeSideMargins() = 0;
    // Columns from here on (count 1: columns off), and a break to the next column.
    virtual void writeColumns(const TextColumns &columns) = 0;
    virtual void writeColumnBreak() = 0;
    virtual void writePageBreak() { out() += static_cast<char>(oneByteCodes().pageBreak); }
    // `position`: 0 at the left margin, 1 at the right, 2 centred, 4 `leftOffset` WPU from the paper's edge;
    // `rows`: every row's cells as writeCell will be given them.
    virtual void writeTableStart(const std::vector<int> &widths, int position, int leftOffset,
                                 const std::vector<std::vector<CellShape>> &rows) = 0;
    virtual void writeCell(const CellShape &cell, bool firstInRow) = 0;
    virtual void writeTableEnd() = 0;
    // `mark` is the note's own citation when it is one character that is not a number ("*").
    virtual void writeNote(bool endnote, int number, const std::string &body, char mark) = 0;
    virtual void writeHeaderFooter(bool footer, const std::string &occurrence, const std::string &body) = 0;
    virtual void writePageNumber() = 0;
    // The count of pages; `shown` is the count the document last showed, for a version without
    // a code for it that readers take.
    virtual void writePageCount(const std::string &shown);
    // A picture in a character-anchored graphics box of widthWpu x heightWpu.
    virtual void writeImage(const Raster &raster, int widthWpu, int heightWpu) = 0;
    // A text box holding `body`, where the format has one that libwpd reads, placed as
    // boxPlacement() says.
    virtual bool writesTextBoxes() const { return false; }
    const BoxPlacement &boxPlacement() const { return placement; }
    virtual void writeTextBox(const std::string &, int, int) {}
    virtual std::string assemble(const std::string &document) = 0;
    // The version has no code libwpd reads for something the document holds.
    void lose(std::string_view kind) { lost.add(kind); }
    void shapeLost() override { lose(loss::drawings); }

private:
    struct Stream {
        std::string bytes;
        CharacterFormat written;        // what the codes so far leave in force
        CharacterFormat wanted;         // what the next text should have
        ParagraphFormat paragraph;      // in force
        int pendingReturns = 0;         // paragraph ends not yet written
        bool started = false;           // anything written yet
        bool subDocument = false;       // a note, header or footer body
        std::vector<std::string> boxes; // text boxes anchored in the open paragraph
        std::vector<int> boxDrops;      // how far below the paragraph's top each stood, WPU
        int boxesBeside = 0;            // WPU, about, of their text that stood beside the text
        // Where the line's text stands, as far as tabs need to know: the last tab's stop (from the
        // paper's edge) and alignment, or the line's start, and the characters written since.
        int lineAt = 0;
        int lineAlignment = 0;
        int lineCharacters = 0;
        // A paragraph's opening codes wait for its first content: an empty paragraph needs none,
        // and a line of nothing but a tab is one readers take for damage.
        std::optional<ParagraphFormat> pendingStart;
        // A list item's label waits for the item's first text, whose font it takes.
        std::string pendingLabel;
        bool pendingPicture = false; // the label is the level's picture bullet
        std::u32string pendingBlanks;
        CharacterFormat blanksFormat; // what the first of them was written in
        // The space between the last paragraph and the next is known only when the next opens:
        // the code goes back to where the last one started. What libwpd has in force, WPU.
        std::optional<std::size_t> spacingAt;
        int spacingBelow = 0;
        int spacingAbove = 0;
        bool spacingListItem = false;
        int spacingInForce = 0;
        int lastBelow = 0; // the space below the paragraph last opened, WPU
        // 5.1: WPU of spaces too small for a blank line of their own, not yet written.
        int spacingOwed = 0;
        bool joinCell = false;         // the next paragraph opens a flattened table's next cell in the row
        bool centreLines = false;      // a centred box as wide as its text: its lines stand centred
        bool joinedLine = false;       // on such a row's line: an empty cell's tab still counts
        bool content = false;          // any text, picture, note or field written
        bool paragraphContent = false; // the same, in the open paragraph
        int lineHeights = 0;           // WPU, about: a line per paragraph at its font's size
        int paragraphCharacters = 0;   // in the open paragraph, for the lines it wraps into
        bool lineAfterPicture = false; // a picture with no text beside it: the text goes below
    };
    // A stretch of one cell's text in the table's stream, with what was in force at either end:
    // the cells go out at the table's end, not always in the order they came.
    struct TablePart {
        std::size_t begin = 0, end = 0;
        CharacterFormat before, after;
        int spacingBefore = 0, spacingAfter = 0;
        bool content = false; // any text, picture, note or field
        bool open = false;
        bool contentAround = false; // the stream's, before it began
        // Where its text ends, before the codes that put the paragraph format back, and the format
        // those codes leave: readers end a paragraph at a change of alignment.
        std::size_t textEnd = std::string::npos;
        ParagraphFormat paragraphAtEnd;
    };
    struct RecordedCell {
        CellShape shape;
        int row = 0;
        int padding = 0;                 // WPU, from its left edge to its text and the tables it holds
        TablePart text;                  // before the first table it holds, when it holds any
        std::vector<std::size_t> inners; // the tables it holds, indexes into the outer table's `inner`
        std::vector<TablePart> afters;   // the text after each of them
    };
    struct OpenTable {
        std::vector<int> widths; // WPU per column
        int position = 0;        // as writeTableStart takes it
        int leftOffset = 0;
        int marginLeft = 0; // WPU, of a table inside a cell: from the cell's edge
        std::vector<RecordedCell> cells;
        std::vector<OpenTable> inner; // tables inside its cells, merged into its grid at the end
        bool nested = false;          // such a table, while open
        std::size_t stream = 0;       // the depth of the stream its cells are written in
        int row = -1;
        int column = 0;
        int horizontalCover = 0;
        bool firstInRow = true;
        int rowHeight = 0;
        bool rowAtLeast = true;
        bool headerRow = false;
        bool degraded = false; // nested: a paragraph per row, its cells apart by tabs
    };

    void placeTable(OpenTable &table, const librevenge::RVNGPropertyList &propList) const;
    bool nestsInGrid() const;
    void startPart(TablePart &part);
    void finishPart(TablePart &part);
    void writePart(const TablePart &part, const std::string &body, CharacterFormat &format, int &spacing);
    // A cell as written: where it stands on the table's grid, and its text (none for room).
    struct GridCell {
        int row = 0, column = 0, rowSpan = 1, columnSpan = 1;
        CellShape shape;
        std::vector<const TablePart *> texts;
    };
    struct TableGrid {
        std::vector<int> widths; // WPU per column
        int rows = 0;
        std::vector<GridCell> cells; // row by row, left to right
        bool joined = false;         // a table inside had to become paragraphs of its cell
    };
    TableGrid gridOf(const OpenTable &table) const;
    bool unboxLineless(const OpenTable &table, const std::string &body, TableGrid &grid, int &position,
                       int &leftOffset);
    void writeTable(const OpenTable &table, const std::string &body);
    void startParagraph(const librevenge::RVNGPropertyList &propList, const std::string &label,
                        bool listItem = false);
    void flushReturns();
    // between: the next paragraph follows now (not a table, page break or the end).
    void settleSpacing(int above, bool listItem = false, bool between = false);
    void breakPage();
    void breakColumn();
    void setColumns(const TextColumns &columns);
    void setPageColumns(const librevenge::RVNGPropertyList &propList);
    void applyCharacterFormat();
    void closeAttributes();
    void resetParagraphFormat();
    void openListLevel(const librevenge::RVNGPropertyList &propList, bool ordered);
    void closeListLevel();
    void endContainer();
    void pushStream(bool subDocument);
    std::string popStream(bool separateText = true);
    void openNote(const librevenge::RVNGPropertyList &propList);
    void closeNote(bool endnote);
    void openHeaderFooter(const librevenge::RVNGPropertyList &propList, bool footer);
    void closeHeaderFooter(bool footer);
    void text(std::u32string_view text);
    void startLine(int at);
    void writePendingLabel();
    void beginContent();
    void endLine();
    void tab();
    void beginCell(const CellShape &cell);
    std::vector<int> columnWidths(const librevenge::RVNGPropertyList &propList) const;
    void endCell();

    std::vector<Stream> streams;
    std::vector<OpenTable> tables;
    std::vector<std::string> headerOccurrence;
    // Per open header or footer, WPU: the least height its area takes, and the room between it and
    // the text (already part of that height when the room shrinks as the header grows, as in Word).
    struct HeaderRoom {
        int minimum = 0;
        int spacing = 0;
        bool spacingInMinimum = false;
        std::size_t start = 0; // where its text starts, after the margins
    };
    std::vector<HeaderRoom> headerRooms;
    // Per kind (header, footer), the one for the first page only: WordPerfect's own for every page
    // at the document's start, which the regular ones of the first page style replace on the page
    // after the first hard page break, where the source's first page ends.
    struct FirstPageOnly {
        std::string body;                                         // empty: none
        std::size_t from = 0, to = 0;                             // its codes in the main text
        std::vector<std::pair<std::string, std::string>> regular; // occurrence and body, to follow
    };
    FirstPageOnly firstPageOnly[2];
    bool firstPageEnded = false;
    void endFirstPage(bool atBreak);
    bool paragraphOpensPage = false; // the open paragraph of the main text starts a page
    bool rightToLeft = false;        // the paragraph being written reads from the right
    void writeBlankLine(int height, bool closing);
    ListNumbering numbering;
    std::vector<std::pair<int, int>> listIndents; // per open level: text indent and label width, WPU
    // A level's picture bullet, decoded once for all its items; none where it has none, or where
    // the picture cannot be read (its bullet character stands in).
    struct BulletPicture {
        std::shared_ptr<const Raster> raster;
        int width = 0, height = 0; // WPU
    };
    std::vector<BulletPicture> listPictures; // per open level
    PageSetup page;
    bool pageSetupKnown = false;
    bool pageJustBroken = false;             // a new page span wrote the break its first paragraph asks for
    std::vector<TextColumns> sectionColumns; // per open section: the columns it sets its text in
    TextColumns pageColumns;                 // the page style's own, outside any section
    const TextColumns &columnsInForce() const
    {
        return sectionColumns.empty() ? pageColumns : sectionColumns.back();
    }
    int footnotes = 0;
    int endnotes = 0;
    int hidden = 0; // inside a comment: nothing is written
    int boxDepth = 0;
    std::vector<std::optional<std::pair<double, double>>> boxSizes; // of each open text box's frame
    std::vector<BoxPlacement> boxPlacements;                        // the same, where it stands
    BoxPlacement framePlacement;                                    // of the open frame
    BoxPlacement placement;                                         // of the box being written
    // Between two paragraphs only the larger of their spaces counts, not both (Word's documents).
    bool largerSpacingOnly = false;
    richtext::Losses lost;
    std::vector<char> noteMarks;
    std::optional<std::pair<double, double>> frameSize; // inches, of the open frame
    bool frameCentred = false;
    bool frameAlone = false; // no text beside the frame: its picture stands in a line of its own
    DocumentSummary documentSummary;
    std::string file;
};

} // namespace richtext::wordperfect
