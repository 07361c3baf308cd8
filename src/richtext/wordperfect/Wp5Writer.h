#pragma once

#include "WordPerfectWriter.h"

#include <map>

namespace richtext::wordperfect {

// WordPerfect 5.1 for DOS: the 16-byte prefix, one index block (document flags, font-name pool,
// fonts used, the graphics of figure boxes), then the document area, where note and header
// bodies sit inline.
class Wp5Writer : public WordPerfectWriter {
protected:
    const OneByteCodes &oneByteCodes() const override;
    bool writeCharacter(std::u32string_view text, std::size_t &used) override;
    const CharacterMap &characters() const override;
    void writeLineBreak() override;
    void writeTab(const TabStop &stop) override;
    void writeAttribute(int attribute, bool on) override;
    void writeFont(const CharacterFormat &format) override;
    void writeColour(std::uint32_t rgb) override;
    void writeParagraphFormat(const ParagraphFormat &from, const ParagraphFormat &to) override;
    void writeParagraphStart(const ParagraphFormat &format) override;
    bool writesCellFills() const override { return false; }
    bool writesCellBorders() const override { return false; }
    void writeTabSet(const std::vector<TabStop> &tabs);
    void writePageSetup() override;
    void writeSideMargins() override;
    void writeColumns(const TextColumns &columns) override;
    void writeColumnBreak() override;
    void writePageBreak() override;
    void writeTableStart(const std::vector<int> &widths, int position, int leftOffset,
                         const std::vector<std::vector<CellShape>> &rows) override;
    void writeCell(const CellShape &cell, bool firstInRow) override;
    void writeTableEnd() override;
    void writeNote(bool endnote, int number, const std::string &body, char mark) override;
    void writeHeaderFooter(bool footer, const std::string &occurrence, const std::string &body) override;
    void writePageNumber() override;
    void writeImage(const Raster &raster, int widthWpu, int heightWpu) override;
    std::string assemble(const std::string &document) override;

private:
    // A variable-length function: code, sub, length, data, length, sub, code (length = data + 4).
    void function(int code, int sub, const std::string &data);
    void fixed(int code, const std::string &data);
    int fontNumber(const CharacterFormat &format);
    void writePaperSize(int width, int height);
    // The row codes of the tables being written (one inside another's note, say), each written
    // before its row's first cell.
    struct TableRows {
        std::vector<std::string> codes;
        std::size_t next = 0;
    };
    std::vector<TableRows> tableRows;

    std::vector<std::pair<std::string, int>> fonts; // name and size of each font-list record
    std::map<std::pair<std::string, int>, int> fontNumbers;
    std::vector<std::string> pictures;                    // WordPerfect Graphics records of each figure box
    std::string columnDefinition = std::string(97, '\0'); // the one in force: the next one's old value
    bool columnsOn = false;
};

} // namespace richtext::wordperfect
