// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/cell_blocks.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace davo {

std::vector<CellBlock> BlocksOf(const std::vector<Cell>& cells, std::size_t longestText) {
    const auto isLong = [longestText](const Cell& cell) {
        const auto* text = std::get_if<std::string>(&cell.value);
        return text != nullptr && text->size() > longestText;
    };
    std::map<std::pair<int, int>, const Cell*> byPlace;
    for (const Cell& cell : cells)
        byPlace[{cell.place.row, cell.place.column}] = &cell;
    std::vector<CellBlock> runs;
    for (const auto& [place, cell] : byPlace) {
        const bool continues = !runs.empty() && runs.back().range.last.row == place.first &&
                               runs.back().range.last.column + 1 == place.second &&
                               !isLong(*cell) && !isLong(*runs.back().cells.back());
        if (!continues) runs.push_back({{cell->place, cell->place}, {}});
        runs.back().range.last.column = place.second;
        runs.back().cells.push_back(cell);
    }
    std::vector<CellBlock> blocks;
    for (const CellBlock& run : runs) {
        const auto above = std::find_if(blocks.begin(), blocks.end(), [&](const CellBlock& block) {
            return block.range.last.row + 1 == run.range.first.row &&
                   block.range.first.column == run.range.first.column &&
                   block.range.last.column == run.range.last.column &&
                   !isLong(*block.cells.back()) && !isLong(*run.cells.front());
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

}  // namespace davo
