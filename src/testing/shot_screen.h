// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace davo {

// Captions of the test window's buttons whose meaning depends on them.
inline constexpr const char* kCaptionStart = "&Start Test";
inline constexpr const char* kCaptionNext = "&Next Test";
inline constexpr const char* kCaptionContinueTest = "&Continue Test";
inline constexpr const char* kCaptionContinue = "&Continue";
inline constexpr const char* kCaptionOk = "&OK";
inline constexpr const char* kCaptionRepeat = "&Repeat Test";

// A plain mirror of the test window: what each control shows, by the control's own name. The
// rules work on it; the window paints what changed and copies what the operator typed into it.
// Texts are Windows-1252; captions hold their "&".
struct ControlView {
    std::string text;
    bool enabled = true;
    bool visible = true;

    bool operator==(const ControlView&) const = default;
};

struct ShotScreen {
    ControlView lblTest{"", true, false};
    ControlView lblTime;
    ControlView txtCur, txtVolt, txtRatio, txtPolarity, txtPE;
    ControlView lblPE{"Percent Error:", false, true};
    ControlView txtHVolt, txtXVolt, txtCRatio;
    ControlView lblCRatio{"Calculated Ratio:", false, true};
    ControlView lblCRCount{"(0)"};
    ControlView lblRatioCount{"Ratio - 0"};
    ControlView lblSatCount{"Sat. - 0"};
    ControlView lblMessage;
    ControlView lblConfirm{"Click <&OK> to Continue", true, false};
    ControlView cmdStart{kCaptionStart};
    ControlView cmdContinue{kCaptionContinueTest, false, true};
    ControlView cmdCancel{"C&ancel Test"};
    ControlView cmdExit{"&Exit"};
    ControlView cmdHeader{"&Header Info"};
    // Beyond the system's own controls: what is wrong with the shot that just completed; empty
    // when it is whole. It stays until the shot is dropped or the next one starts.
    ControlView lblDamage{"", true, false};
    // At the prompt's size: what the window itself has to say, such as that nothing comes any more.
    ControlView lblNotice{"", true, false};

    int shotShown = 0;         // number of the complete shot whose results are shown; 0: of none
    bool shotOnDisk = false;   // the journal, or the capture file, has it as it is shown
    bool shotDropped = false;  // the last one, by Repeat Test
    bool asking = false;       // the instrument, whether it is ready

    bool messageWarns = false;  // lblMessage says what must not be overlooked
    bool noticeWarns = false;   // the same of lblNotice

    void ShowMessage(std::string_view text, bool warns = false) {
        lblMessage.text = text;
        messageWarns = warns;
    }
    void ShowNotice(std::string_view text, bool warns = true) {
        lblNotice = {std::string(text), true, true};
        noticeWarns = warns;
    }
    void HideNotice() { lblNotice = {"", true, false}; }
    bool operator==(const ShotScreen&) const = default;
};

}  // namespace davo
