// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <com/sun/star/beans/PropertyValue.hpp>
#include <com/sun/star/beans/XPropertySet.hpp>
#include <com/sun/star/sheet/XSpreadsheetDocument.hpp>
#include <com/sun/star/uno/Any.hxx>
#include <com/sun/star/uno/Reference.hxx>
#include <com/sun/star/uno/Sequence.hxx>
#include <com/sun/star/uno/XComponentContext.hpp>
#include <initializer_list>
#include <map>
#include <string_view>
#include <utility>

#include "reports/workbook.h"

// Small helpers to speak to LibreOffice in its own types.
namespace davo::calc {

namespace sun = ::com::sun::star;
using sun::uno::Any;
using sun::uno::Reference;
using sun::uno::Sequence;
using sun::uno::UNO_QUERY_THROW;
using Context = Reference<sun::uno::XComponentContext>;
using Document = Reference<sun::sheet::XSpreadsheetDocument>;
using PropertySet = Reference<sun::beans::XPropertySet>;

template <class Value>
Sequence<Value> SequenceOf(std::initializer_list<Value> values) {
    return {values.begin(), static_cast<sal_Int32>(values.size())};
}

// Of bytes of Windows-1252.
rtl::OUString ToUno(std::string_view text);
rtl::OUString ToUno(const QString& text);
QString FromUno(const rtl::OUString& text);

// "file:///home/..." of a path.
rtl::OUString UrlOf(const QString& path);

sun::beans::PropertyValue Property(const char* name, const Any& value);

template <class Value>
void Set(const PropertySet& properties, const char* name, const Value& value) {
    properties->setPropertyValue(rtl::OUString::createFromAscii(name), Any(value));
}

// In the order of their names, as many are set at once.
using Properties = std::map<rtl::OUString, Any>;

template <class Value>
std::pair<const rtl::OUString, Any> Named(const char* name, const Value& value) {
    return {rtl::OUString::createFromAscii(name), Any(value)};
}

// All in one call: from outside, each goes to the engine and back.
void SetAll(const Reference<sun::uno::XInterface>& target, const Properties& properties);

template <class Value>
Value Get(const PropertySet& properties, const char* name) {
    Value value{};
    properties->getPropertyValue(rtl::OUString::createFromAscii(name)) >>= value;
    return value;
}

// 0xRRGGBB.
sal_Int32 ColourOf(int paletteIndex);

// "$'Test 1-Graph'.$B$19:$B$58".
rtl::OUString RangeText(std::string_view sheetName, const CellRange& range);

// Hundredths of a millimetre.
sal_Int32 LengthOf(double points);

}  // namespace davo::calc
