// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/uno.h"

#include <QUrl>
#include <cmath>
#include <com/sun/star/beans/XMultiPropertySet.hpp>
#include <string>

namespace davo::calc {

rtl::OUString ToUno(std::string_view text) {
    return {text.data(), static_cast<sal_Int32>(text.size()), RTL_TEXTENCODING_MS_1252};
}

rtl::OUString ToUno(const QString& text) {
    return {reinterpret_cast<const sal_Unicode*>(text.utf16()),
            static_cast<sal_Int32>(text.size())};
}

QString FromUno(const rtl::OUString& text) {
    return QString::fromUtf16(reinterpret_cast<const char16_t*>(text.getStr()), text.getLength());
}

rtl::OUString UrlOf(const QString& path) {
    return ToUno(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
}

sun::beans::PropertyValue Property(const char* name, const Any& value) {
    return {rtl::OUString::createFromAscii(name), 0, value, sun::beans::PropertyState_DIRECT_VALUE};
}

void SetAll(const Reference<sun::uno::XInterface>& target, const Properties& properties) {
    const auto size = static_cast<sal_Int32>(properties.size());
    Sequence<rtl::OUString> names(size);
    Sequence<Any> values(size);
    sal_Int32 at = 0;
    for (const auto& [name, value] : properties) {
        names.getArray()[at] = name;
        values.getArray()[at++] = value;
    }
    const Reference<sun::beans::XMultiPropertySet> all(target, UNO_QUERY_THROW);
    all->setPropertyValues(names, values);
}

sal_Int32 ColourOf(int paletteIndex) {
    const Rgb colour = PaletteColour(paletteIndex);
    return colour.red << 16 | colour.green << 8 | colour.blue;
}

rtl::OUString RangeText(std::string_view sheetName, const CellRange& range) {
    const auto addressOf = [](CellPlace place) {
        const std::string address = AddressOf(place);
        const std::size_t row = address.find_first_of("0123456789");
        return "$" + address.substr(0, row) + "$" + address.substr(row);
    };
    std::string text = "$'";
    for (const char c : sheetName) {
        text += c;
        if (c == '\'') text += c;
    }
    text += "'." + addressOf(range.first);
    if (!(range.first == range.last)) text += ":" + addressOf(range.last);
    return ToUno(text);
}

sal_Int32 LengthOf(double points) {
    constexpr double kHundredthsOfMillimetrePerPoint = 2540.0 / 72;
    return static_cast<sal_Int32>(std::lround(points * kHundredthsOfMillimetrePerPoint));
}

}  // namespace davo::calc
