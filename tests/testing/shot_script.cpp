// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/testing/shot_script.h"

#include <numeric>

#include "instrument/conversation.h"

namespace davo::test {

std::size_t ShotScript::Size() const {
    return Bytes().size();
}

std::string ShotScript::Bytes() const {
    return std::accumulate(parts.begin(), parts.end(), std::string());
}

ShotScript RecordScript(std::uint64_t seed, bool ratioOnly, int readings) {
    instrument::ConversationOptions options;
    options.seed = seed;
    instrument::Conversation conversation(options);
    ShotScript script{ratioOnly, {""}};
    conversation.Receive(ratioOnly ? "t" : "T");
    while (conversation.ShotUnderWay() || conversation.NextDue()) {
        const auto due = conversation.NextDue();
        const bool enough = !due || conversation.ReadingsOfStep() >= readings;
        if (conversation.WaitsForConfirmation() && enough) {
            conversation.Receive("\r");
            script.parts.emplace_back();
            continue;
        }
        conversation.Advance(*due);
        script.parts.back() += conversation.TakeOutput();
    }
    return script;
}

void DeliverLines(SequenceRig& rig, const std::string& text) {
    std::size_t from = 0;
    while (from < text.size()) {
        const std::size_t end = std::min(text.find('\n', from), text.size() - 1);
        rig.Say(text.substr(from, end + 1 - from));
        from = end + 1;
    }
}

namespace {

bool MayConfirm(SequenceRig& rig) {
    const ControlView& button = rig.Screen().cmdContinue;
    return button.enabled && button.text != "&Repeat Test";
}

}  // namespace

bool PlayShot(SequenceRig& rig, const ShotScript& script, const Delivery& delivery,
              bool lineIsDead) {
    if (rig.Screen().cmdStart.text == "&Next Test" && rig.modes.testBothMode) {
        rig.prompts.answers = {script.ratioOnly ? Answer::Yes : Answer::No};
    }
    rig.sequence.cmdStart_Click();
    std::size_t position = 0;
    for (std::size_t i = 0; i < script.parts.size(); ++i) {
        const std::string& part = script.parts[i];
        delivery(rig, part, position);
        position += part.size();
        if (i + 1 == script.parts.size()) break;
        const bool readingsComeOn = part.find("I=") != std::string::npos && !lineIsDead;
        for (int more = 0; readingsComeOn && more < 3 && !MayConfirm(rig); ++more) {
            rig.SayLine("I=0.1000 V=100.0");
        }
        if (!MayConfirm(rig)) return false;
        rig.Confirm();
    }
    return true;
}

}  // namespace davo::test
