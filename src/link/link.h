// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "common/prompts.h"
#include "link/serial_port.h"

class QEventLoop;

namespace davo {

struct LinkState {
    bool portOpen = false;
    // The last attempt to open the port failed, or the port was lost; a port that is closed without
    // it was closed in good order.
    bool openFailed = false;
    std::string openError;  // what the last attempt threw, in UTF-8; empty when the port was opened
    std::string instrumentModel;
    std::string receiveBuffer;  // everything the receive event gathered since it was last cleared
    std::string receiveChunk;   // the text of the most recent receive event
};

// Brackets every exchange: the hourglass, and back.
class BusyPointer {
  public:
    virtual ~BusyPointer() = default;
    virtual void ShowBusyPointer() {}
    virtual void RestoreMousePointer() {}
};

// What an exchange under way waits for.
struct WaitUnderWay {
    std::string command;
    std::string expectedReply;
    std::chrono::steady_clock::time_point since;
};

inline constexpr int kHandshakePolls = 30001;

// The question whether the instrument is ready, and its answer.
inline constexpr std::string_view kReadyCommand = "B";
inline constexpr std::string_view kReadyReply = "RDY\r\n";
inline constexpr const char* kNotAvailableMessage =
    "DAVO is not available\r\nor\r\nnot under computer control.";
inline constexpr const char* kNotReadyMessage = "DAVO is not ready.  Please check equipment.";

// The instrument's line: opening, and the two exchanges that everything else is made of. One
// exchange at a time; a second that starts inside a wait is refused with an empty reply. A wait
// runs other events and uses no processor; it ends when the reply is there, when EndWait is
// called, or when the port is lost (then with an empty reply).
class Link {
  public:
    // All must outlive the link.
    Link(SerialPort& port, LinkState& state, Prompts& prompts, BusyPointer& pointer);
    ~Link();
    Q_DISABLE_COPY_MOVE(Link)

    // Closes the port when it is open, sets it up for "19200,N,8,1" and opens it. False without a
    // message when it does not open. The result is also in State().portOpen.
    bool OpenComPort(std::int16_t port);
    void CloseComPort();

    // Sends command and polls until the reply contains expectedReply; "B" makes at most
    // kHandshakePolls polls of about 0.1 ms, anything else waits without limit; "X" returns "" at
    // once and is sent even inside a wait, because leaving the program must free the instrument.
    // Returns the whole reply, whether or not the awaited text is in it; "" when the port is
    // closed, the wait was ended or the port was lost.
    std::string SendCommand(std::string_view command, std::string_view expectedReply);

    // The same for any command, also "B" and "X", but gives up when nothing has come for quiet.
    std::string SendCommand(std::string_view command, std::string_view expectedReply,
                            std::chrono::milliseconds quiet);

    // Asks whether the instrument is ready: any answer counts. Without one message, if any, is
    // shown, but not when the wait was ended or the port was lost: the operator knows then.
    bool AskReady(const char* message);

    // Sends characters (none of them is a command) one at a time, each when the reply to the one
    // before contains the character at its place in echoes, which is as long; when that does not
    // come within patience, the next is sent all the same. onSent gets how many are done with and
    // whether the last of them was echoed; it must not throw, and an EndWait in it keeps the next
    // one back. Sending goes on while a question is on the screen. Returns how many are done with:
    // less than all when the port is closed, the wait was ended or the port was lost.
    std::size_t SendPaced(std::string_view characters, std::string_view echoes,
                          std::chrono::milliseconds patience,
                          const std::function<void(std::size_t done, bool echoed)>& onSent);

    // Sends command and gathers by receive events until "DONE" is there; without limit.
    std::string SendCommandAwaitDone(std::string_view command, std::string_view expectedReply);

    // Throws away what waits and what is still on its way: the rest of a reply whose wait was ended
    // would be taken for the next one.
    void ClearLine();

    // Sends nothing and gathers what still arrives, until it contains expectedReply (never when
    // that is empty) or nothing has come for quiet. "" when the port is closed, the wait was ended
    // or the port was lost.
    std::string ReadOn(std::string_view expectedReply, std::chrono::milliseconds quiet);

    // The model text from "DAVO" up to its line end, once AskReady(message). False
    // when there is none; model then holds the whole trimmed reply. The reply may begin with a line
    // end of its own, so reading goes on until the model is whole or the line is quiet.
    bool ReadInstrumentModel(std::string& model, const char* message = kNotAvailableMessage);

    // Ends the wait under way at once, with an empty reply. Nothing happens without one.
    void EndWait();
    std::optional<WaitUnderWay> CurrentWait() const { return wait_; }
    // Whether EndWait or the loss of the port ended the last exchange, rather than the instrument.
    bool LastWaitEnded() const { return lastWaitEnded_; }

    // For the test session, which polls by itself: what is sent and what is waiting. An Output
    // while an exchange waits is sent all the same.
    void Output(std::string_view bytes) {
        if (state_.portOpen) port_.Output(bytes);
    }
    std::string Input() { return state_.portOpen ? port_.Input() : std::string(); }

    LinkState& State() { return state_; }
    const LinkState& State() const { return state_; }

    // Text has arrived while no exchange waits for it.
    std::function<void()> OnTextWaiting;
    // The port was lost (State().portOpen is already false). Called before the message is shown.
    std::function<void()> OnLost;
    // The port was opened, closed or lost, or could not be opened; before a loss is said.
    std::function<void()> OnPortChanged;
    // The reply of an exchange without limit has grown to so many bytes.
    std::function<void(std::size_t received)> OnReplyGrows;
    // A wait has begun or ended, see CurrentWait.
    std::function<void()> OnWaitChanged;

    // What the operator reads, once, when the cable or the adapter goes away.
    static QString LostMessage();

  private:
    class Pacing;

    void PortEvent(CommEvent event);
    void PortTextWaiting();
    void PortLost();
    void ShowLostMessage();
    void Wake();
    // Sleeps in an event loop until text has arrived, the wait is to end, or quiet has passed.
    // False when quiet has passed.
    bool SleepUntilText(std::optional<std::chrono::milliseconds> quiet = std::nullopt);
    std::string PollHandshake(std::string_view expectedReply);
    std::string AwaitText(std::string_view expectedReply);
    std::string AwaitModel(std::string_view expectedReply);
    std::string AwaitDone(std::string_view expectedReply);
    // reply and what follows it, until it is whole or nothing has come for quiet.
    std::string Gather(std::string reply, std::chrono::milliseconds quiet,
                       const std::function<bool(const std::string&)>& isWhole);
    // Sends command and waits as await does; see the public functions.
    std::string Wait(std::string_view command, std::string_view expectedReply,
                     const std::function<std::string()>& await);
    std::string Exchange(std::string_view command, std::string_view expectedReply,
                         std::string (Link::*await)(std::string_view));
    void ReplyGrew(std::size_t received) const;

    SerialPort& port_;
    LinkState& state_;
    Prompts& prompts_;
    BusyPointer& pointer_;
    std::optional<WaitUnderWay> wait_;
    bool endWait_ = false;
    bool lastWaitEnded_ = false;
    bool isReplyLeft_ = false;  // since the line was cleared
    bool lostMessageDue_ = false;
    bool awake_ = false;  // something happened since the wait last looked
    QEventLoop* loop_ = nullptr;
    Pacing* pacing_ = nullptr;
};

}  // namespace davo
