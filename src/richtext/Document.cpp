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

std::vector<const Paragraph *> Document::paragraphs() const
{
    std::vector<const Paragraph *> result;
    forEachMainBlock(*this, [&](const Block &block) {
        if (const Paragraph *paragraph = block.paragraph())
            result.push_back(paragraph);
    });
    return result;
}

std::vector<const Table *> Document::tables() const
{
    std::vector<const Table *> result;
    forEachMainBlock(*this, [&](const Block &block) {
        if (const Table *table = block.table())
            result.push_back(table);
    });
    return result;
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
