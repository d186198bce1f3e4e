// SPDX-License-Identifier: GPL-3.0-or-later
#include <linux/serial.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <QCoreApplication>
#include <QScopedValueRollback>
#include <QSerialPort>
#include <QTimer>
#include <cerrno>
#include <ctime>

#include "common/run_time_error.h"
#include "link/serial_port.h"

namespace davo {

namespace {

using std::chrono::nanoseconds;
using std::chrono::steady_clock;

// What poll(2) says about the device now or at the latest at until.
short PollUntil(int handle, short events, steady_clock::time_point until) {
    pollfd entry{handle, events, 0};
    int result = 0;
    do {
        const nanoseconds left = std::max(nanoseconds(0), nanoseconds(until - steady_clock::now()));
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        const timespec time{static_cast<time_t>(seconds.count()),
                            static_cast<long>((left - seconds).count())};
        result = ppoll(&entry, 1, &time, nullptr);
    } while (result < 0 && errno == EINTR);
    return result > 0 ? entry.revents : short{0};
}

constexpr std::chrono::milliseconds kWatch{250};

constexpr short kGone = POLLHUP | POLLERR | POLLNVAL;

constexpr qint64 kMostGathered = qint64{64} * 1024;  // bytes; the rest has its own event

class QtSerialPort : public SerialPort {
  public:
    explicit QtSerialPort(const PortDevices& devices) : devices_(devices) {
        QObject::connect(&port_, &QSerialPort::readyRead, &context_, [this] {
            if (!gathering_) PostText();
        });
        QObject::connect(&port_, &QSerialPort::errorOccurred, &context_,
                         [this](QSerialPort::SerialPortError error) { PortError(error); });
        // QSerialPort of Qt 6.8 says nothing of a device that has gone.
        watch_.setInterval(kWatch);
        QObject::connect(&watch_, &QTimer::timeout, &context_, [this] {
            if (port_.isOpen() && Gone()) PostLost(qt_error_string(EIO));
        });
    }

    void SetCommPort(std::int16_t port) override { commPort_ = port; }

    void SetSettings(std::string_view settings) override {
        const auto parts =
            QByteArray(settings.data(), static_cast<qsizetype>(settings.size())).split(',');
        if (parts.size() != 4 || parts[1] != "N") {
            throw RunTimeError(ErrorNumber::TypeMismatch, std::string(settings));
        }
        port_.setBaudRate(parts[0].toInt());
        port_.setParity(QSerialPort::NoParity);
        port_.setDataBits(static_cast<QSerialPort::DataBits>(parts[2].toInt()));
        port_.setStopBits(static_cast<QSerialPort::StopBits>(parts[3].toInt()));
    }

    void SetRThreshold(int characters) override {
        rThreshold_ = characters;
        if (rThreshold_ == 0 || !port_.isOpen()) return;
        counted_ = LineErrors();
        // The answer may have arrived before anyone listened.
        if (TextWaits()) PostText();
    }

    bool PortOpen() const override { return port_.isOpen(); }

    void SetPortOpen(bool open) override {
        Close();
        if (!open) return;
        const QString device = devices_.DeviceOf(commPort_);
        const std::string what = "COM" + std::to_string(commPort_) + " " + device.toStdString();
        if (device.isEmpty()) throw RunTimeError(ErrorNumber::InvalidPortNumber, what);
        port_.setPortName(device);
        if (port_.open(QIODevice::ReadWrite)) {
            watch_.start();
            return;
        }
        throw RunTimeError(port_.error() == QSerialPort::DeviceNotFoundError
                               ? ErrorNumber::InvalidPortNumber
                               : ErrorNumber::PortAlreadyOpen,
                           what + ": " + port_.errorString().toStdString());
    }

    void Output(std::string_view bytes) override {
        if (!port_.isOpen()) return;
        port_.write(bytes.data(), static_cast<qint64>(bytes.size()));
        // Off to the driver now; only what it has no room for waits for the event loop.
        port_.flush();
    }

    std::string Input() override {
        if (!port_.isOpen()) return {};
        {
            // What the driver holds belongs to this text too, even when no event loop has run.
            const QScopedValueRollback gathering(gathering_, true);
            // A line that never pauses must not keep the caller here.
            while (port_.bytesAvailable() < kMostGathered &&
                   (PollUntil(Handle(), POLLIN, {}) & POLLIN) != 0 && port_.waitForReadyRead(0)) {
            }
        }
        return port_.readAll().toStdString();
    }

    bool WaitForText(Time until) override {
        if (!port_.isOpen()) return false;
        if (port_.bytesAvailable() > 0) return true;
        const short state = PollUntil(Handle(), POLLIN, until);
        if ((state & kGone) != 0) PostLost(qt_error_string(EIO));
        return (state & (POLLIN | kGone)) == POLLIN;
    }

  private:
    int Handle() { return port_.handle(); }

    bool TextWaits() {
        return port_.bytesAvailable() > 0 || (PollUntil(Handle(), POLLIN, {}) & POLLIN) != 0;
    }

    void Close() {
        watch_.stop();
        if (port_.isOpen()) {
            Drain();
            port_.close();
        }
        QCoreApplication::removePostedEvents(&context_);
        textPosted_ = false;
        lostPosted_ = false;
    }

    // The last command, "X", must leave before the port does: closing puts the line's former
    // speed back at once. A line that takes nothing for 0.2 s is given up.
    void Drain() {
        constexpr int kLongest = 200;  // ms
        while (port_.bytesToWrite() > 0 && port_.waitForBytesWritten(kLongest)) {
        }
        const auto end = steady_clock::now() + std::chrono::milliseconds(kLongest);
        int left = 0;
        while (ioctl(Handle(), TIOCOUTQ, &left) == 0 && left > 0) {
            if (steady_clock::now() > end) return;
            PollUntil(Handle(), 0, steady_clock::now() + std::chrono::milliseconds(1));
        }
        // What is left now is in the chip, a few characters.
        tcdrain(Handle());
    }

    // Callbacks are posted: called from within QSerialPort's own signal they would keep it from
    // reading on while an exchange or a box runs inside them.
    void PostText() {
        if (textPosted_) return;
        textPosted_ = true;
        QMetaObject::invokeMethod(
            &context_,
            [this] {
                textPosted_ = false;
                TellText();
            },
            Qt::QueuedConnection);
    }

    void TellText() {
        if (!port_.isOpen() || !TextWaits()) return;
        if (rThreshold_ > 0) TellErrors();
        if (rThreshold_ > 0 && OnComm) OnComm(CommEvent::Received);
        if (OnTextWaiting) OnTextWaiting();
    }

    // What the driver has counted so far; all zero where it does not count, as a pseudo terminal.
    serial_icounter_struct LineErrors() {
        serial_icounter_struct counted{};
        if (ioctl(Handle(), TIOCGICOUNT, &counted) != 0) return {};
        return counted;
    }

    void TellErrors() {
        const serial_icounter_struct now = LineErrors();
        const serial_icounter_struct before = counted_;
        counted_ = now;
        if (now.overrun != before.overrun && OnComm) OnComm(CommEvent::Overrun);
        if (now.buf_overrun != before.buf_overrun && OnComm) OnComm(CommEvent::ReceiveOverflow);
    }

    bool Gone() {
        termios settings{};
        return (PollUntil(Handle(), 0, {}) & kGone) != 0 || tcgetattr(Handle(), &settings) != 0;
    }

    void PortError(QSerialPort::SerialPortError error) {
        if (!port_.isOpen() || error == QSerialPort::NoError ||
            error == QSerialPort::TimeoutError) {
            return;
        }
        // Text that Input took between the event loop's look and QSerialPort's read leaves that
        // read without any, which QSerialPort takes for the device's end: so the device is asked.
        // QSerialPort has stopped reading then; asked for more than it holds, it begins again.
        if (error == QSerialPort::WriteError || Gone()) {
            PostLost(port_.errorString());
        } else {
            port_.peek(port_.bytesAvailable() + 1);
        }
    }

    void PostLost(const QString& reason) {
        if (lostPosted_) return;
        lostPosted_ = true;
        QMetaObject::invokeMethod(
            &context_,
            [this, reason] {
                port_.close();
                Close();
                if (OnLost) OnLost(reason);
            },
            Qt::QueuedConnection);
    }

    const PortDevices& devices_;
    QObject context_;  // what the posted calls belong to
    QSerialPort port_;
    QTimer watch_;
    std::int16_t commPort_ = 1;
    int rThreshold_ = 0;
    bool gathering_ = false;
    bool textPosted_ = false;
    bool lostPosted_ = false;
    serial_icounter_struct counted_{};
};

}  // namespace

std::unique_ptr<SerialPort> MakeSerialPort(const PortDevices& devices) {
    return std::make_unique<QtSerialPort>(devices);
}

}  // namespace davo
