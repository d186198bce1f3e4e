// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "common/clock.h"
#include "common/places.h"
#include "common/prompts.h"
#include "link/link.h"
#include "records/header_table.h"

namespace davo {

// Mode flags that the main window sets.
struct TestModes {
    bool testBothMode = false;
    bool testRatioOnlyMode = false;
    bool modelIsExtended = false;
};

// Process-wide state of the running session.
struct SessionState {
    std::int16_t shotCount = 0;
    std::string testNotes;
    bool firstShot = true;  // until the first shot of the window has been started
    bool testWindowOpen = false;
};

// What the test window needs from around it; all outlive it.
struct TestSurroundings {
    Link& link;
    Prompts& prompts;
    const Clock& clock;
    const Places& places;
    TestModes& modes;
    SessionState& session;
    HeaderTable& header;
    std::function<void()> beep;
    // Opens the port of the settings again when cmdStart finds it closed; whether it is open then.
    std::function<bool()> reopenPort;
};

}  // namespace davo
