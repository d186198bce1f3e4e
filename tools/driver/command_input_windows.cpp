// SPDX-License-Identifier: GPL-3.0-or-later
#include <QObject>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>

#include "command_input.h"

namespace davo::test {
namespace {

// The event loop cannot wait for a pipe here, so a thread does. Nothing ends its wait but the end
// of the process; what it knows of the program it knows through this.
struct Reached {
    std::mutex mutex;
    QObject* target = nullptr;  // null when the program has no driver any more
};

class ThreadedInput : public CommandInput {
  public:
    ThreadedInput(std::function<void(const QString&)> onLine, std::function<void()> onEnd) {
        reached_->target = &target_;
        std::thread([reached = reached_, onLine = std::move(onLine), onEnd = std::move(onEnd)] {
            const auto post = [&reached](const auto& act) {
                const std::lock_guard lock(reached->mutex);
                if (reached->target != nullptr) {
                    QMetaObject::invokeMethod(reached->target, act, Qt::QueuedConnection);
                }
            };
            std::string line;
            while (std::getline(std::cin, line)) {
                post([onLine, text = QString::fromStdString(line)] { onLine(text); });
            }
            post(onEnd);
        }).detach();
    }
    ~ThreadedInput() override {
        const std::lock_guard lock(reached_->mutex);
        reached_->target = nullptr;
    }
    Q_DISABLE_COPY_MOVE(ThreadedInput)

  private:
    std::shared_ptr<Reached> reached_ = std::make_shared<Reached>();
    QObject target_;
};

}  // namespace

std::unique_ptr<CommandInput> ReadCommands(std::function<void(const QString&)> onLine,
                                           std::function<void()> onEnd) {
    return std::make_unique<ThreadedInput>(std::move(onLine), std::move(onEnd));
}

}  // namespace davo::test
