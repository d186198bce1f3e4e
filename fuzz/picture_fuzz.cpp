// SPDX-License-Identifier: GPL-3.0-or-later
// Number pictures, the general form and the reading of numbers against their references.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include "common/numbers.h"
#include "common/run_time_error.h"
#include "tests/support/number_reference.h"

namespace {

void Expect(const std::string& result, const std::string& reference, double value) {
    if (result == reference) return;
    std::cerr << std::hexfloat << value << ": \"" << result << "\" against \"" << reference
              << "\"\n";
    std::abort();
}

void CheckValue(double value, unsigned hashes, unsigned whole, unsigned decimals) {
    const auto count = [](unsigned number, unsigned limit) {
        return static_cast<int>(number % limit);
    };
    const int wholeDigits = count(whole, 6);
    const int decimalDigits = count(decimals, 12);
    const std::string picture =
        davo::test::PictureText(count(hashes, 6), wholeDigits, decimalDigits);
    Expect(davo::Picture(value, picture),
           davo::test::ReferencePicture(value, wholeDigits, decimalDigits), value);
    Expect(davo::GeneralNumber(value), davo::test::ReferenceGeneral(value), value);
}

void CheckText(const std::string& text) {
    const double reference = davo::test::ReferenceValue(text);
    try {
        if (davo::NumericValue(text) != reference) std::abort();
    } catch (const davo::RunTimeError&) {
        if (!std::isinf(reference)) std::abort();
    }
    davo::WholeNumericValue(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kHead = 3 + sizeof(double);
    // The reference's regular expression is recursive: no long texts.
    constexpr std::size_t kLongestText = 500;
    CheckText(std::string(reinterpret_cast<const char*>(data), std::min(size, kLongestText)));
    if (size < kHead) return 0;
    double value = 0;
    std::memcpy(&value, data + 3, sizeof(value));
    if (std::isfinite(value)) CheckValue(value, data[0], data[1], data[2]);
    return 0;
}
