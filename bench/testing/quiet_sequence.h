// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <utility>

#include "testing/shot_sequence.h"

namespace davo {

// Nothing is sent, and what arrives is put here.
class QuietPort : public SerialPort {
  public:
    void SetCommPort(std::int16_t) override {}
    void SetSettings(std::string_view) override {}
    void SetInputLen(int) override {}
    void SetInBufferSize(int) override {}
    void SetRThreshold(int) override {}
    bool PortOpen() const override { return true; }
    void SetPortOpen(bool) override {}
    void Output(std::string_view) override {}
    std::string Input() override { return std::exchange(waiting, {}); }
    bool WaitForText(Time) override { return false; }

    std::string waiting;
};

class QuietPrompts : public Prompts {
  public:
    void Message(const QString&, const QString&) override {}
    Answer YesNo(const QString&, Answer preset, const QString&) override { return preset; }
    Answer YesNoCancel(const QString&, Answer preset, const QString&) override { return preset; }
    std::optional<QString> Input(const QString&, const QString&, const QString&) override {
        return std::nullopt;
    }
    QString SaveFile(const QString&, const QString&, const QString&) override { return {}; }
    QString OpenFile(const QString&, const QString&) override { return {}; }
    QString ChooseFolder(const QString&, const QString&) override { return {}; }
};

// The test sequence with nothing around it.
class Sequence {
  public:
    ShotSequence& operator*() { return sequence_; }

    // Begins a shot, up to its saturation test.
    void Start() {
        state_.portOpen = true;
        session_.firstShot = false;
        sequence_.cmdStart_Click();
        Arrive("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH\r\n");
        sequence_.Timer1_Timer();
        Arrive("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)\r\n");
        sequence_.Timer1_Timer();
    }
    void Arrive(std::string text) { port_.waiting = std::move(text); }

    // One step over text, as if it had just arrived.
    void Pass(const std::string& text) {
        sequence_.Reply().sessionPending = text;
        sequence_.Reply().sessionWindow = text;
        sequence_.RunTestStep();
    }

  private:
    QuietPort port_;
    LinkState state_;
    QuietPrompts prompts_;
    BusyPointer pointer_;
    Link link_{port_, state_, prompts_, pointer_};
    Clock clock_;
    Places places_;
    TestModes modes_;
    SessionState session_;
    HeaderTable header_;
    ShotSequence sequence_{
        {link_, prompts_, clock_, places_, modes_, session_, header_, [] {}, {}}};
};

}  // namespace davo
