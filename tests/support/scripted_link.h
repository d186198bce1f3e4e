// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "link/link.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/fake_serial_port.h"

namespace davo::test {

// The link on a port that plays a script.
template <class Port = FakeSerialPort, class Pointer = BusyPointer>
struct ScriptedLinkOn {
    explicit ScriptedLinkOn(Prompts& prompts) : link(port, state, prompts, pointer) {}

    Port port;
    LinkState state;
    Pointer pointer;
    Link link;
};
using ScriptedLink = ScriptedLinkOn<>;

struct ScriptedPrompts {
    FakePrompts prompts;
};

// The same with prompts of its own.
template <class Port = FakeSerialPort, class Pointer = BusyPointer>
struct ScriptedLineOn : ScriptedPrompts, ScriptedLinkOn<Port, Pointer> {
    ScriptedLineOn() : ScriptedLinkOn<Port, Pointer>(prompts) {}
};
using ScriptedLine = ScriptedLineOn<>;

}  // namespace davo::test
