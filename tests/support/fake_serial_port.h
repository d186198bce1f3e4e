// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/run_time_error.h"
#include "link/serial_port.h"

namespace davo::test {

// A serial port that plays a script. Like the real one it delivers from the event loop only, and
// never from inside a call. WaitForText returns at once, so that a whole handshake is quick.
class FakeSerialPort : public SerialPort {
  public:
    using Delay = std::chrono::milliseconds;

    // --- the script ---

    // The next step: once exactly output has been sent, reply arrives (in one piece) after delay.
    // Steps are used up in order; an Output that is not the first step's leaves the step as it is
    // and is kept in unexpected.
    FakeSerialPort& OnOutput(std::string output, std::string reply, Delay delay = Delay(0)) {
        steps.push_back({std::move(output),
                         [this, reply = std::move(reply), delay] { Deliver(reply, delay); }});
        return *this;
    }
    // The next step with any effect, such as Unplug or several deliveries.
    FakeSerialPort& OnOutputDo(std::string output, std::function<void()> effect) {
        steps.push_back({std::move(output), std::move(effect)});
        return *this;
    }
    // Answers output whenever it is sent and is not the first step's.
    FakeSerialPort& Always(std::string output, std::string reply) {
        always.emplace_back(std::move(output), std::move(reply));
        return *this;
    }
    // Text that arrives after delay without having been asked for.
    void Deliver(const std::string& text, Delay delay = Delay(0)) {
        Later(delay, [this, text] { Arrive(text); });
    }
    // An event of the serial control (the errors; text has Deliver).
    void Raise(CommEvent event, Delay delay = Delay(0)) {
        Later(delay, [this, event] {
            if (open && OnComm) OnComm(event);
        });
    }
    // The cable is pulled.
    void Unplug(Delay delay = Delay(0)) {
        Later(delay, [this] {
            if (!open) return;
            open = false;
            waiting.clear();
            if (OnLost) OnLost(QStringLiteral("unplugged"));
        });
    }

    // When set, opening fails with it.
    std::optional<ErrorNumber> failOpen;

    // --- what happened ---

    std::vector<std::string> properties;  // "CommPort=1", "PortOpen=True", ... in order of setting
    std::vector<std::string> sent;        // each Output
    std::vector<std::string> unexpected;  // each Output that no step and no Always answers
    int inputs = 0;                       // calls of Input
    int waits = 0;                        // calls of WaitForText

    struct Step {
        std::string output;
        std::function<void()> effect;
    };
    std::deque<Step> steps;  // what is left of the script
    std::vector<std::pair<std::string, std::string>> always;
    bool open = false;
    int rThreshold = 0;
    std::string waiting;            // arrived and not yet taken
    std::function<void()> onInput;  // before the text is taken

    // --- the interface ---

    void SetCommPort(std::int16_t port) override {
        properties.push_back("CommPort=" + std::to_string(port));
    }
    void SetSettings(std::string_view settings) override {
        properties.push_back("Settings=" + std::string(settings));
    }
    void SetInputLen(int characters) override {
        properties.push_back("InputLen=" + std::to_string(characters));
    }
    void SetInBufferSize(int characters) override {
        properties.push_back("InBufferSize=" + std::to_string(characters));
    }
    void SetRThreshold(int characters) override {
        properties.push_back("RThreshold=" + std::to_string(characters));
        rThreshold = characters;
        if (rThreshold > 0 && !waiting.empty()) Deliver({});
    }
    bool PortOpen() const override { return open; }
    void SetPortOpen(bool wanted) override {
        properties.emplace_back(wanted ? "PortOpen=True" : "PortOpen=False");
        if (wanted && failOpen) throw RunTimeError(*failOpen);
        open = wanted;
        waiting.clear();
    }
    void Output(std::string_view bytes) override {
        if (!open) return;
        sent.emplace_back(bytes);
        if (!steps.empty() && steps.front().output == bytes) {
            const auto effect = std::move(steps.front().effect);
            steps.pop_front();
            effect();
            return;
        }
        for (const auto& [output, reply] : always) {
            if (output != bytes) continue;
            Deliver(reply);
            return;
        }
        unexpected.emplace_back(bytes);
    }
    std::string Input() override {
        ++inputs;
        if (onInput) onInput();
        return std::exchange(waiting, {});
    }
    bool WaitForText(Time) override {
        ++waits;
        return !waiting.empty();
    }

  private:
    template <class Effect>
    void Later(Delay delay, Effect effect) {
        QTimer::singleShot(delay, &context_, std::move(effect));
    }
    void Arrive(const std::string& text) {
        if (!open) return;
        waiting += text;
        if (waiting.empty()) return;
        if (rThreshold > 0 && OnComm) OnComm(CommEvent::Received);
        if (OnTextWaiting) OnTextWaiting();
    }

    QObject context_;  // what is still to come ends with the port
};

}  // namespace davo::test
