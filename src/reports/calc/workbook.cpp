// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/workbook.h"

#include <algorithm>
#include <cmath>
#include <com/sun/star/awt/FontSlant.hpp>
#include <com/sun/star/awt/FontWeight.hpp>
#include <com/sun/star/container/XNamed.hpp>
#include <com/sun/star/frame/XModel.hpp>
#include <com/sun/star/sheet/CellFlags.hpp>
#include <com/sun/star/sheet/XCellRangeAddressable.hpp>
#include <com/sun/star/sheet/XCellRangeData.hpp>
#include <com/sun/star/sheet/XHeaderFooterContent.hpp>
#include <com/sun/star/sheet/XPrintAreas.hpp>
#include <com/sun/star/sheet/XSheetOperation.hpp>
#include <com/sun/star/style/XStyleFamiliesSupplier.hpp>
#include <com/sun/star/table/CellHoriJustify.hpp>
#include <com/sun/star/table/CellVertJustify2.hpp>
#include <com/sun/star/table/XColumnRowRange.hpp>
#include <com/sun/star/text/XText.hpp>
#include <com/sun/star/util/XMergeable.hpp>
#include <com/sun/star/util/XNumberFormats.hpp>
#include <com/sun/star/util/XNumberFormatsSupplier.hpp>
#include <utility>
#include <vector>

#include "common/run_time_error.h"
#include "reports/calc/chart.h"
#include "reports/cell_blocks.h"

namespace davo::calc {

namespace {

using SheetReference = Reference<sun::sheet::XSpreadsheet>;

// How many pixels Excel makes of a column of so many characters of the default font, and what this
// engine needs to be told so that it writes that width into the file.
sal_Int32 ColumnWidthOf(double characters) {
    constexpr double kPixelsPerCharacter = 7;
    constexpr double kPixelsOfMargins = 5;
    const double pixels = std::trunc(characters * kPixelsPerCharacter + kPixelsOfMargins);
    return static_cast<sal_Int32>(std::lround(pixels * kColumnLengthPerPixel));
}

Reference<sun::table::XCellRange> RangeIn(const SheetReference& sheet, const CellRange& range) {
    return sheet->getCellRangeByPosition(range.first.column - 1, range.first.row - 1,
                                         range.last.column - 1, range.last.row - 1);
}

SheetReference SheetNamed(const Document& document, std::string_view name) {
    return {document->getSheets()->getByName(ToUno(name)), UNO_QUERY_THROW};
}

sun::table::CellHoriJustify JustifyOf(HorizontalAlignment alignment) {
    return alignment == HorizontalAlignment::Left ? sun::table::CellHoriJustify_LEFT
                                                  : sun::table::CellHoriJustify_CENTER;
}

sal_Int32 JustifyOf(VerticalAlignment alignment) {
    return alignment == VerticalAlignment::Top ? sun::table::CellVertJustify2::TOP
                                               : sun::table::CellVertJustify2::BOTTOM;
}

Any ValueOf(const Cell& cell) {
    if (const double* number = std::get_if<double>(&cell.value)) return Any(*number);
    return Any(ToUno(std::get<std::string>(cell.value)));
}

Sequence<Sequence<Any>> ValuesOf(const CellBlock& block) {
    const auto columns = block.range.last.column - block.range.first.column + 1;
    Sequence<Sequence<Any>> rows(block.range.last.row - block.range.first.row + 1);
    auto cell = block.cells.begin();
    for (Sequence<Any>& row : rows) {
        row.realloc(columns);
        for (Any& value : row)
            value = ValueOf(**cell++);
    }
    return rows;
}

Properties PropertiesOf(const CellStyle& style) {
    Properties properties;
    const auto set = [&properties](const char* name, const auto& value) {
        properties[rtl::OUString::createFromAscii(name)] <<= value;
    };
    if (style.fontName) set("CharFontName", ToUno(*style.fontName));
    if (style.fontSize) set("CharHeight", static_cast<float>(*style.fontSize));
    if (style.bold) {
        set("CharWeight", *style.bold ? sun::awt::FontWeight::BOLD : sun::awt::FontWeight::NORMAL);
    }
    if (style.italic)
        set("CharPosture", *style.italic ? sun::awt::FontSlant_ITALIC : sun::awt::FontSlant_NONE);
    if (style.horizontal) set("HoriJustify", JustifyOf(*style.horizontal));
    if (style.vertical) set("VertJustify", JustifyOf(*style.vertical));
    if (style.wrap) set("IsTextWrapped", *style.wrap);
    if (style.orientation) {
        constexpr sal_Int32 kHundredths = 100;
        set("RotateAngle", static_cast<sal_Int32>(*style.orientation) * kHundredths);
    }
    return properties;
}

void Merge(const std::vector<CellRange>& merges, const SheetReference& target) {
    for (const CellRange& range : merges) {
        const Reference<sun::util::XMergeable> mergeable(RangeIn(target, range), UNO_QUERY_THROW);
        mergeable->merge(true);
    }
}

void Clear(const CellRange& range, const SheetReference& target) {
    namespace Flags = sun::sheet::CellFlags;
    const Reference<sun::sheet::XSheetOperation> cells(RangeIn(target, range), UNO_QUERY_THROW);
    cells->clearContents(Flags::VALUE | Flags::DATETIME | Flags::STRING | Flags::ANNOTATION |
                         Flags::FORMULA | Flags::HARDATTR | Flags::STYLES | Flags::EDITATTR);
}

// What a model sheet can have of the sheets that are copied from it: the styles that all of them
// begin with, the merges that all have, and the page of the first.
Sheet SharedByCopies(const Workbook& workbook) {
    Sheet shared;
    for (const Sheet& sheet : workbook.sheets) {
        if (!IsTestSheet(sheet)) continue;
        if (!shared.fromTemplate) {
            shared = sheet;
            continue;
        }
        std::vector<StyledRange>& styles = shared.styles;
        const auto end =
            std::mismatch(styles.begin(), styles.end(), sheet.styles.begin(), sheet.styles.end());
        styles.erase(end.first, styles.end());
        if (sheet.merges != shared.merges) shared.merges.clear();
    }
    return shared;
}

void SetFooter(const PropertySet& pageStyle, const std::optional<FooterText>& footer) {
    Set(pageStyle, "HeaderIsOn", false);
    Set(pageStyle, "FooterIsOn", footer.has_value());
    if (!footer) return;
    Set(pageStyle, "FooterIsShared", true);
    const char* kContent = "RightPageFooterContent";
    const Reference<sun::sheet::XHeaderFooterContent> content(
        pageStyle->getPropertyValue(rtl::OUString::createFromAscii(kContent)), UNO_QUERY_THROW);
    content->getLeftText()->setString({});
    content->getRightText()->setString({});
    const Reference<sun::text::XText> text = content->getCenterText();
    text->setString(ToUno(footer->text));
    const Reference<sun::text::XTextCursor> cursor = text->createTextCursor();
    cursor->gotoStart(false);
    cursor->gotoEnd(true);
    const PropertySet font(cursor, UNO_QUERY_THROW);
    Set(font, "CharFontName", ToUno(footer->fontName));
    Set(font, "CharHeight", static_cast<float>(footer->fontSize));
    Set(font, "CharWeight",
        footer->bold ? sun::awt::FontWeight::BOLD : sun::awt::FontWeight::NORMAL);
    Set(font, "CharPosture",
        footer->italic ? sun::awt::FontSlant_ITALIC : sun::awt::FontSlant_NONE);
    Set(pageStyle, kContent, content);
}

}  // namespace

WorkbookWriter::WorkbookWriter(const Context& context, const Workbook& workbook,
                               const Document& document, BeforeStep beforeStep)
    : context_(context),
      workbook_(workbook),
      document_(document),
      factory_(document, UNO_QUERY_THROW),
      beforeStep_(std::move(beforeStep)) {}

void WorkbookWriter::Write() {
    const Reference<sun::frame::XModel> model(document_, UNO_QUERY_THROW);
    model->lockControllers();
    MakeSheets();
    const int tests = TestSheetsOf(workbook_);
    int test = 0;
    for (std::size_t index = 0; index < workbook_.sheets.size(); ++index) {
        beforeStep_(IsTestSheet(workbook_.sheets[index]) ? ++test : 0, tests);
        WriteSheet(index);
    }
    // Charts last: each begins with the numbers of its cells, on whichever sheet they are.
    for (const Sheet& sheet : workbook_.sheets) {
        for (std::size_t chart = 0; chart < sheet.charts.size(); ++chart) {
            beforeStep_(0, tests);
            AddChart(context_, document_, workbook_, sheet, sheet.charts[chart]);
        }
    }
    beforeStep_(0, tests);
    model->unlockControllers();
}

// Sheets have their final names from the start: charts refer to them by name.
void WorkbookWriter::MakeSheets() {
    const auto sheets = document_->getSheets();
    const rtl::OUString model = ToUno(workbook_.templateSheet);
    if (!sheets->hasByName(model)) {
        throw NoModelSheet(workbook_);
    }
    for (const rtl::OUString& name : sheets->getElementNames()) {
        if (name != model) sheets->removeByName(name);
    }
    // Out of the way of a sheet that is to be called like it.
    const rtl::OUString apart("template-model-sheet");
    const Reference<sun::container::XNamed> named(sheets->getByName(model), UNO_QUERY_THROW);
    named->setName(apart);
    const PropertySet properties(named, UNO_QUERY_THROW);
    modelPageStyle_ = Get<rtl::OUString>(properties, "PageStyle");
    FormatModel(SheetReference(named, UNO_QUERY_THROW));
    sal_Int16 position = 0;
    for (const Sheet& sheet : workbook_.sheets) {
        beforeStep_(0, 0);
        const rtl::OUString name = ToUno(sheet.finalName);
        if (sheet.fromTemplate) {
            sheets->copyByName(apart, name, position);
            if (sheet.cleared) Clear(*sheet.cleared, SheetNamed(document_, sheet.finalName));
        } else {
            sheets->insertNewByName(name, position);
        }
        ++position;
    }
    sheets->removeByName(apart);
}

// With all that its copies share: copying is faster than formatting, and a page that is set up when
// the cells are there makes the engine lay out all pages of the document again.
void WorkbookWriter::FormatModel(const SheetReference& model) {
    shared_ = SharedByCopies(workbook_);
    const Reference<sun::sheet::XPrintAreas> areas(model, UNO_QUERY_THROW);
    if (areas->getPrintTitleColumns()) areas->setPrintTitleColumns(false);
    if (areas->getPrintTitleRows()) areas->setPrintTitleRows(false);
    SetUpPage(shared_.page, model);
    for (const StyledRange& styled : shared_.styles)
        Apply(styled, model);
    Merge(shared_.merges, model);
}

void WorkbookWriter::WriteSheet(std::size_t index) {
    const Sheet& sheet = workbook_.sheets[index];
    const SheetReference target = SheetNamed(document_, sheet.finalName);
    const Sheet fresh;
    const Sheet& has = IsTestSheet(sheet) ? shared_ : fresh;
    if (!IsTestSheet(sheet) || sheet.page != has.page) SetUpPage(sheet.page, target);
    for (std::size_t style = has.styles.size(); style < sheet.styles.size(); ++style)
        Apply(sheet.styles[style], target);
    if (sheet.merges != has.merges) Merge(sheet.merges, target);
    WriteCells(sheet, target);
}

void WorkbookWriter::Apply(const StyledRange& styled, const SheetReference& target) {
    Properties properties = PropertiesOf(styled.style);
    if (styled.style.numberFormat)
        properties[rtl::OUString("NumberFormat")] <<= NumberFormat(*styled.style.numberFormat);
    const auto range = RangeIn(target, styled.range);
    if (!properties.empty()) SetAll(range, properties);
    if (styled.style.columnWidth) {
        const Reference<sun::table::XColumnRowRange> both(range, UNO_QUERY_THROW);
        const PropertySet columns(both->getColumns(), UNO_QUERY_THROW);
        Set(columns, "Width", ColumnWidthOf(*styled.style.columnWidth));
    }
}

void WorkbookWriter::WriteCells(const Sheet& sheet, const SheetReference& target) {
    for (const CellBlock& block : BlocksOf(sheet.cells)) {
        const Reference<sun::sheet::XCellRangeData> cells(RangeIn(target, block.range),
                                                          UNO_QUERY_THROW);
        cells->setDataArray(ValuesOf(block));
    }
}

PropertySet WorkbookWriter::MakePageStyle(const rtl::OUString& name) {
    const Reference<sun::style::XStyleFamiliesSupplier> supplier(document_, UNO_QUERY_THROW);
    const Reference<sun::container::XNameContainer> styles(
        supplier->getStyleFamilies()->getByName("PageStyles"), UNO_QUERY_THROW);
    PropertySet style(factory_->createInstance("com.sun.star.style.PageStyle"), UNO_QUERY_THROW);
    styles->insertByName(name, Any(style));
    const PropertySet model(styles->getByName(modelPageStyle_), UNO_QUERY_THROW);
    // The template says on what paper reports are printed.
    for (const char* property :
         {"LeftMargin", "RightMargin", "TopMargin", "BottomMargin", "Width", "Height"}) {
        Set(style, property, Get<sal_Int32>(model, property));
    }
    return style;
}

rtl::OUString WorkbookWriter::PageStyleOf(const PageSetup& page) {
    for (const auto& [known, name] : pageStyles_) {
        const bool isAlike = known.landscape == page.landscape &&
                             known.fitPagesWide == page.fitPagesWide &&
                             known.fitPagesTall == page.fitPagesTall && known.footer == page.footer;
        if (isAlike) return name;
    }
    const rtl::OUString name = "Report" + rtl::OUString::number(pageStyles_.size() + 1);
    const PropertySet style = MakePageStyle(name);
    const auto width = Get<sal_Int32>(style, "Width");
    const auto height = Get<sal_Int32>(style, "Height");
    Set(style, "IsLandscape", page.landscape);
    Set(style, "Width", page.landscape ? std::max(width, height) : std::min(width, height));
    Set(style, "Height", page.landscape ? std::min(width, height) : std::max(width, height));
    Set(style, "ScaleToPagesX", static_cast<sal_Int16>(page.fitPagesWide));
    Set(style, "ScaleToPagesY", static_cast<sal_Int16>(page.fitPagesTall));
    SetFooter(style, page.footer);
    pageStyles_.emplace_back(page, name);
    return name;
}

void WorkbookWriter::SetUpPage(const PageSetup& page, const SheetReference& target) {
    Set(PropertySet(target, UNO_QUERY_THROW), "PageStyle", PageStyleOf(page));
    Sequence<sun::table::CellRangeAddress> printed;
    if (page.printArea) {
        const Reference<sun::sheet::XCellRangeAddressable> range(RangeIn(target, *page.printArea),
                                                                 UNO_QUERY_THROW);
        printed = SequenceOf({range->getRangeAddress()});
    }
    const Reference<sun::sheet::XPrintAreas> areas(target, UNO_QUERY_THROW);
    areas->setPrintAreas(printed);
}

// A format without a language of its own: with one, its prefix would be in the file.
sal_Int32 WorkbookWriter::NumberFormat(const std::string& format) {
    const auto known = numberFormats_.find(format);
    if (known != numberFormats_.end()) return known->second;
    const Reference<sun::util::XNumberFormatsSupplier> supplier(document_, UNO_QUERY_THROW);
    const auto formats = supplier->getNumberFormats();
    sal_Int32 key = formats->queryKey(ToUno(format), {}, false);
    if (key < 0) key = formats->addNew(ToUno(format), {});
    numberFormats_[format] = key;
    return key;
}

}  // namespace davo::calc
