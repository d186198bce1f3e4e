// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <limits>
#include <vector>

#include "reports/workbook.h"

namespace davo {

// A full rectangle of cells, row after row: one call writes all of them.
struct CellBlock {
    CellRange range;
    std::vector<const Cell*> cells;
};

// All of a sheet's cells in as few blocks as a walk from the top finds. A text longer than
// longestText makes a block of its own. The cells must outlive the blocks.
std::vector<CellBlock> BlocksOf(const std::vector<Cell>& cells,
                                std::size_t longestText = std::numeric_limits<std::size_t>::max());

}  // namespace davo
