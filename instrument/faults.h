// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "instrument/random.h"
#include "instrument/send_queue.h"

namespace davo::instrument {

// What is wrong with the instrument or its line. Positions count the bytes on their way to the PC
// from 0, from the moment the faults are set.
enum class FaultKind {
    Silent,        // "silent": hears, but nothing of what it says arrives
    Slow,          // "slow:factor": the line to the PC takes factor times as long (default 10)
    Noise,         // "noise:rate": before each byte, with that probability, a random one (0.01)
    CutLine,       // "cut-line:n": after n bytes nothing passes either way
    DroppedEcho,   // "dropped-echo:k": the k-th echo of a header upload is missing (from 1)
    WrongLengths,  // "wrong-lengths:n": n hexadecimal digits too many, or too few when negative
                   // (-6)
    Unplugged,     // "unplugged:n": after n bytes the device is gone
    Cut,           // "cut:k": byte k and all that follow are lost, the instrument still hears
    Stall,         // "stall:k,ms": byte k and what follows come ms later (without ms: never)
    Double,        // "double:k": byte k comes twice
    Flip,          // "flip:k,b": bit b (0 to 7) of byte k is turned over
};

struct Fault {
    FaultKind kind = FaultKind::Silent;
    double first = 0;   // the argument, or its default
    double second = 0;  // the second argument; stall without one: 0
};

// A fault written as above; nothing when the name is unknown or an argument is no number.
std::optional<Fault> ParseFault(std::string_view text);

// The faults of the line, applied to a stream in memory. DroppedEcho and WrongLengths are the
// conversation's own (see ApplyFaults), Slow is the pace of the line.
class FaultyLine {
  public:
    explicit FaultyLine(std::vector<Fault> faults = {}, std::uint64_t seed = 1);

    void FromInstrument(std::string_view bytes, Micros now);
    // What arrives at the PC by now.
    std::string TakeForPc(Micros now) { return out_.Take(now); }
    std::optional<Micros> NextDue() const { return out_.NextDue(); }
    // What the instrument hears of bytes.
    std::string_view FromPc(std::string_view bytes) const;
    // The device is to disappear (once all that came before has left). Forgotten by PlugIn.
    bool Unplugged() const { return unplugged_; }
    void PlugIn();

    // 1 without Slow.
    double SlowFactor() const;

  private:
    const Fault* Find(FaultKind kind) const;
    bool LineIsCut() const;
    void PassByte(char byte, Micros now);

    std::vector<Fault> faults_;
    Random random_;
    SendQueue out_;
    double passed_ = 0;  // bytes from the instrument so far
    bool unplugged_ = false;
};

struct ConversationOptions;
// Sets what the conversation itself does wrong.
void ApplyFaults(const std::vector<Fault>& faults, ConversationOptions& options);

}  // namespace davo::instrument
