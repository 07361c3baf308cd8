#pragma once

#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

// A whole document in memory, as the ModelBuilder collects it from the
// callbacks. Properties keep librevenge's ODF names and its text values
// ("fo:font-weight" = "bold", "fo:margin-left" = "0.5000in").
namespace richtext {

using Properties = std::map<std::string, std::string>;

struct Block;
using Blocks = std::vector<Block>;

// One piece of a paragraph, with the character formatting of its span.
struct Inline {
    enum class Kind { text, tab, lineBreak, field, footnote, endnote, comment, image, textBox, equation };

    Kind kind = Kind::text;
    std::string text;                // UTF-8 for text; the field type for fields
    Properties style;                // the span's properties
    std::string link;                // the hyperlink target when inside a link
    Properties object;               // field, note, frame or image properties
    std::string data;                // an image's bytes
    std::shared_ptr<Blocks> content; // a note's, comment's or text box's paragraphs
};

struct Paragraph {
    Properties properties;
    int listLevel = 0; // 1 for the outermost list; 0 outside lists
    bool ordered = false;
    std::string label; // "1.", "b)", a bullet; empty outside lists
    std::vector<Inline> content;

    // The text with tabs as '\t' and line breaks as '\n'; notes and boxes left out.
    std::string text() const;
};

struct Cell {
    Properties properties;
    int column = 0;
    int row = 0;
    int columnSpan = 1;
    int rowSpan = 1;
    bool covered = false; // hidden under a spanning neighbour
    Blocks blocks;
};

struct Row {
    Properties properties;
    std::vector<Cell> cells;
};

struct Table {
    Properties properties;
    std::vector<double> columnWidths; // inches; empty when the table gave none
    std::vector<Row> rows;

    int columnCount() const;
};

struct Block {
    std::variant<Paragraph, Table> value;

    const Paragraph *paragraph() const { return std::get_if<Paragraph>(&value); }
    const Table *table() const { return std::get_if<Table>(&value); }
};

struct HeaderFooter {
    bool footer = false;
    std::string occurrence; // "all", "odd", "even", "first"
    Properties properties;
    Blocks blocks;
};

struct PageSpan {
    Properties properties; // page size and margins
    std::vector<HeaderFooter> headersAndFooters;
    std::vector<Properties> sections; // opened inside this span (columns and the like)
    Blocks blocks;
};

struct Document {
    Properties metadata;
    std::vector<PageSpan> pageSpans;

    // Every paragraph of the main text in reading order, those in table cells included;
    // notes, headers, footers and text boxes are not main text.
    std::vector<const Paragraph *> paragraphs() const;
    // Every table of the main text, outer before inner.
    std::vector<const Table *> tables() const;
    // The notes anchored in the main text.
    std::vector<const Inline *> notes(Inline::Kind kind) const;
    // The main text as lines: one per paragraph.
    std::string plainText() const;
};

} // namespace richtext
