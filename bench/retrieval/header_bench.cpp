// SPDX-License-Identifier: GPL-3.0-or-later
// How long an upload of the ten header slots takes on a line of 19200 baud against the time of
// that line alone: every character and its echo, one after the other.

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "link/link.h"
#include "retrieval/frmHeader.h"

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

const std::string kErasingReply = "ERASING...H:\r\n";
constexpr int kRuns = 3;
constexpr std::chrono::nanoseconds kCharacter{10 * 1'000'000'000LL / 19200};

// An instrument with header slots that echoes each character as a line of that speed does: it takes
// a character's time to arrive and another one to go back. Everything else it says comes at once.
class HeaderPeer {
    static constexpr std::chrono::microseconds kAwake{300};

  public:
    HeaderPeer() {
        std::array<char, 64> name{};
        if (openpty(&master_, &slave_, name.data(), nullptr, nullptr) != 0) {
            throw std::runtime_error("no pseudo terminal");
        }
        path_ = name.data();
        thread_ = std::thread([this] { Run(); });
    }
    ~HeaderPeer() {
        stop_ = true;
        thread_.join();
        close(slave_);
        close(master_);
    }
    HeaderPeer(const HeaderPeer&) = delete;
    HeaderPeer& operator=(const HeaderPeer&) = delete;

    const std::string& Path() const { return path_; }
    // The times between two characters of the uploads so far, which this forgets then.
    std::vector<double> TakePeriods() { return std::exchange(periods_, {}); }
    // From the moment when the first character of the last upload came to that when the echo of
    // its last one left. To be asked when the upload is over.
    double UploadSeconds() const { return Seconds(ended_ - begun_).count(); }

  private:
    void Run() {
        prctl(PR_SET_TIMERSLACK, 1000);
        while (!stop_) {
            pollfd entry{master_, POLLIN, 0};
            // Just after an echo it looks on without sleeping: a line is never late.
            const bool awake = uploading_ && Clock::now() < ended_ + kAwake;
            constexpr int kLook = 20;  // ms between looks at stop_
            if (poll(&entry, 1, awake ? 0 : kLook) <= 0) continue;
            const auto now = Clock::now();
            char c = 0;
            if (read(master_, &c, 1) != 1) continue;
            if (uploading_) {
                Take(c, now);
            } else {
                Command(c);
            }
        }
    }
    void Command(char c) {
        if (c == 'B') Say("RDY\r\n");
        if (c == 'r') Say(memory_ + "\r\n");
        if (c != 'h') return;
        memory_.clear();
        uploading_ = true;
        Say(kErasingReply);
    }
    void Take(char c, Clock::time_point now) {
        const auto due = now + 2 * kCharacter;
        if (memory_.empty()) {
            begun_ = now;
        } else {
            periods_.push_back(Seconds(now - arrived_).count());
        }
        arrived_ = now;
        memory_ += c;
        uploading_ = memory_.size() < davo::kHeaderMemoryWidth;
        // A sleep wakes late; the last stretch is spent looking at the clock.
        std::this_thread::sleep_until(due - std::chrono::microseconds(80));
        while (Clock::now() < due) {
        }
        ended_ = due;
        Say(c == davo::kEmptySlotFill ? " " : std::string(1, c));
    }
    void Say(const std::string& text) const {
        if (write(master_, text.data(), text.size()) < 0) throw std::runtime_error("write");
    }

    int master_ = -1;
    int slave_ = -1;  // kept, so that the master does not hang up before the port is open
    std::string path_;
    std::string memory_ = std::string(davo::kHeaderMemoryWidth, davo::kEmptySlotFill);
    bool uploading_ = false;
    Clock::time_point arrived_;
    std::vector<double> periods_;
    Clock::time_point begun_;
    Clock::time_point ended_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

class PeerDevice : public davo::PortDevices {
  public:
    explicit PeerDevice(const std::string& path) : path_(QString::fromStdString(path)) {}
    QString DeviceOf(std::int16_t) const override { return path_; }
    std::vector<davo::PresentPort> Present() const override { return {}; }
    bool IsPresent(const QString&) const override { return true; }
    void Assign(std::int16_t, const QString&) override {}
    bool NeedsAssignment() const override { return true; }

  private:
    QString path_;
};

class UnaskedPrompts : public davo::Prompts {
  public:
    void Message(const QString& text, const QString&) override { Fail(text); }
    davo::Answer YesNo(const QString& text, davo::Answer, const QString&) override { Fail(text); }
    davo::Answer YesNoCancel(const QString& text, davo::Answer, const QString&) override {
        Fail(text);
    }
    std::optional<QString> Input(const QString& title, const QString&, const QString&) override {
        Fail(title);
    }
    QString SaveFile(const QString& folder, const QString&, const QString&) override {
        Fail(folder);
    }
    QString OpenFile(const QString& folder, const QString&) override { Fail(folder); }
    QString ChooseFolder(const QString& prompt, const QString&) override { Fail(prompt); }

  private:
    [[noreturn]] static void Fail(const QString& text) {
        throw std::runtime_error(text.toStdString());
    }
};

davo::HeaderSlots FilledSlots() {
    davo::HeaderSlots slots;
    for (int slot = 0; slot < davo::kHeaderSlotCount; slot += 2) {
        davo::HeaderBoxes boxes;
        boxes.fill("HEADER " + std::to_string(slot));
        slots.at(static_cast<std::size_t>(slot)) = davo::PackSlot(boxes);
    }
    return slots;
}

double Median(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// The processor time that this thread has used.
double ProcessorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    const auto of = [](const timeval& time) {
        return Seconds(std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec));
    };
    return (of(usage.ru_utime) + of(usage.ru_stime)).count();
}

void Print(const char* what, const std::vector<double>& uploads, const std::vector<double>& periods,
           double processor) {
    const double pair = 2 * Seconds(kCharacter).count();
    const double line = pair * davo::kHeaderMemoryWidth;
    std::printf(
        "%-24s %.1f ms of line  upload median %.4f, best %.4f of it  character median %.4f  "
        "processor %.4f\n",
        what, line * 1e3, Median(uploads) / line,
        *std::min_element(uploads.begin(), uploads.end()) / line, Median(periods) / pair,
        processor / kRuns / line);
}

// The same characters by a program that does nothing else: what this machine makes of the line.
void MeasureBare(HeaderPeer& peer) {
    const int device = open(peer.Path().c_str(), O_RDWR | O_NOCTTY);
    termios raw{};
    tcgetattr(device, &raw);
    cfmakeraw(&raw);
    tcsetattr(device, TCSANOW, &raw);
    const auto exchange = [device](const std::string& text, std::size_t reply) {
        if (write(device, text.data(), text.size()) < 0) throw std::runtime_error("write");
        std::array<char, 64> bytes{};
        while (reply > 0) {
            const ssize_t size = read(device, bytes.data(), bytes.size());
            if (size <= 0) throw std::runtime_error("read");
            reply -= static_cast<std::size_t>(size);
        }
    };
    const double before = ProcessorSeconds();
    std::vector<double> times;
    for (int run = 0; run < kRuns; ++run) {
        exchange("Fh", kErasingReply.size());
        for (const char c : davo::JoinSlots(FilledSlots()))
            exchange(std::string(1, c), 1);
        times.push_back(peer.UploadSeconds());
    }
    close(device);
    Print("bare read and write", times, peer.TakePeriods(), ProcessorSeconds() - before);
}

void MeasureRules(HeaderPeer& peer, davo::Link& link, davo::Prompts& prompts) {
    davo::HeaderExchange exchange(link, prompts, [] { return false; });
    const double before = ProcessorSeconds();
    std::vector<double> times;
    for (int run = 0; run < kRuns; ++run) {
        if (exchange.Upload(FilledSlots()).end != davo::UploadEnd::Stored) {
            throw std::runtime_error("not stored");
        }
        times.push_back(peer.UploadSeconds());
    }
    Print("upload", times, peer.TakePeriods(), ProcessorSeconds() - before);
}

void MeasureWindow(HeaderPeer& peer, davo::Link& link, davo::Prompts& prompts) {
    davo::HeaderTable header;
    davo::HeaderSlots slots;
    davo::frmHeader window(davo::HeaderMode::Davo, {header, {}, slots, link, [] { return false; }},
                           prompts, nullptr);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    const auto* status = window.findChild<QLabel*>(QStringLiteral("lblUsed"));
    auto* save = window.findChild<QPushButton*>(QStringLiteral("cmdSave"));
    QApplication::processEvents();
    const double before = ProcessorSeconds();
    std::vector<double> times;
    for (int run = 0; run < kRuns; ++run) {
        save->click();
        if (status->text() != QStringLiteral("The DAVO has stored all ten headers.")) {
            throw std::runtime_error(status->text().toStdString());
        }
        times.push_back(peer.UploadSeconds());
    }
    Print("upload from the window", times, peer.TakePeriods(), ProcessorSeconds() - before);
}

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    HeaderPeer peer;
    MeasureBare(peer);
    const PeerDevice devices(peer.Path());
    const auto port = davo::MakeSerialPort(devices);
    davo::LinkState state;
    UnaskedPrompts prompts;
    davo::BusyPointer pointer;
    davo::Link link(*port, state, prompts, pointer);
    if (!link.OpenComPort(1)) return 1;
    MeasureRules(peer, link, prompts);
    MeasureWindow(peer, link, prompts);
    return 0;
}
