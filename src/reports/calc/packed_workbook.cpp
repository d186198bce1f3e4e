// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/packed_workbook.h"

#include <concepts>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <type_traits>
#include <variant>

namespace davo::calc {

namespace {

template <class Part>
concept Plain = std::is_arithmetic_v<Part> || std::is_enum_v<Part>;

template <class Part, class Wanted>
concept Is = std::same_as<std::remove_const_t<Part>, Wanted>;

// Each hands all members of a part on, so that packing and unpacking cannot differ. A member that
// is added to a part does not compile before it is added here.
template <class Pack>
void Each(Is<CellPlace> auto& part, Pack& pack) {
    auto& [row, column] = part;
    pack.All(row, column);
}
template <class Pack>
void Each(Is<CellRange> auto& part, Pack& pack) {
    auto& [first, last] = part;
    pack.All(first, last);
}
template <class Pack>
void Each(Is<Cell> auto& part, Pack& pack) {
    auto& [place, value] = part;
    pack.All(place, value);
}
template <class Pack>
void Each(Is<CellStyle> auto& part, Pack& pack) {
    auto& [fontName, fontSize, bold, italic, horizontal, vertical, wrap, orientation, numberFormat,
           columnWidth] = part;
    pack.All(fontName, fontSize, bold, italic, horizontal, vertical, wrap, orientation,
             numberFormat, columnWidth);
}
template <class Pack>
void Each(Is<StyledRange> auto& part, Pack& pack) {
    auto& [range, style] = part;
    pack.All(range, style);
}
template <class Pack>
void Each(Is<SheetRange> auto& part, Pack& pack) {
    auto& [sheet, range] = part;
    pack.All(sheet, range);
}
template <class Pack>
void Each(Is<SeriesLine> auto& part, Pack& pack) {
    auto& [weight, colour] = part;
    pack.All(weight, colour);
}
template <class Pack>
void Each(Is<SeriesMarker> auto& part, Pack& pack) {
    auto& [style, size, foreground, background, shadow] = part;
    pack.All(style, size, foreground, background, shadow);
}
template <class Pack>
void Each(Is<ChartSeries> auto& part, Pack& pack) {
    auto& [name, x, values, line, marker, smoothed, inLegend] = part;
    pack.All(name, x, values, line, marker, smoothed, inLegend);
}
template <class Pack>
void Each(Is<ChartAxes> auto& part, Pack& pack) {
    auto& [logarithmic, majorTicks, minorTicks, majorGrid, minorGrid, category, value] = part;
    pack.All(logarithmic, majorTicks, minorTicks, majorGrid, minorGrid, category, value);
}
template <class Pack>
void Each(Is<PlotArea> auto& part, Pack& pack) {
    auto& [borderWeight, filled, fillColour] = part;
    pack.All(borderWeight, filled, fillColour);
}
template <class Pack>
void Each(Is<Chart> auto& part, Pack& pack) {
    auto& [titleLines, axes, plotArea, legend, series, anchor, width, height] = part;
    pack.All(titleLines, axes, plotArea, legend, series, anchor, width, height);
}
template <class Pack>
void Each(Is<FooterText> auto& part, Pack& pack) {
    auto& [text, fontName, fontSize, bold, italic] = part;
    pack.All(text, fontName, fontSize, bold, italic);
}
template <class Pack>
void Each(Is<PageSetup> auto& part, Pack& pack) {
    auto& [landscape, pagesWide, pagesTall, printArea, footer] = part;
    pack.All(landscape, pagesWide, pagesTall, printArea, footer);
}
template <class Pack>
void Each(Is<Sheet> auto& part, Pack& pack) {
    auto& [buildName, finalName, fromTemplate, cleared, styles, merges, cells, charts, page,
           selected, firstVisible] = part;
    pack.All(buildName, finalName, fromTemplate, cleared, styles, merges, cells, charts, page,
             selected, firstVisible);
}
template <class Pack>
void Each(Is<Workbook> auto& part, Pack& pack) {
    auto& [templateFile, templateSheet, sheets, activeSheet] = part;
    pack.All(templateFile, templateSheet, sheets, activeSheet);
}

class Packer {
  public:
    template <class... Parts>
    void All(const Parts&... parts) {
        (Put(parts), ...);
    }
    std::string Bytes() && { return std::move(bytes_); }

  private:
    void Put(const Plain auto& part) {
        bytes_.append(reinterpret_cast<const char*>(&part), sizeof(part));
    }
    void Put(const std::string& part) {
        Put(part.size());
        bytes_ += part;
    }
    template <class Part>
    void Put(const std::optional<Part>& part) {
        Put(part.has_value());
        if (part) Put(*part);
    }
    template <class Part>
    void Put(const std::vector<Part>& parts) {
        Put(parts.size());
        for (const Part& part : parts)
            Put(part);
    }
    void Put(const CellValue& value) {
        Put(value.index());
        std::visit([this](const auto& only) { Put(only); }, value);
    }
    template <class Part>
    requires std::is_aggregate_v<Part>
    void Put(const Part& part) { Each(part, *this); }

    std::string bytes_;
};

class Unpacker {
  public:
    explicit Unpacker(std::string_view bytes) : bytes_(bytes) {}

    template <class... Parts>
    void All(Parts&... parts) {
        (Take(parts), ...);
    }
    bool AtEnd() const { return bytes_.empty(); }

  private:
    std::string_view Next(std::size_t size) {
        if (size > bytes_.size()) throw std::invalid_argument("workbook");
        const std::string_view next = bytes_.substr(0, size);
        bytes_.remove_prefix(size);
        return next;
    }
    template <Plain Part>
    Part Take() {
        Part part{};
        std::memcpy(&part, Next(sizeof(Part)).data(), sizeof(Part));
        return part;
    }
    void Take(Plain auto& part) { part = Take<std::remove_reference_t<decltype(part)>>(); }
    void Take(bool& part) { part = Take<std::uint8_t>() != 0; }
    void Take(std::string& part) { part = Next(Take<std::size_t>()); }
    template <class Part>
    void Take(std::optional<Part>& part) {
        bool has = false;
        Take(has);
        if (has) Take(part.emplace());
    }
    template <class Part>
    void Take(std::vector<Part>& parts) {
        for (auto left = Take<std::size_t>(); left > 0; --left)
            Take(parts.emplace_back());
    }
    void Take(CellValue& value) {
        if (Take<std::size_t>() == 0) {
            Take(value.emplace<0>());
        } else {
            Take(value.emplace<1>());
        }
    }
    template <class Part>
    requires std::is_aggregate_v<Part>
    void Take(Part& part) { Each(part, *this); }

    std::string_view bytes_;
};

}  // namespace

std::string Packed(const Workbook& workbook) {
    Packer packer;
    packer.All(workbook);
    return std::move(packer).Bytes();
}

Workbook Unpacked(std::string_view bytes) {
    Unpacker unpacker(bytes);
    Workbook workbook;
    unpacker.All(workbook);
    if (!unpacker.AtEnd()) throw std::invalid_argument("workbook");
    return workbook;
}

}  // namespace davo::calc
