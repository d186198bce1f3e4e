// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "instrument/instrument.h"
#include "link/link.h"
#include "tests/support/pseudo_terminal.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

// The link on a line to the simulated instrument, on a pseudo terminal of its own.
class InstrumentLink {
  public:
    explicit InstrumentLink(Prompts& prompts) : link(*port_, state, prompts, pointer) {}

    void PlugIn(instrument::InstrumentOptions options) {
        options.linkPath = device_.toStdString();
        instrument = std::make_unique<instrument::InstrumentThread>(options);
    }

  private:
    TemporaryFolder lineFolder_;
    QString device_ = lineFolder_.Path("davo-line");
    OneDevice devices_{device_};
    std::unique_ptr<SerialPort> port_ = MakeSerialPort(devices_);

  public:
    std::unique_ptr<instrument::InstrumentThread> instrument;
    LinkState state;
    BusyPointer pointer;
    Link link;
};

}  // namespace davo::test
