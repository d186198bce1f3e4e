// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/excel/cells.h"

#include <algorithm>
#include <map>
#include <utility>

namespace davo::excel {

namespace {

// Excel up to 2003 takes no longer texts in a table of values.
constexpr std::size_t kLongestTextInTable = 900;

bool IsLong(const Cell& cell) {
    const auto* text = std::get_if<std::string>(&cell.value);
    return text != nullptr && text->size() > kLongestTextInTable;
}

bool Contains(const CellRange& range, CellPlace place) {
    return range.first.row <= place.row && place.row <= range.last.row &&
           range.first.column <= place.column && place.column <= range.last.column;
}

}  // namespace

std::vector<Block> BlocksOf(const std::vector<Cell>& cells) {
    std::map<std::pair<int, int>, const Cell*> byPlace;
    for (const Cell& cell : cells)
        byPlace[{cell.place.row, cell.place.column}] = &cell;
    std::vector<Block> runs;
    for (const auto& [place, cell] : byPlace) {
        const bool continues = !runs.empty() && runs.back().range.last.row == place.first &&
                               runs.back().range.last.column + 1 == place.second &&
                               !IsLong(*cell) && !IsLong(*runs.back().cells.back());
        if (!continues) runs.push_back({{cell->place, cell->place}, {}});
        runs.back().range.last.column = place.second;
        runs.back().cells.push_back(cell);
    }
    std::vector<Block> blocks;
    for (const Block& run : runs) {
        const auto above = std::find_if(blocks.begin(), blocks.end(), [&](const Block& block) {
            return block.range.last.row + 1 == run.range.first.row &&
                   block.range.first.column == run.range.first.column &&
                   block.range.last.column == run.range.last.column &&
                   !IsLong(*block.cells.back()) && !IsLong(*run.cells.front());
        });
        if (above == blocks.end()) {
            blocks.push_back(run);
        } else {
            above->range.last.row = run.range.last.row;
            above->cells.insert(above->cells.end(), run.cells.begin(), run.cells.end());
        }
    }
    return blocks;
}

bool IsTextCell(const std::vector<StyledRange>& styles, CellPlace place) {
    const auto last = std::find_if(styles.rbegin(), styles.rend(), [&](const StyledRange& styled) {
        return styled.style.numberFormat && Contains(styled.range, place);
    });
    return last != styles.rend() && last->style.numberFormat == "@";
}

}  // namespace davo::excel
