// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <random>
#include <string>

#include "tests/support/instrument_link.h"
#include "tests/support/scripted_link.h"

namespace davo::test {

// Of 0 to 25 characters of the page, but for code 255, which marks an empty place.
inline std::string RandomHeaderText(std::mt19937_64& random) {
    std::string text(random() % 3 == 0 ? 0 : random() % 26, ' ');
    for (char& c : text)
        c = static_cast<char>(random() % 2 ? ' ' + random() % 95 : 0xA0 + random() % 95);
    return text;
}

// The link on a line to the simulated instrument, which answers without a pause.
class HeaderLine : public ScriptedPrompts, public InstrumentLink {
  public:
    explicit HeaderLine(std::vector<instrument::Fault> faults = {}) : InstrumentLink(prompts) {
        instrument::InstrumentOptions options;
        options.paced = false;
        options.conversation.pauseScale = 0;
        options.faults = std::move(faults);
        PlugIn(options);
    }

    instrument::Instrument& Instrument() { return **instrument; }
    bool Open() { return link.OpenComPort(1); }
};

}  // namespace davo::test
