#include "Document.h"

#include <algorithm>

namespace richtext {
namespace {

template <typename Visit> void forEachBlock(const Blocks &blocks, const Visit &visit)
{
    for (const Block &block : blocks) {
        visit(block);
        if (const Table *table = block.table())
            for (const Row &row : table->rows)
                for (const Cell &cell : row.cells)
                    forEachBlock(cell.blocks, visit);
    }
}

template <typename Visit> void forEachMainBlock(const Document &document, const Visit &visit)
{
    for (const PageSpan &span : document.pageSpans)
        forEachBlock(span.blocks, visit);
}

} // namespace

std::string Paragraph::text() const
{
    std::string result;
    for (const Inline &piece : content) {
        if (piece.kind == Inline::Kind::text)
            result += piece.text;
        else if (piece.kind == Inline::Kind::tab)
            result += '\t';
        else if (piece.kind == Inline::Kind::lineBreak)
            result += '\n';
    }
    return result;
}

int Table::columnCount() const
{
    std::size_t count = columnWidths.size();
    for (const Row &row : rows)
        for (const Cell &cell : row.cells)
            count =
                std::max(count, static_cast<std::size_t>(cell.column + (cell.covered ? 1 : cell.columnSpan)));
    return static_cast<int>(count);
}

namespace {

// The blocks of the main text that hold a T, in order.
template <typename T>
std::vector<const T *> mainBlocksHolding(const Document &document, const T *(Block::*holding)() const)
{
    std::vector<const T *> result;
    forEachMainBlock(document, [&](const Block &block) {
        if (const T *found = (block.*holding)())
            result.push_back(found);
    });
    return result;
}

} // namespace

std::vector<const Paragraph *> Document::paragraphs() const
{
    return mainBlocksHolding(*this, &Block::paragraph);
}

std::vector<const Table *> Document::tables() const
{
    return mainBlocksHolding(*this, &Block::table);
}

std::vector<const Inline *> Document::notes(Inline::Kind kind) const
{
    std::vector<const Inline *> result;
    for (const Paragraph *paragraph : paragraphs())
        for (const Inline &piece : paragraph->content)
            if (piece.kind == kind)
                result.push_back(&piece);
    return result;
}

std::string Document::plainText() const
{
    std::string result;
    for (const Paragraph *paragraph : paragraphs()) {
        if (!paragraph->label.empty())
            result += paragraph->label + '\t';
        result += paragraph->text();
        result += '\n';
    }
    return result;
}

} // namespace richtext
