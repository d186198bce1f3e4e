// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "reports/workbook.h"

namespace davo::excel {

// A full rectangle of cells, row after row: one call writes all of them.
struct Block {
    CellRange range;
    std::vector<const Cell*> cells;
};

// All of a sheet's cells in few blocks, from the top. A text that is too long to be written
// together with others makes a block of its own. The cells must outlive the blocks.
std::vector<Block> BlocksOf(const std::vector<Cell>& cells);

// Whether the styles, of which a later one wins, say that the cell holds text whatever is written.
bool IsTextCell(const std::vector<StyledRange>& styles, CellPlace place);

}  // namespace davo::excel
