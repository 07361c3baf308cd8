#pragma once

#include "richtext/Losses.h"

#include <libodfgen/libodfgen.hxx>

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

// Places WordPerfect 5 figure boxes where WordPerfect put them, and gives 5.1 table cells the
// lines and shading WordPerfect drew.
//
// For a box anchored to a paragraph libwpd reads the box's vertical position codes as if the box
// were anchored to the page: most become "full page" (the whole text area high, centred on it),
// and it adds WordPerfect's own left edge of the box to the position it derives from the box's
// alignment, which puts right-aligned and centred boxes beside or off the page. The box record
// keeps WordPerfect's size and its position on the page, so the generator takes those instead.
// (libwpd's own frames for page and character boxes pass unchanged.)
//
// libwpd reads no 5.1 cell lines or shading and draws every line of every cell; WordPerfect keeps
// them in each row's code, which the generator reads into the cells libwpd opens.
class WordPerfect5Layout : public OdtGenerator {
public:
    struct Box {
        double width = 0; // inches
        double height = 0;
        double x = 0; // left edge from the page's left edge
        double y = 0; // top edge from the page's top edge
        bool paragraphAnchored = false;
        bool fullWidth = false;
        // The graphic's own size: WordPerfect fits it into the box, keeping its proportions,
        // centred.
        double graphicWidth = 0;
        double graphicHeight = 0;
    };

    // A 5.1 table: its columns' widths, the grey its shaded cells take, and a word per column and
    // row: a line style for each side in three bits, the top in bits 0-2, the left in 3-5, the
    // bottom in 8-10 and the right in 11-13, and bit 14 for a shaded cell. Styles 0 none, 1 single
    // and 2 double are WordPerfect's own printer test's; 3 dashed, 4 dotted, 5 thick and 6 extra
    // thick follow the order of WordPerfect's line menu, and no file here has them.
    struct Table {
        std::vector<double> widths; // inches
        int shade = 0;              // percent of black
        std::vector<std::vector<unsigned>> rows;
        std::vector<double> fixedHeights; // per row, inches; 0 where the row grows with its text
    };

    struct Contents {
        // The graphic figure boxes, in the order of the text.
        std::vector<Box> pictures;
        std::vector<Table> tables;
        // What the boxes hold that libwpd passes over: equations, text (text, table and user
        // boxes, captions) and the graphic lines WordPerfect draws as boxes of their own.
        richtext::Losses losses;
    };

    // The boxes of a WordPerfect 5 document; none for other versions and for encrypted
    // documents, whose records cannot be read as they stand.
    static Contents read(const std::vector<unsigned char> &document);

    explicit WordPerfect5Layout(Contents contents)
        : boxes(std::move(contents.pictures)), tables(std::move(contents.tables))
    {
    }

    void openParagraph(const librevenge::RVNGPropertyList &propList) override;
    void openFrame(const librevenge::RVNGPropertyList &propList) override;
    void openTable(const librevenge::RVNGPropertyList &propList) override;
    void openTableRow(const librevenge::RVNGPropertyList &propList) override;
    void openTableCell(const librevenge::RVNGPropertyList &propList) override;

private:
    std::vector<Box> boxes;
    std::size_t next = 0;
    std::vector<Table> tables;
    std::size_t nextTable = 0;
    const Table *table = nullptr; // the open table's lines, when they are known
    std::size_t row = 0;          // the open row's, counted from 1
    // Where WordPerfect had the first box of the open paragraph.
    std::optional<double> paragraphTop;
};
