// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/excel/steps.h"

#include <QDir>
#include <QScopeGuard>
#include <algorithm>

#include "common/text.h"
#include "reports/cell_blocks.h"
#include "reports/excel/chart.h"
#include "reports/excel/names.h"

namespace davo::excel {

namespace {

constexpr QLatin1Char kQuote('\'');
// Excel up to 2003 takes no longer texts in a table of values.
constexpr std::size_t kLongestTextInTable = 900;

QString TextOf(const CellRange& range) {
    return FromPage(AddressOf(range));
}

Object RangeIn(const Object& sheet, const CellRange& range) {
    return sheet.Get("Range", {TextOf(range)});
}

void SetFont(const Object& range, const CellStyle& style) {
    if (!style.fontName && !style.fontSize && !style.bold && !style.italic) return;
    const Object font = range.Get("Font");
    if (style.fontName) font.Set("Name", FromPage(*style.fontName));
    if (style.fontSize) font.Set("Size", *style.fontSize);
    if (style.bold) font.Set("Bold", *style.bold);
    if (style.italic) font.Set("Italic", *style.italic);
}

void Apply(const Object& sheet, const StyledRange& styled) {
    const CellStyle& style = styled.style;
    const Object range = RangeIn(sheet, styled.range);
    SetFont(range, style);
    if (style.horizontal) {
        const bool isLeft = *style.horizontal == HorizontalAlignment::Left;
        range.Set("HorizontalAlignment", isLeft ? kLeft : kCenter);
    }
    if (style.vertical) {
        const bool isTop = *style.vertical == VerticalAlignment::Top;
        range.Set("VerticalAlignment", isTop ? kTop : kBottom);
    }
    if (style.wrap) range.Set("WrapText", *style.wrap);
    if (style.orientation) range.Set("Orientation", *style.orientation);
    if (style.numberFormat) range.Set("NumberFormat", FromPage(*style.numberFormat));
    if (style.columnWidth) range.Set("ColumnWidth", *style.columnWidth);
}

bool Contains(const CellRange& range, CellPlace place) {
    return range.first.row <= place.row && place.row <= range.last.row &&
           range.first.column <= place.column && place.column <= range.last.column;
}

// Whether the styles, of which a later one wins, say that the cell holds text whatever is written.
bool IsTextCell(const std::vector<StyledRange>& styles, CellPlace place) {
    const auto last = std::find_if(styles.rbegin(), styles.rend(), [&](const StyledRange& styled) {
        return styled.style.numberFormat && Contains(styled.range, place);
    });
    return last != styles.rend() && last->style.numberFormat == "@";
}

// Excel reads what is written into a cell like typed text, unless the cell is formatted as text or
// a quote is in front, which does not become part of the text.
std::variant<QString, double> ContentOf(const Sheet& sheet, const Cell& cell) {
    if (const double* number = std::get_if<double>(&cell.value)) return *number;
    const QString text = FromPage(std::get<std::string>(cell.value));
    return IsTextCell(sheet.styles, cell.place) ? text : kQuote + text;
}

// A first quote in a cell that is formatted as text: whether it was taken for the mark is asked.
void KeepFirstQuote(const Object& target, const Sheet& sheet, const Cell& cell) {
    const auto* bytes = std::get_if<std::string>(&cell.value);
    if (bytes == nullptr || !bytes->starts_with('\'')) return;
    if (!IsTextCell(sheet.styles, cell.place)) return;
    const Object range = RangeIn(target, {cell.place, cell.place});
    const QString text = FromPage(*bytes);
    if (range.Text("Value2") != text) range.Set("Value2", kQuote + text);
}

void WriteCells(const Object& target, const Sheet& sheet) {
    for (const CellBlock& block : BlocksOf(sheet.cells, kLongestTextInTable)) {
        Table table;
        table.rows = block.range.last.row - block.range.first.row + 1;
        table.columns = block.range.last.column - block.range.first.column + 1;
        for (const Cell* cell : block.cells)
            table.cells.push_back(ContentOf(sheet, *cell));
        const Object range = RangeIn(target, block.range);
        if (table.cells.size() > 1) {
            range.Set("Value2", table);
        } else {
            std::visit([&](const auto& only) { range.Set("Value2", only); }, table.cells.front());
        }
    }
    for (const Cell& cell : sheet.cells)
        KeepFirstQuote(target, sheet, cell);
}

void SetUpPage(const Object& sheet, const PageSetup& page) {
    const Object setup = sheet.Get("PageSetup");
    if (page.footer) setup.Set("CenterFooter", FromPage(FooterCode(*page.footer)));
    setup.Set("PrintTitleRows", QString());
    setup.Set("PrintTitleColumns", QString());
    setup.Set("PrintArea", page.printArea ? TextOf(*page.printArea) : QString());
    setup.Set("Orientation", page.landscape ? kLandscape : kPortrait);
    setup.Set("Zoom", false);
    setup.Set("FitToPagesWide", page.fitPagesWide);
    if (page.fitPagesTall > 0) {
        setup.Set("FitToPagesTall", page.fitPagesTall);
    } else {
        setup.Set("FitToPagesTall", false);
    }
}

// A printer that has no such paper prints on what it has.
void SetPaper(const Object& model, const Object& sheet) {
    try {
        const double paper = model.Get("PageSetup").Number("PaperSize");
        sheet.Get("PageSetup").Set("PaperSize", static_cast<int>(paper));
    } catch (const RunTimeError&) {
        return;
    }
}

class ReportMaker {
  public:
    ReportMaker(const Object& book, const Workbook& workbook, const BeforeStep& beforeStep)
        : sheets_(book.Get("Sheets")), book_(book), workbook_(workbook), beforeStep_(beforeStep) {}
    void Make();

  private:
    Object FindModel() const;
    bool IsTaken(const QString& name) const;
    void MakeSheets(const Object& model);
    void FillSheets();
    void Finish(const Object& model);

    Object sheets_;
    const Object& book_;
    const Workbook& workbook_;
    const BeforeStep& beforeStep_;
    std::vector<Object> made_;  // as in Workbook::sheets
};

bool ReportMaker::IsTaken(const QString& name) const {
    return std::any_of(workbook_.sheets.begin(), workbook_.sheets.end(), [&](const Sheet& sheet) {
        return name.compare(FromPage(sheet.buildName), Qt::CaseInsensitive) == 0 ||
               name.compare(FromPage(sheet.finalName), Qt::CaseInsensitive) == 0;
    });
}

// The template's owner may keep sheets of his own; they make room for the names of the report's.
Object ReportMaker::FindModel() const {
    constexpr int kRoomForMark = 20;  // of 31 characters
    const QString wanted = FromPage(workbook_.templateSheet);
    Object model;
    for (int i = 1, count = sheets_.Count(); i <= count; ++i) {
        const Object sheet = sheets_.Get("Item", {i});
        const QString name = sheet.Text("Name");
        if (name.compare(wanted, Qt::CaseInsensitive) == 0) {
            model = sheet;
        } else if (IsTaken(name)) {
            sheet.Set("Name", name.left(kRoomForMark) + QStringLiteral(" (template)"));
        }
    }
    if (model.Reference() == nullptr) {
        throw NoModelSheet(workbook_);
    }
    return model;
}

void ReportMaker::MakeSheets(const Object& model) {
    int position = static_cast<int>(model.Number("Index"));
    for (const Sheet& sheet : workbook_.sheets) {
        beforeStep_(0, 0);
        if (sheet.fromTemplate) {
            model.Call("Copy", {model});  // before itself
        } else {
            sheets_.Call("Add", {model});
        }
        made_.push_back(sheets_.Get("Item", {position++}));
        if (!sheet.fromTemplate) SetPaper(model, made_.back());
        made_.back().Set("Name", FromPage(sheet.buildName));
        if (sheet.cleared) RangeIn(made_.back(), *sheet.cleared).Call("Clear");
    }
}

void ReportMaker::FillSheets() {
    const int tests = TestSheetsOf(workbook_);
    int test = 0;
    for (std::size_t i = 0; i < made_.size(); ++i) {
        const Sheet& sheet = workbook_.sheets[i];
        IsTestSheet(sheet) ? beforeStep_(++test, tests) : beforeStep_(0, 0);
        for (const StyledRange& styled : sheet.styles)
            Apply(made_[i], styled);
        beforeStep_(0, 0);
        for (const CellRange& range : sheet.merges)
            RangeIn(made_[i], range).Call("Merge");
        WriteCells(made_[i], sheet);
        for (const Chart& chart : sheet.charts) {
            beforeStep_(0, 0);
            AddChart(book_, made_[i], workbook_, chart, [this] { beforeStep_(0, 0); });
        }
        beforeStep_(0, 0);
        SetUpPage(made_[i], sheet.page);
    }
}

void ReportMaker::Finish(const Object& model) {
    for (std::size_t i = 0; i < made_.size(); ++i) {
        made_[i].Set("Name", FromPage(workbook_.sheets[i].finalName));
        made_[i].Call("Activate");
        const CellPlace selected = workbook_.sheets[i].selected;
        RangeIn(made_[i], {selected, selected}).Call("Select");
    }
    beforeStep_(0, 0);
    model.Call("Delete");
    made_.at(workbook_.activeSheet).Call("Activate");
    const CellPlace seen = workbook_.sheets.at(workbook_.activeSheet).firstVisible;
    if (seen == CellPlace{}) return;
    const Object window = book_.Get("Windows").Get("Item", {1});
    window.Set("ScrollRow", seen.row);
    window.Set("ScrollColumn", seen.column);
}

void ReportMaker::Make() {
    const Object model = FindModel();
    MakeSheets(model);
    FillSheets();
    Finish(model);
}

// "16.0".
int MajorVersion(const Object& application) {
    return application.Text("Version").section(QLatin1Char('.'), 0, 0).toInt();
}

}  // namespace

void Quieten(const Object& application) {
    application.Set("Visible", false);
    application.Set("DisplayAlerts", false);
    application.Set("ScreenUpdating", false);
    application.Set("EnableEvents", false);
    application.Set("AutomationSecurity", kSecurityForceDisable);
}

void MakeReport(const Object& application, const Workbook& workbook, const QString& templatePath,
                const QString& targetPath, const BeforeStep& beforeStep) {
    beforeStep(0, 0);
    const int format =
        MajorVersion(application) >= kFirstVersionWithExcel8 ? kExcel8 : kWorkbookNormal;
    constexpr int kLeaveLinksAlone = 0;
    const Object book =
        application.Get("Workbooks")
            .Get("Open", {QDir::toNativeSeparators(templatePath), kLeaveLinksAlone});
    auto closeInAnyCase = qScopeGuard([&book] {
        try {
            book.Call("Close", {false});
        } catch (const RunTimeError&) {
            // An Excel that fails even there is ended with the book.
        }
    });
    ReportMaker(book, workbook, beforeStep).Make();
    // An empty clipboard lets Excel end without a question.
    application.Set("CutCopyMode", false);
    beforeStep(0, 0);
    book.Call("SaveAs", {QDir::toNativeSeparators(targetPath), format});
    closeInAnyCase.dismiss();
    book.Call("Close", {false});
}

}  // namespace davo::excel
