// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

#include <QFile>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <array>
#include <cerrno>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/support/fake_port_devices.h"

namespace davo::test {

// The far end of a pseudo terminal that the port under test opens through a symbolic link, as the
// simulated instrument offers it. Driven by the event loop of the test itself.
class PseudoTerminal {
  public:
    PseudoTerminal() { PlugIn(); }
    ~PseudoTerminal() { Unplug(); }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    // A new terminal under the same link.
    void PlugIn() {
        int slave = -1;
        std::array<char, 64> name{};
        if (openpty(&master_, &slave, name.data(), nullptr, nullptr) != 0) {
            throw std::runtime_error("no pseudo terminal");
        }
        close(slave);
        fcntl(master_, F_SETFL, O_NONBLOCK);
        QFile::remove(Path());
        if (!QFile::link(QString::fromLatin1(name.data()), Path())) {
            throw std::runtime_error("no link");
        }
        onText_ = {};
    }
    // Closing the far end is what pulling the cable's adapter is to the port.
    void Unplug() {
        notifier_.reset();
        if (master_ >= 0) close(master_);
        master_ = -1;
    }

    void Write(std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t written = write(master_, bytes.data(), bytes.size());
            if (written < 0 && errno != EAGAIN) throw std::runtime_error("write");
            if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    // What has come from the port.
    std::string Read() const {
        std::array<char, 4096> bytes{};
        const ssize_t size = read(master_, bytes.data(), bytes.size());
        return size > 0 ? std::string(bytes.data(), static_cast<std::size_t>(size)) : std::string();
    }
    // From now on action gets what comes from the port. Call it while the port is open: without
    // one a terminal is always readable.
    void OnText(std::function<void(const std::string&)> action) {
        onText_ = std::move(action);
        notifier_ = std::make_unique<QSocketNotifier>(master_, QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] {
            const std::string text = Read();
            if (!text.empty()) onText_(text);
        });
    }

    QString Path() const { return folder_.filePath(QStringLiteral("davo-line")); }

  private:
    QTemporaryDir folder_;
    int master_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::function<void(const std::string&)> onText_;
};

}  // namespace davo::test
