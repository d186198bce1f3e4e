// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QTemporaryDir>

#include "instrument/instrument.h"
#include "link/link.h"
#include "link/port_devices.h"
#include "tests/link/pseudo_terminal.h"
#include "tests/support/fake_prompts.h"

namespace davo::test {

// The link on a line to the simulated instrument, which answers without a pause.
class HeaderLine {
  public:
    explicit HeaderLine(bool paced = false, std::vector<instrument::Fault> faults = {})
        : instrument_(Options(paced, std::move(faults))) {}

    instrument::Instrument& Instrument() { return *instrument_; }
    bool Open() { return link.OpenComPort(1); }

  private:
    instrument::InstrumentOptions Options(bool paced, std::vector<instrument::Fault> faults) const {
        instrument::InstrumentOptions options;
        options.linkPath = Device().toStdString();
        options.paced = paced;
        options.conversation.pauseScale = 0;
        options.faults = std::move(faults);
        return options;
    }
    QString Device() const { return folder_.filePath(QStringLiteral("davo-line")); }

    QTemporaryDir folder_;
    instrument::InstrumentThread instrument_;
    OneDevice devices_{Device()};
    std::unique_ptr<SerialPort> port_ = MakeSerialPort(devices_);

  public:
    LinkState state;
    FakePrompts prompts;
    BusyPointer pointer;
    Link link{*port_, state, prompts, pointer};
};

}  // namespace davo::test
