// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/link.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QScopeGuard>
#include <QScopedValueRollback>
#include <QTimer>
#include <utility>

#include "common/run_time_error.h"
#include "common/text.h"

namespace davo {

namespace {

constexpr std::string_view kModelCommand = "W";
constexpr std::string_view kLeaveCommand = "X";
constexpr std::string_view kModelStart = "DAVO";
constexpr std::chrono::microseconds kPollPeriod{100};
// About two hundred characters of line time: a reply that paused that long is over.
constexpr std::chrono::milliseconds kModelQuiet{100};
// A line that paused that long has no more of an earlier reply.
constexpr std::chrono::milliseconds kQuietLine{30};
// The rest of one that was left has longer pauses: adapters hand it over in packets, and a busy
// machine takes its time.
constexpr std::chrono::milliseconds kQuietRest{300};

// The hourglass for as long as what it returns lives.
auto ShowBusy(BusyPointer& pointer) {
    pointer.ShowBusyPointer();
    return qScopeGuard([&pointer] { pointer.RestoreMousePointer(); });
}

// The model's text in a reply; nothing while it is not whole.
std::optional<std::string> ModelIn(std::string_view reply) {
    const auto start = reply.find(kModelStart);
    if (start == std::string_view::npos) return std::nullopt;
    const auto end = reply.find(kLineEnd, start);
    if (end == std::string_view::npos) return std::nullopt;
    return std::string(reply.substr(start, end - start));
}

}  // namespace

// Characters on their way one at a time. Works from whatever event loop runs, that of a question
// on the screen too: an instrument that waits for the rest of an upload takes nothing else.
class Link::Pacing {
  public:
    Pacing(Link& link, std::string_view characters, std::string_view echoes,
           std::chrono::milliseconds patience, const std::function<void(std::size_t, bool)>& onSent)
        : link_(link), characters_(characters), echoes_(echoes), onSent_(onSent) {
        limit_.setSingleShot(true);
        limit_.setTimerType(Qt::PreciseTimer);
        limit_.setInterval(patience);
        limit_.callOnTimeout([this] { Next(false); });
    }

    void Begin() { Send(); }
    void TextWaiting() {
        if (Over()) return;
        reply_ += link_.port_.Input();
        if (Contains(reply_, echoes_.substr(done_, 1))) Next(true);
    }
    std::size_t Done() const { return done_; }

  private:
    bool Over() const { return link_.endWait_ || done_ == characters_.size(); }
    void Send() {
        reply_.clear();
        limit_.start();
        link_.port_.Output(characters_.substr(done_, 1));
    }
    void Next(bool echoed) {
        if (Over()) return;
        ++done_;
        onSent_(done_, echoed);
        if (!Over()) {
            Send();
            return;
        }
        limit_.stop();
        link_.Wake();
    }

    Link& link_;
    std::string_view characters_;
    std::string_view echoes_;
    const std::function<void(std::size_t, bool)>& onSent_;
    QTimer limit_;
    std::string reply_;
    std::size_t done_ = 0;
};

Link::Link(SerialPort& port, LinkState& state, Prompts& prompts, BusyPointer& pointer)
    : port_(port), state_(state), prompts_(prompts), pointer_(pointer) {
    port_.OnComm = [this](CommEvent event) { PortEvent(event); };
    port_.OnTextWaiting = [this] { PortTextWaiting(); };
    port_.OnLost = [this](const QString&) { PortLost(); };
}

Link::~Link() {
    port_.OnComm = nullptr;
    port_.OnTextWaiting = nullptr;
    port_.OnLost = nullptr;
}

bool Link::OpenComPort(std::int16_t port) {
    state_.openError.clear();
    try {
        if (state_.portOpen) CloseComPort();
        port_.SetCommPort(port);
        port_.SetSettings("19200,N,8,1");
        port_.SetInputLen(0);
        port_.SetInBufferSize(1024);
        port_.SetPortOpen(true);
        state_.portOpen = true;
    } catch (const RunTimeError& error) {
        state_.portOpen = false;
        state_.openError = error.what();
    }
    state_.openFailed = !state_.portOpen;
    if (OnPortChanged) OnPortChanged();
    return state_.portOpen;
}

void Link::CloseComPort() {
    EndWait();
    state_.portOpen = false;
    port_.SetPortOpen(false);
    if (OnPortChanged) OnPortChanged();
}

std::string Link::SendCommand(std::string_view command, std::string_view expectedReply) {
    return Exchange(command, expectedReply,
                    command == kReadyCommand ? &Link::PollHandshake : &Link::AwaitText);
}

std::string Link::SendCommandAwaitDone(std::string_view command, std::string_view expectedReply) {
    return Exchange(command, expectedReply, &Link::AwaitDone);
}

std::string Link::Exchange(std::string_view command, std::string_view expectedReply,
                           std::string (Link::*await)(std::string_view)) {
    if (command != kLeaveCommand)
        return Wait(command, expectedReply, [&] { return (this->*await)(expectedReply); });
    lastWaitEnded_ = false;
    if (!state_.portOpen) return {};
    const auto busy = ShowBusy(pointer_);
    port_.Output(command);
    return {};
}

std::string Link::Wait(std::string_view command, std::string_view expectedReply,
                       const std::function<std::string()>& await) {
    lastWaitEnded_ = false;
    if (!state_.portOpen || wait_) return {};
    std::string reply;
    {
        const auto busy = ShowBusy(pointer_);
        endWait_ = awake_ = false;
        wait_ = WaitUnderWay{std::string(command), std::string(expectedReply),
                             std::chrono::steady_clock::now()};
        if (OnWaitChanged) OnWaitChanged();
        const auto ended = qScopeGuard([this] {
            wait_.reset();
            if (OnWaitChanged) OnWaitChanged();
        });
        if (!command.empty()) port_.Output(command);
        reply = await();
    }
    if (endWait_) reply.clear();
    // Said only now, with the pointer restored: a box inside the wait would keep the wait alive.
    if (lostMessageDue_) ShowLostMessage();
    lastWaitEnded_ = endWait_;
    isReplyLeft_ |= endWait_;
    return reply;
}

std::string Link::ReadOn(std::string_view expectedReply, std::chrono::milliseconds quiet) {
    return SendCommand({}, expectedReply, quiet);
}

std::string Link::SendCommand(std::string_view command, std::string_view expectedReply,
                              std::chrono::milliseconds quiet) {
    const auto found = [&](const std::string& reply) {
        return !expectedReply.empty() && Contains(reply, expectedReply);
    };
    return Wait(command, expectedReply, [&] { return Gather({}, quiet, found); });
}

std::size_t Link::SendPaced(std::string_view characters, std::string_view echoes,
                            std::chrono::milliseconds patience,
                            const std::function<void(std::size_t, bool)>& onSent) {
    std::size_t done = 0;
    if (characters.empty()) return done;
    Wait({}, {}, [&] {
        QEventLoop loop;
        const QScopedValueRollback current(loop_, &loop);
        Pacing pacing(*this, characters, echoes, patience, onSent);
        const QScopedValueRollback paced(pacing_, &pacing);
        pacing.Begin();
        if (!awake_) loop.exec();
        // An event loop that nobody woke returns because the program is leaving.
        if (!awake_) endWait_ = true;
        done = pacing.Done();
        return std::string();
    });
    return done;
}

void Link::ReplyGrew(std::size_t received) const {
    if (received > 0 && OnReplyGrows) OnReplyGrows(received);
}

std::string Link::PollHandshake(std::string_view expectedReply) {
    std::string reply;
    const auto start = std::chrono::steady_clock::now();
    for (int poll = 1; poll <= kHandshakePolls && !endWait_; ++poll) {
        QCoreApplication::processEvents();
        const std::string text = port_.Input();
        if (text.empty()) {
            // By the clock, not by the sleep: a sleep that overshoots is made up for later.
            port_.WaitForText(start + poll * kPollPeriod);
            continue;
        }
        reply += text;
        if (Contains(reply, expectedReply)) break;
    }
    return reply;
}

std::string Link::AwaitText(std::string_view expectedReply) {
    std::string reply;
    QCoreApplication::processEvents();
    while (!endWait_) {
        const std::string text = port_.Input();
        reply += text;
        if (!text.empty()) ReplyGrew(reply.size());
        if (Contains(reply, expectedReply)) break;
        SleepUntilText();
    }
    return reply;
}

std::string Link::AwaitModel(std::string_view expectedReply) {
    return Gather(AwaitText(expectedReply), kModelQuiet,
                  [](const std::string& reply) { return ModelIn(reply).has_value(); });
}

std::string Link::Gather(std::string reply, std::chrono::milliseconds quiet,
                         const std::function<bool(const std::string&)>& isWhole) {
    while (!endWait_ && !isWhole(reply)) {
        const bool quietNow = !SleepUntilText(quiet);
        const std::string text = port_.Input();
        if (quietNow && text.empty()) break;
        reply += text;
    }
    return reply;
}

std::string Link::AwaitDone(std::string_view) {
    state_.receiveBuffer.clear();
    port_.SetRThreshold(1);
    const auto noMoreEvents = qScopeGuard([this] { port_.SetRThreshold(0); });
    while (!endWait_ && !Contains(state_.receiveBuffer, kRecordEnd)) {
        SleepUntilText();
        ReplyGrew(state_.receiveBuffer.size());
    }
    return state_.receiveBuffer;
}

bool Link::SleepUntilText(std::optional<std::chrono::milliseconds> quiet) {
    if (!awake_) {
        QEventLoop loop;
        const QScopedValueRollback current(loop_, &loop);
        bool timeOut = false;
        if (quiet) {
            QTimer::singleShot(*quiet, &loop, [&] {
                timeOut = true;
                loop.quit();
            });
        }
        loop.exec();
        if (!awake_ && timeOut) return false;
        // An event loop that nobody woke returns because the program is leaving.
        if (!awake_) endWait_ = true;
    }
    awake_ = false;
    return true;
}

bool Link::AskReady(const char* message) {
    if (!SendCommand(kReadyCommand, kReadyReply).empty()) return true;
    if (!lastWaitEnded_ && message != nullptr) prompts_.Message(QLatin1String(message));
    return false;
}

void Link::ClearLine() {
    Input();
    ReadOn({}, std::exchange(isReplyLeft_, false) ? kQuietRest : kQuietLine);
}

bool Link::ReadInstrumentModel(std::string& model, const char* message) {
    model.clear();
    if (!AskReady(message)) return false;
    model = TrimBlanks(Exchange(kModelCommand, kLineEnd, &Link::AwaitModel));
    const auto found = ModelIn(model);
    if (found) model = *found;
    return found.has_value();
}

void Link::EndWait() {
    if (!wait_) return;
    endWait_ = true;
    Wake();
}

void Link::PortEvent(CommEvent event) {
    if (event == CommEvent::Received) {
        state_.receiveChunk = port_.Input();
        state_.receiveBuffer += state_.receiveChunk;
        Wake();
    } else if (event == CommEvent::Overrun) {
        prompts_.MessageAfter(QStringLiteral("Data Lost"));
    } else if (event == CommEvent::ReceiveOverflow) {
        prompts_.MessageAfter(QStringLiteral("Receive buffer overflow"));
    }
}

void Link::PortTextWaiting() {
    if (pacing_ != nullptr) {
        pacing_->TextWaiting();
    } else if (wait_) {
        Wake();
    } else if (OnTextWaiting) {
        OnTextWaiting();
    }
}

void Link::PortLost() {
    state_.portOpen = false;
    state_.openFailed = true;
    lostMessageDue_ = true;
    const bool waiting = wait_.has_value();
    EndWait();
    if (OnLost) OnLost();
    if (OnPortChanged) OnPortChanged();
    if (!waiting) ShowLostMessage();
}

void Link::ShowLostMessage() {
    lostMessageDue_ = false;
    prompts_.MessageAfter(LostMessage());
}

void Link::Wake() {
    awake_ = true;
    if (loop_ != nullptr) loop_->quit();
}

QString Link::LostMessage() {
    return QStringLiteral(
        "The connection to the DAVO was lost.\r\n"
        "Please check the cable and the adapter, then try again.\r\n"
        "All complete shots and records are kept, but not what was running.");
}

}  // namespace davo
