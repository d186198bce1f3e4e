// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/instrument.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "common/run_time_error.h"

namespace davo::instrument {

namespace {

// Also how long a written byte may take until it counts as unread.
constexpr Micros kUnplugLook = std::chrono::milliseconds(20);
constexpr Micros kUnplugPatience = std::chrono::seconds(1);

ConversationOptions WithFaults(ConversationOptions conversation, const std::vector<Fault>& faults) {
    ApplyFaults(faults, conversation);
    return conversation;
}

timespec ToTimespec(Micros time) {
    return {time.count() / 1000000, time.count() % 1000000 * 1000};
}

void Earlier(std::optional<Micros>& earliest, std::optional<Micros> other) {
    if (other && (!earliest || *other < *earliest)) earliest = other;
}

}  // namespace

Instrument::Instrument(InstrumentOptions options)
    : options_(std::move(options)),
      conversation_(WithFaults(options_.conversation, options_.faults)),
      faulty_(options_.faults, options_.conversation.seed),
      toPc_(BytesPerSecondToPc()),
      fromPc_(options_.paced ? kBytesPerSecond : 0),
      log_(options_.logPath),
      pty_(options_.linkPath),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (wake_ < 0) throw RunTimeError(ErrorNumber::DeviceInputOutput, "event descriptor");
}

Instrument::~Instrument() {
    close(wake_);
}

double Instrument::BytesPerSecondToPc() const {
    const double slow = faulty_.SlowFactor();
    if (slow > 1) return kBytesPerSecond / slow;
    return options_.paced ? kBytesPerSecond : 0;
}

Micros Instrument::Now() const {
    return std::chrono::duration_cast<Micros>(std::chrono::steady_clock::now() - start_);
}

void Instrument::Run(int stopDescriptor) {
    while (true) {
        {
            const std::lock_guard lock(mutex_);
            if (stopped_) return;
            Serve();
        }
        Sleep(stopDescriptor);
        if (stopDescriptor < 0) continue;
        pollfd stop{stopDescriptor, POLLIN, 0};
        if (poll(&stop, 1, 0) > 0) return;
    }
}

void Instrument::Serve() {
    const Micros now = Now();
    const std::string written = pty_.Read();
    log_.FromPc(written, now);
    fromPc_.Put(written, now);

    conversation_.Advance(now);
    conversation_.Receive(faulty_.FromPc(fromPc_.Take(now)));
    conversation_.Advance(now);
    faulty_.FromInstrument(conversation_.TakeOutput(), now);
    toPc_.Put(faulty_.TakeForPc(now), now);

    const std::string sent = toPc_.Take(now);
    log_.ToPc(sent, now);
    pty_.Write(sent);
    UnplugWhenRead(now);
}

// A terminal that is closed takes with it what the PC has not read, so the device goes when the PC
// has read what came before, or when it does not read at all.
void Instrument::UnplugWhenRead(Micros now) {
    if (!faulty_.Unplugged() || !toPc_.Empty() || !pty_.PluggedIn()) return;
    if (!unplugLatest_) {
        unplugLatest_ = now + kUnplugPatience;
        nextUnplugLook_ = now + kUnplugLook;
    }
    if (now < *nextUnplugLook_) return;
    if (pty_.Unread() > 0 && now < *unplugLatest_) {
        nextUnplugLook_ = now + kUnplugLook;
        return;
    }
    nextUnplugLook_.reset();
    unplugLatest_.reset();
    pty_.Unplug();
}

std::optional<Micros> Instrument::NextDue() const {
    std::optional<Micros> due = conversation_.NextDue();
    Earlier(due, faulty_.NextDue());
    Earlier(due, toPc_.NextDue());
    Earlier(due, fromPc_.NextDue());
    Earlier(due, nextUnplugLook_);
    return due;
}

void Instrument::Sleep(int stopDescriptor) {
    std::array<pollfd, 3> waits{};
    timespec timeout{};
    bool limited = false;
    {
        const std::lock_guard lock(mutex_);
        const auto ready = static_cast<short>(pty_.WriteWaits() ? POLLIN | POLLOUT : POLLIN);
        waits = {{{wake_, POLLIN, 0}, {pty_.Descriptor(), ready, 0}, {stopDescriptor, POLLIN, 0}}};
        if (const std::optional<Micros> due = NextDue()) {
            limited = true;
            timeout = ToTimespec(std::max(Micros{0}, *due - Now()));
        }
    }
    ppoll(waits.data(), waits.size(), limited ? &timeout : nullptr, nullptr);
    std::uint64_t ignored = 0;
    if ((waits[0].revents & POLLIN) != 0) {
        [[maybe_unused]] const ssize_t length = read(wake_, &ignored, sizeof ignored);
    }
}

void Instrument::Wake() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t length = write(wake_, &one, sizeof one);
}

void Instrument::Stop() {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
    Wake();
}

void Instrument::Unplug() {
    const std::lock_guard lock(mutex_);
    pty_.Unplug();
    Wake();
}

void Instrument::PlugIn() {
    const std::lock_guard lock(mutex_);
    faulty_.PlugIn();
    nextUnplugLook_.reset();
    unplugLatest_.reset();
    toPc_.Clear();
    fromPc_.Clear();
    pty_.PlugIn();
    Wake();
}

void Instrument::SetFaults(std::vector<Fault> faults) {
    const std::lock_guard lock(mutex_);
    options_.faults = std::move(faults);
    nextUnplugLook_.reset();
    unplugLatest_.reset();
    faulty_ = FaultyLine(options_.faults, options_.conversation.seed);
    toPc_ = PacedLine(BytesPerSecondToPc());
    Wake();
}

bool Instrument::PluggedIn() const {
    const std::lock_guard lock(mutex_);
    return pty_.PluggedIn();
}

std::vector<Shot> Instrument::Shots() const {
    const std::lock_guard lock(mutex_);
    return conversation_.Shots();
}

std::string Instrument::HeaderMemory() const {
    const std::lock_guard lock(mutex_);
    return conversation_.HeaderMemory();
}

std::string Instrument::AllToPc() const {
    const std::lock_guard lock(mutex_);
    return log_.AllToPc();
}

std::string Instrument::AllFromPc() const {
    const std::lock_guard lock(mutex_);
    return log_.AllFromPc();
}

InstrumentThread::InstrumentThread(InstrumentOptions options)
    : instrument_(std::move(options)), thread_([this] { instrument_.Run(); }) {}

InstrumentThread::~InstrumentThread() {
    instrument_.Stop();
    thread_.join();
}

}  // namespace davo::instrument
