// SPDX-License-Identifier: GPL-3.0-or-later
#include <sys/eventfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>

#include "app/end_requests.h"

namespace davo {

namespace {

constexpr std::array<int, 3> kSignals = {SIGTERM, SIGINT, SIGHUP};

// All that a signal handler can reach.
std::atomic<int> wakeUp{-1};

extern "C" void EndRequested(int) {
    const std::uint64_t one = 1;
    // A counter that cannot be written is one that wakes already.
    [[maybe_unused]] const auto written = write(wakeUp, &one, sizeof one);
}

class EndSignals : public QObject {
  public:
    EndSignals()
        : event_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)), notifier_(event_, QSocketNotifier::Read) {
        wakeUp = event_;
        connect(&notifier_, &QSocketNotifier::activated, this, [this] {
            notifier_.setEnabled(false);
            QCoreApplication::quit();
        });
        struct sigaction action = {};
        action.sa_handler = EndRequested;
        action.sa_flags = SA_RESTART | SA_RESETHAND;
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            sigaction(kSignals[i], &action, &before_[i]);
    }

    ~EndSignals() override {
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            sigaction(kSignals[i], &before_[i], nullptr);
        wakeUp = -1;
        close(event_);
    }

  private:
    int event_;
    QSocketNotifier notifier_;
    std::array<struct sigaction, kSignals.size()> before_ = {};
};

}  // namespace

std::unique_ptr<QObject> QuitOnEndRequests() {
    return std::make_unique<EndSignals>();
}

}  // namespace davo
