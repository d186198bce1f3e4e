// SPDX-License-Identifier: GPL-3.0-or-later
#include <unistd.h>

#include <QByteArray>
#include <QSocketNotifier>
#include <array>

#include "command_input.h"

namespace davo::test {
namespace {

// No thread: one that waits for the input cannot be ended.
class NotifiedInput : public CommandInput {
  public:
    NotifiedInput(std::function<void(const QString&)> onLine, std::function<void()> onEnd)
        : onLine_(std::move(onLine)),
          onEnd_(std::move(onEnd)),
          readable_(STDIN_FILENO, QSocketNotifier::Read) {
        QObject::connect(&readable_, &QSocketNotifier::activated, [this] { Read(); });
    }

  private:
    void Read() {
        std::array<char, 4096> part{};
        const ssize_t length = read(STDIN_FILENO, part.data(), part.size());
        if (length <= 0) {
            readable_.setEnabled(false);
            if (!begun_.isEmpty()) {
                onLine_(QString::fromUtf8(begun_));
            }
            onEnd_();
            return;
        }
        begun_.append(part.data(), length);
        for (qsizetype end = begun_.indexOf('\n'); end >= 0; end = begun_.indexOf('\n')) {
            const QString line = QString::fromUtf8(begun_.first(end));
            begun_.remove(0, end + 1);
            onLine_(line);
        }
    }

    std::function<void(const QString&)> onLine_;
    std::function<void()> onEnd_;
    QSocketNotifier readable_;
    QByteArray begun_;  // of a line whose end has not come yet
};

}  // namespace

std::unique_ptr<CommandInput> ReadCommands(std::function<void(const QString&)> onLine,
                                           std::function<void()> onEnd) {
    return std::make_unique<NotifiedInput>(std::move(onLine), std::move(onEnd));
}

}  // namespace davo::test
