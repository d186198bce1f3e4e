// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "common/places.h"
#include "common/run_time_error.h"

namespace davo::fuzz {

// What must be so of every input. Where it is not, the run ends and the input that led here is
// kept.
inline void Require(bool holds, std::string_view what) {
    if (holds) return;
    std::cerr << "not so: " << what << std::endl;
    std::abort();
}

// Whether action runs to its end; an error other than those of refusals is none that it may have.
template <class Action>
bool Runs(std::initializer_list<int> refusals, const Action& action) {
    try {
        action();
        return true;
    } catch (const RunTimeError& error) {
        const int number = static_cast<int>(error.Number());
        const bool mayBe = std::find(refusals.begin(), refusals.end(), number) != refusals.end();
        Require(mayBe, error.what());
        return false;
    }
}

// The bytes of an input, taken from their front. Texts end at the byte 1E, so that seeds can be
// read and pieces have a length of their own.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size)
        : bytes_(reinterpret_cast<const char*>(data), size) {}

    bool AtEnd() const { return bytes_.empty(); }
    // 0 behind the end.
    unsigned Byte() {
        if (AtEnd()) return 0;
        const auto byte = static_cast<unsigned char>(bytes_.front());
        bytes_.remove_prefix(1);
        return byte;
    }
    // From 0 to limit - 1.
    int Below(unsigned limit) { return static_cast<int>(Byte() % limit); }
    bool Flag() { return Below(2) == 1; }
    std::string Text() {
        const std::size_t end = bytes_.find(kTextEnd);
        const std::string text(bytes_.substr(0, end));
        bytes_.remove_prefix(std::min(bytes_.size(), text.size() + 1));
        return text;
    }
    std::string Rest() {
        const std::string rest(bytes_);
        bytes_ = {};
        return rest;
    }

  private:
    static constexpr char kTextEnd = '\x1E';
    std::string_view bytes_;
};

// A folder that lasts as long as one input.
class Folder {
  public:
    QString Path() const { return ShownPath(folder_.path() + QLatin1Char('/')); }
    QString Path(const char* name) const { return Path() + QLatin1String(name); }

  private:
    QTemporaryDir folder_;
};

}  // namespace davo::fuzz
