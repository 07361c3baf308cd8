#pragma once

#include "WordPerfectWriter.h"

#include <map>

namespace richtext::wordperfect {

// WordPerfect 6.1 (read by every WordPerfect from 6.1 to X9): the 16-byte prefix and extended
// header, the index of prefix packets (font descriptors, initial font, note and header bodies,
// document flags and summary), then the document area.
class Wp6Writer : public WordPerfectWriter {
protected:
    const OneByteCodes &oneByteCodes() const override;
    bool writeCharacter(std::u32string_view text, std::size_t &used) override;
    const CharacterMap &characters() const override;
    void writeLineBreak() override;
    void writeTab(const TabStop &stop) override;
    void writeAttribute(int attribute, bool on) override;
    void writeFont(const CharacterFormat &format) override;
    void writeColour(std::uint32_t rgb) override;
    void writeHighlight(std::optional<std::uint32_t> rgb) override;
    bool writesHighlight() const override { return true; }
    void writeParagraphFormat(const ParagraphFormat &from, const ParagraphFormat &to) override;
    int tabOrigin(const ParagraphFormat &format) const override;
    bool writesParagraphSpacing() const override { return true; }
    void writeParagraphSpacing(int wpu) override;
    void writePageSetup() override;
    void writeSideMargins() override;
    void writeColumns(const TextColumns &columns) override;
    void writeColumnBreak() override;
    void writeTableStart(const std::vector<int> &widths, int position, int leftOffset,
                         const std::vector<std::vector<CellShape>> &rows) override;
    void writeCell(const CellShape &cell, bool firstInRow) override;
    void writeTableEnd() override;
    void writeNote(bool endnote, int number, const std::string &body, char mark) override;
    void writeHeaderFooter(bool footer, const std::string &occurrence, const std::string &body) override;
    void writePageNumber() override;
    void writePageCount(const std::string &shown) override;
    void writeImage(const Raster &raster, int widthWpu, int heightWpu) override;
    bool writesTextBoxes() const override { return true; }
    void writeTextBox(const std::string &body, int widthWpu, int heightWpu) override;
    void writeBox(int contentType, int pid, int widthWpu, int heightWpu);
    std::string assemble(const std::string &document) override;

private:
    struct Packet {
        int type;
        int flags;
        int uses;
        std::string data;
    };
    // A variable-length function: code, sub, size, flags, [PIDs], non-deletable data, size, code.
    void function(int code, int sub, const std::string &data, int pid = 0);
    int addPacket(int type, int flags, std::string data);
    int fontPid(const std::string &name);
    int textPacket(const std::string &body);

    std::vector<Packet> packets; // PID = position + 1
    std::map<std::string, int> fontPids;
    std::string initialFont;
    int initialSize = 0;
};

} // namespace richtext::wordperfect
