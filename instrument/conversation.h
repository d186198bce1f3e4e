// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "instrument/memory.h"
#include "instrument/random.h"
#include "instrument/send_queue.h"
#include "instrument/transformer.h"

namespace davo::instrument {

// How a shot goes. Whether it is a full one or a ratio test only is the PC's choice ("T" or "t").
enum class Scenario { Full, RatioOnly, OverVoltage, OutOfPhase, Undetermined };

// "full", "ratio-only", "over-voltage", "out-of-phase", "undetermined". "ratio-only" runs as "full"
// does; it tells RecordShot to start the shot with "t".
std::optional<Scenario> ScenarioByName(std::string_view name);

struct ConversationOptions {
    std::uint64_t seed = 1;
    std::string model = "DAVO-E R3.15";  // sent between two line ends; may be empty
    // The k-th shot runs the k-th scenario and the k-th transformer, from the front again at the
    // end.
    std::vector<Scenario> scenarios = {Scenario::Full};
    std::vector<Transformer> transformers = {};  // empty: all presets
    double readingsPerSecond = 4;
    double pauseScale = 1;  // of every pause and of the time between readings
    std::vector<MemoryRecord> memory = {};
    std::string headerMemory = MakeHeaderMemory();
    bool underComputerControl = true;  // false: at its own panel, deaf to everything
    int droppedEcho = 0;               // the echo (from 1) of a header upload that is not sent
    int extraDigits = 0;  // digits that a shot's record has too many or (below 0) too few
};

// The instrument's side of the line, without a clock and without input or output: what it says
// depends on the options, on the bytes received and on the times of Advance only.
class Conversation {
  public:
    explicit Conversation(ConversationOptions options);
    Conversation(const Conversation&) = delete;  // points into its own options
    Conversation& operator=(const Conversation&) = delete;

    // bytes from the PC, at the time of the last Advance.
    void Receive(std::string_view bytesFromPc);
    // now must not go back. Does all that is due until then.
    void Advance(Micros now);
    // What has been sent by the time of the last Advance and was not taken yet.
    std::string TakeOutput() { return out_.Take(now_); }
    // When Advance has something to do next; nothing: not before bytes arrive.
    std::optional<Micros> NextDue() const;

    // The shots whose record was sent, in order.
    const std::vector<Shot>& Shots() const { return shots_; }
    // The ten slots, kHeaderMemorySize characters.
    const std::string& HeaderMemory() const { return headers_; }
    const ConversationOptions& Options() const { return options_; }
    bool ShotUnderWay() const { return step_ != Step::Idle; }
    bool WaitsForConfirmation() const;
    // Readings sent since the step under way began.
    int ReadingsOfStep() const { return reading_; }

  private:
    enum class Step {
        Idle,
        AskZero,
        AskRange,
        RangeSwitch,  // waits for CR
        AskSaturation,
        Saturation,  // waits for CR
        AskLower,
        Lowering,
        AskRatio,
        Ratio,  // waits for CR
        TellRatio,
        TellPolarity,
        TellRecord,
    };

    void TakeCharacter(char c);
    bool FinishCommand(char c);
    void Command(char c);
    void TakeHeaderCharacter(char c);
    void Locate();
    void SendRecord();

    void StartShot(bool ratioOnly);
    void EndShot();
    void Confirm();
    void RunStep();
    void AskSaturation();
    void AskLower();
    void AskRatio();
    void SaturationReading();
    void LoweringReading();
    void RatioReading();
    void TellRecord();
    std::string RecordText();

    // A pause of low to high milliseconds, scaled.
    Micros Pause(int low, int high);
    Micros ReadingInterval() const;
    void Go(Step step, Micros due);
    // A reply, a moment after what was sent before; Line cuts it into a few pieces.
    void Line(const std::string& text);
    void Reading(double current, double voltage);
    // For bulky replies: one piece.
    void Bulk(const std::string& text);

    ConversationOptions options_;
    Random random_;
    SendQueue out_;
    Micros now_{0};

    bool controlled_;
    std::string command_;  // begun and not finished: "L" with digits, "F"
    const MemoryRecord* located_ = nullptr;
    std::string headers_;
    std::size_t uploadAt_ = kHeaderMemorySize;  // next character of an upload; the size: none
    std::optional<Micros> uploadGivenUp_;

    Step step_ = Step::Idle;
    std::optional<Micros> due_;
    Shot shot_;
    const Transformer* transformer_ = nullptr;
    Scenario scenario_ = Scenario::Full;
    int reading_ = 0;
    int lowerings_ = 0;
    std::size_t started_ = 0;
    std::vector<Shot> shots_;
};

// One shot played from start to end against a PC that confirms every step at once.
struct RecordedShot {
    struct Piece {
        Micros at;
        std::string bytes;  // to the PC
    };
    std::vector<Piece> pieces;
    Shot shot;
    std::string Bytes() const;
};
RecordedShot RecordShot(const ConversationOptions& options, bool ratioOnly);

}  // namespace davo::instrument
