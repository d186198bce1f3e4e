#pragma once

#include <com/sun/star/lang/XMultiServiceFactory.hpp>
#include <com/sun/star/sheet/XSpreadsheet.hpp>
#include <com/sun/star/sheet/XSpreadsheetDocument.hpp>
#include <functional>
#include <map>
#include <string>

#include "reports/calc_uno.h"
#include "reports/workbook.h"

namespace davo::calc {

using Document = Reference<sun::sheet::XSpreadsheetDocument>;

// Called before every step that may take a moment; n from 1 to m counts the sheets that stand for a
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
    void MakeSheets();
    void WriteSheet(std::size_t index);
    void WriteCells(const Sheet& sheet, const Reference<sun::sheet::XSpreadsheet>& target);
    void Apply(const StyledRange& styled, const Reference<sun::sheet::XSpreadsheet>& target);
    void SetUpPage(const PageSetup& page, const Reference<sun::sheet::XSpreadsheet>& target);
    PropertySet MakePageStyle(const rtl::OUString& name);
    void SelectCells();
    sal_Int32 NumberFormat(const std::string& format);

    Context context_;
    const Workbook& workbook_;
    Document document_;
    Reference<sun::lang::XMultiServiceFactory> factory_;
    BeforeStep beforeStep_;
    rtl::OUString modelPageStyle_;
    std::map<std::string, sal_Int32> numberFormats_;
    int pageStyles_ = 0;
};

}  // namespace davo::calc
