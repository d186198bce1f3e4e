#pragma once

#include "common/settings.h"
#include "link/link.h"
#include "records/header_table.h"
#include "testing/test_sequence.h"

namespace davo {

// The process-wide state: one value per owner, for the whole run. The program makes it and hands
// its parts down by reference.
struct ProgramState {
    Settings settings;
    LinkState linkState;
    HeaderTable header;
    TestModes modes;
    SessionState session;
};

// What the windows need from around them; all outlive them.
struct ProgramServices {
    SettingsStore& store;
    const Places& places;
    const Clock& clock;
    Prompts& prompts;
    Link& link;
    std::function<void()> beep;
};

}  // namespace davo
