// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <com/sun/star/lang/XMultiServiceFactory.hpp>
#include <com/sun/star/sheet/XSpreadsheet.hpp>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "reports/calc/uno.h"
#include "reports/workbook.h"

namespace davo::calc {

// Called before every step that may take a moment; n from 1 to m counts the sheets that are of a
// test and is 0 for the other steps. What it throws ends the writing.
using BeforeStep = std::function<void(int n, int m)>;

// Writes a workbook into a document that holds the template: copies the model sheet, fills the
// sheets and takes the model away. The document is not saved. Throws RunTimeError 440 when the
// template has no model sheet, and the engine's own exceptions.
class WorkbookWriter {
  public:
    WorkbookWriter(const Context& context, const Workbook& workbook, const Document& document,
                   BeforeStep beforeStep);
    void Write();

  private:
    void FormatModel(const Reference<sun::sheet::XSpreadsheet>& model);
    void MakeSheets();
    void WriteSheet(std::size_t index);
    void WriteCells(const Sheet& sheet, const Reference<sun::sheet::XSpreadsheet>& target);
    void Apply(const StyledRange& styled, const Reference<sun::sheet::XSpreadsheet>& target);
    void SetUpPage(const PageSetup& page, const Reference<sun::sheet::XSpreadsheet>& target);
    rtl::OUString PageStyleOf(const PageSetup& page);
    PropertySet MakePageStyle(const rtl::OUString& name);
    sal_Int32 NumberFormat(const std::string& format);

    Context context_;
    const Workbook& workbook_;
    Document document_;
    Reference<sun::lang::XMultiServiceFactory> factory_;
    BeforeStep beforeStep_;
    rtl::OUString modelPageStyle_;
    std::map<std::string, sal_Int32> numberFormats_;
    // Only what differs between pages counts: the print area belongs to the sheet.
    std::vector<std::pair<PageSetup, rtl::OUString>> pageStyles_;
    Sheet shared_;  // what the model sheet was given
};

}  // namespace davo::calc
