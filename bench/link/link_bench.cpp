// SPDX-License-Identifier: GPL-3.0-or-later
// How long exchanges take against the time that their bytes need on a line of 19200 baud, both
// measured in one run over a pseudo terminal, and what waiting costs the processor.

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "link/link.h"

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr std::chrono::nanoseconds kCharacter{10 * 1'000'000'000LL / 19200};

// The far end: takes a command at the line's speed and answers at the line's speed.
class Peer {
  public:
    explicit Peer(std::map<std::string, std::string> replies) : replies_(std::move(replies)) {
        int slave = -1;
        std::array<char, 64> name{};
        if (openpty(&master_, &slave, name.data(), nullptr, nullptr) != 0) {
            throw std::runtime_error("no pseudo terminal");
        }
        path_ = name.data();
        slave_ = slave;  // kept, so that the master does not hang up before the port is open
        thread_ = std::thread([this] { Run(); });
    }
    ~Peer() {
        stop_ = true;
        thread_.join();
        close(slave_);
        close(master_);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    const std::string& Path() const { return path_; }

  private:
    void Run() {
        prctl(PR_SET_TIMERSLACK, 1000);
        while (!stop_) {
            pollfd entry{master_, POLLIN, 0};
            constexpr int kLook = 20;  // ms between looks at stop_
            if (poll(&entry, 1, kLook) <= 0) continue;
            const auto begun = Clock::now();
            std::array<char, 256> bytes{};
            const ssize_t size = read(master_, bytes.data(), bytes.size());
            if (size > 0) Answer(std::string(bytes.data(), static_cast<std::size_t>(size)), begun);
        }
    }
    void Answer(const std::string& command, Clock::time_point begun) {
        auto due = begun + kCharacter * command.size();
        const auto reply = replies_.find(command);
        if (reply == replies_.end()) return;
        for (const char c : reply->second) {
            due += kCharacter;
            // A sleep wakes late; the last stretch is spent looking at the clock.
            std::this_thread::sleep_until(due - std::chrono::microseconds(80));
            while (Clock::now() < due) {
            }
            if (write(master_, &c, 1) != 1) return;
        }
    }

    std::map<std::string, std::string> replies_;
    int master_ = -1;
    int slave_ = -1;
    std::string path_;
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

// No exchange measured here has anything to say.
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

// The processor time that this thread has used.
Seconds ProcessorTime() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    const auto of = [](const timeval& time) {
        return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
    };
    return of(usage.ru_utime) + of(usage.ru_stime);
}

// Prints the median and best of runs against the line's own time.
void Compare(const char* what, std::size_t bytes, int runs, const std::function<bool()>& exchange) {
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        const auto start = Clock::now();
        if (!exchange()) throw std::runtime_error(std::string(what) + ": wrong reply");
        times.push_back(Seconds(Clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    const double line = Seconds(kCharacter).count() * static_cast<double>(bytes);
    std::printf("%-34s %6zu bytes  line %9.3f ms  median %.4f  best %.4f  of line time\n", what,
                bytes, line * 1e3, times[times.size() / 2] / line, times.front() / line);
}

void Cost(const char* what, const std::function<void()>& wait) {
    const auto used = ProcessorTime();
    const auto start = Clock::now();
    wait();
    const double lasted = Seconds(Clock::now() - start).count();
    std::printf("%-34s lasted %.4f s, processor %.4f of it\n", what, lasted,
                Seconds(ProcessorTime() - used).count() / lasted);
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const std::string ready = "RDY\r\n";
    const std::string model = "\r\nDAVO-E 2.05\r\n";
    const std::string directory = std::string(2000, '.') + "\r\nDONE";
    const Peer peer({{"B", ready}, {"W", model}, {"d", directory}, {"c", "c"}});
    const PeerDevice devices(peer.Path());
    const auto port = davo::MakeSerialPort(devices);
    davo::LinkState state;
    UnaskedPrompts prompts;
    davo::BusyPointer pointer;
    davo::Link link(*port, state, prompts, pointer);
    if (!link.OpenComPort(1)) return 1;

    constexpr int kRuns = 101;
    Compare("handshake B", 1 + ready.size(), kRuns,
            [&] { return link.SendCommand("B", ready) == ready; });
    Compare("model query B, W", 2 + ready.size() + model.size(), kRuns, [&] {
        std::string read;
        return link.ReadInstrumentModel(read) && read == "DAVO-E 2.05";
    });
    Compare("one character and its echo", 2, kRuns,
            [&] { return link.SendCommand("c", "c") == "c"; });
    Compare("directory by receive events", 1 + directory.size(), 3,
            [&] { return link.SendCommandAwaitDone("d", "DONE") == directory; });

    const Peer silent({});
    const PeerDevice silentDevices(silent.Path());
    const auto silentPort = davo::MakeSerialPort(silentDevices);
    davo::LinkState silentState;
    davo::Link silentLink(*silentPort, silentState, prompts, pointer);
    if (!silentLink.OpenComPort(1)) return 1;
    Cost("handshake without an answer", [&] { silentLink.SendCommand("B", ready); });
    Cost("wait for a line end, ended", [&] {
        std::thread ender([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(1500));
            QMetaObject::invokeMethod(QCoreApplication::instance(), [&] { silentLink.EndWait(); });
        });
        silentLink.SendCommand("W", "\r\n");
        ender.join();
    });
    return 0;
}
