// SPDX-License-Identifier: GPL-3.0-or-later
#include <windows.h>

#include <QCoreApplication>
#include <QObject>
#include <QTimer>
#include <QWinEventNotifier>
#include <array>
#include <utility>

#include "common/run_time_error.h"
#include "link/serial_port.h"

// Windows 10, version 1803; older headers do not know it, older systems refuse it.
#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace davo {

namespace {

using std::chrono::steady_clock;

constexpr auto kLongestDrain = std::chrono::milliseconds(200);
// For taking what the driver says it holds; text that something else threw away never comes.
constexpr auto kLongestTake = std::chrono::milliseconds(200);
// There are drivers that leave a read waiting when their adapter is pulled out.
constexpr auto kPresencePeriod = std::chrono::milliseconds(1000);

// What Windows says about an error of its own, in UTF-8.
std::string SystemText(DWORD error) {
    return qt_error_string(static_cast<int>(error)).trimmed().toStdString();
}

// A timer as fine as the system has it; where it has no fine one, an ordinary one.
class FineTimer {
  public:
    FineTimer()
        : timer_(::CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION,
                                          TIMER_ALL_ACCESS)) {
        if (timer_ == nullptr) timer_ = ::CreateWaitableTimerW(nullptr, FALSE, nullptr);
    }
    Q_DISABLE_COPY_MOVE(FineTimer)
    ~FineTimer() { ::CloseHandle(timer_); }

    HANDLE Handle() const { return timer_; }

  private:
    HANDLE timer_;
};

// One overlapped operation of a handle at a time, with its event. The handle must be cancelled
// before it is closed: the system writes into what is here.
class Overlapped {
  public:
    Overlapped() { state_.hEvent = ::CreateEventW(nullptr, TRUE, FALSE, nullptr); }
    Q_DISABLE_COPY_MOVE(Overlapped)
    ~Overlapped() { ::CloseHandle(state_.hEvent); }

    // Begin an operation; bytes must stay where they are until it has ended. 0 or a system error.
    DWORD Read(HANDLE file, char* bytes, DWORD size) {
        return Begun(::ReadFile(file, bytes, size, nullptr, &state_));
    }
    DWORD Write(HANDLE file, const char* bytes, DWORD size) {
        return Begun(::WriteFile(file, bytes, size, nullptr, &state_));
    }

    // One was begun and its result was not taken.
    bool Pending() const { return pending_; }

    // Its result: 0 and the bytes moved, ERROR_IO_INCOMPLETE while it goes on, or its error.
    DWORD Result(HANDLE file, DWORD& size) {
        // The event decides, not the state: where the state is written first, the event of this
        // operation would end the wait for the next one.
        if (::WaitForSingleObject(state_.hEvent, 0) != WAIT_OBJECT_0) return ERROR_IO_INCOMPLETE;
        if (::GetOverlappedResult(file, &state_, &size, FALSE) != 0) {
            pending_ = false;
            ::ResetEvent(state_.hEvent);
            return ERROR_SUCCESS;
        }
        const DWORD error = ::GetLastError();
        if (error != ERROR_IO_INCOMPLETE) pending_ = false;
        return error;
    }

    // The same, and waits for its end; ends it after longest, with what was moved until then.
    DWORD Finish(HANDLE file, DWORD& size, std::chrono::milliseconds longest, HANDLE timer) {
        if (Wait(steady_clock::now() + longest, timer)) return Result(file, size);
        size = Cancel(file);
        return ERROR_SUCCESS;
    }

    // Sleeps until it ends (true) or the time has come; timer is free to be used.
    bool Wait(steady_clock::time_point until, HANDLE timer) {
        using Ticks = std::chrono::duration<LONGLONG, std::ratio<1, 10'000'000>>;
        const auto left = std::chrono::duration_cast<Ticks>(until - steady_clock::now()).count();
        if (left <= 0) return ::WaitForSingleObject(state_.hEvent, 0) == WAIT_OBJECT_0;
        LARGE_INTEGER due{};
        due.QuadPart = -left;  // negative: from now
        ::SetWaitableTimer(timer, &due, 0, nullptr, nullptr, FALSE);
        const std::array<HANDLE, 2> either = {state_.hEvent, timer};
        return ::WaitForMultipleObjects(2, either.data(), FALSE, INFINITE) == WAIT_OBJECT_0;
    }

    // Ends it and waits for that; the bytes moved until then.
    DWORD Cancel(HANDLE file) {
        if (!pending_) return 0;
        ::CancelIoEx(file, &state_);
        DWORD size = 0;
        ::GetOverlappedResult(file, &state_, &size, TRUE);
        pending_ = false;
        ::ResetEvent(state_.hEvent);
        return size;
    }

    HANDLE Event() const { return state_.hEvent; }

  private:
    // An operation that was done at once signals the event, too: one way for both.
    DWORD Begun(BOOL done) {
        const DWORD error = done != 0 ? ERROR_SUCCESS : ::GetLastError();
        pending_ = done != 0 || error == ERROR_IO_PENDING;
        return pending_ ? ERROR_SUCCESS : error;
    }

    OVERLAPPED state_{};
    bool pending_ = false;
};

// Reads one character without a time limit, and with it whatever has arrived behind it: that wakes
// at the first character and costs nothing while the line is quiet, whatever the driver makes of
// the finer points of time limits.
class WindowsSerialPort : public SerialPort {
  public:
    explicit WindowsSerialPort(const PortDevices& devices) : devices_(devices) {
        QObject::connect(&readNotifier_, &QWinEventNotifier::activated, &context_, [this] {
            Gather();
            if (!text_.empty()) PostText();
        });
        QObject::connect(&writeNotifier_, &QWinEventNotifier::activated, &context_,
                         [this] { WriteOn(); });
        QObject::connect(&presence_, &QTimer::timeout, &context_, [this] {
            COMSTAT queue{};
            AskQueue(queue);
        });
    }
    Q_DISABLE_COPY_MOVE(WindowsSerialPort)
    ~WindowsSerialPort() override { Close(); }

    void SetCommPort(std::int16_t port) override { commPort_ = port; }

    void SetSettings(std::string_view settings) override {
        const auto parts =
            QByteArray(settings.data(), static_cast<qsizetype>(settings.size())).split(',');
        if (parts.size() != 4 || parts[1] != "N") {
            throw RunTimeError(ErrorNumber::TypeMismatch, std::string(settings));
        }
        state_.DCBlength = sizeof state_;
        state_.BaudRate = parts[0].toUInt();
        state_.ByteSize = static_cast<BYTE>(parts[2].toUInt());
        state_.StopBits = parts[3] == "2" ? TWOSTOPBITS : ONESTOPBIT;
    }

    void SetRThreshold(int characters) override {
        rThreshold_ = characters;
        if (rThreshold_ == 0 || !PortOpen()) return;
        errors_ = 0;
        // The answer may have arrived before anyone listened.
        Gather();
        if (!text_.empty()) PostText();
    }

    bool PortOpen() const override { return port_ != INVALID_HANDLE_VALUE; }

    void SetPortOpen(bool open) override {
        Close();
        if (!open) return;
        const QString device = devices_.DeviceOf(commPort_);
        const std::string what = "COM" + std::to_string(commPort_);
        if (device.isEmpty()) throw RunTimeError(ErrorNumber::InvalidPortNumber, what);
        const std::wstring path = (QStringLiteral("\\\\.\\") + device).toStdWString();
        port_ = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_FLAG_OVERLAPPED, nullptr);
        if (!PortOpen()) {
            const DWORD error = ::GetLastError();
            const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
                                 error == ERROR_DEV_NOT_EXIST;
            throw RunTimeError(
                missing ? ErrorNumber::InvalidPortNumber : ErrorNumber::PortAlreadyOpen,
                what + ": " + SystemText(error));
        }
        if (!Configure()) {
            const std::string reason = SystemText(::GetLastError());
            Close();
            throw RunTimeError(ErrorNumber::PortAlreadyOpen, what + ": " + reason);
        }
        StartReading();
        readNotifier_.setEnabled(true);
        presence_.start(kPresencePeriod);
    }

    void Output(std::string_view bytes) override {
        if (!PortOpen() || bytes.empty()) return;
        waiting_.append(bytes);
        if (!write_.Pending()) WriteOn();
    }

    std::string Input() override {
        Gather();
        return std::exchange(text_, {});
    }

    bool WaitForText(Time until) override {
        Gather();
        while (text_.empty() && PortOpen() && read_.Pending()) {
            if (!read_.Wait(until, timer_.Handle())) return false;
            Gather();
        }
        return !text_.empty();
    }

  private:
    bool Configure() {
        DCB state{};
        state.DCBlength = sizeof state;
        if (::GetCommState(port_, &state) == 0) return false;
        state.BaudRate = state_.BaudRate;
        state.Parity = NOPARITY;
        state.ByteSize = state_.ByteSize;
        state.StopBits = state_.StopBits;
        state.fBinary = TRUE;
        state.fParity = FALSE;
        state.fOutxCtsFlow = FALSE;
        state.fOutxDsrFlow = FALSE;
        state.fDsrSensitivity = FALSE;
        state.fOutX = FALSE;
        state.fInX = FALSE;
        state.fErrorChar = FALSE;
        state.fNull = FALSE;
        // An error on the line must not stop the text behind it.
        state.fAbortOnError = FALSE;
        state.fDtrControl = DTR_CONTROL_ENABLE;
        state.fRtsControl = RTS_CONTROL_ENABLE;
        if (::SetCommState(port_, &state) == 0) return false;
        COMMTIMEOUTS none{};
        return ::SetCommTimeouts(port_, &none) != 0;
    }

    void StartReading() {
        if (const DWORD error = read_.Read(port_, &first_, 1); error != 0) Lose(error);
    }

    // Takes what has arrived into text_ and listens for more.
    void Gather() {
        while (PortOpen() && read_.Pending()) {
            DWORD size = 0;
            const DWORD result = read_.Result(port_, size);
            if (result == ERROR_IO_INCOMPLETE) return;
            const bool empty = size == 0 && (result == 0 || result == ERROR_BROKEN_PIPE);
            // Some drivers end a read without text although the device is there.
            if (empty ? !IsThere() : result != 0) {
                Lose(result != 0 ? result : ERROR_DEVICE_NOT_CONNECTED);
                return;
            }
            if (!empty) {
                text_.push_back(first_);
                if (!TakeQueue()) return;
            }
            StartReading();
        }
    }

    bool IsThere() {
        DCB state{};
        state.DCBlength = sizeof state;
        return ::GetCommState(port_, &state) != 0;
    }

    // What the driver holds, and the errors on the line since it was last asked. False when the
    // device does not answer: it is gone.
    bool AskQueue(COMSTAT& queue) {
        DWORD errors = 0;
        if (::ClearCommError(port_, &errors, &queue) == 0) {
            Lose(::GetLastError());
            return false;
        }
        errors_ |= errors;
        return true;
    }

    // What the driver holds behind the first character; it is there, so nothing waits.
    bool TakeQueue() {
        COMSTAT queue{};
        if (!AskQueue(queue)) return false;
        if (queue.cbInQue == 0) return true;
        std::string more(queue.cbInQue, '\0');
        DWORD size = 0;
        DWORD result = read_.Read(port_, more.data(), queue.cbInQue);
        if (result == 0) result = read_.Finish(port_, size, kLongestTake, timer_.Handle());
        if (result != 0) {
            Lose(result);
            return false;
        }
        text_.append(more, 0, size);
        return true;
    }

    void WriteOn() {
        if (!PortOpen()) return;
        if (write_.Pending()) {
            DWORD size = 0;
            const DWORD result = write_.Result(port_, size);
            if (result == ERROR_IO_INCOMPLETE) return;
            if (result != 0) return Lose(result);
            writing_.erase(0, size);
        }
        writing_ += std::exchange(waiting_, {});
        if (writing_.empty()) {
            writeNotifier_.setEnabled(false);
            return;
        }
        const DWORD error =
            write_.Write(port_, writing_.data(), static_cast<DWORD>(writing_.size()));
        if (error != 0) return Lose(error);
        writeNotifier_.setEnabled(true);
    }

    // The last command, "X", must leave before the port does. A line that takes nothing for 0.2 s
    // is given up.
    void Drain() {
        const auto end = steady_clock::now() + kLongestDrain;
        while (PortOpen() && write_.Pending()) {
            if (!write_.Wait(end, timer_.Handle())) return;
            WriteOn();
        }
        while (PortOpen() && steady_clock::now() < end) {
            DWORD errors = 0;
            COMSTAT queue{};
            if (::ClearCommError(port_, &errors, &queue) == 0 || queue.cbOutQue == 0) return;
            ::Sleep(1);
        }
    }

    void Close() {
        if (PortOpen() && !lostPosted_) Drain();
        readNotifier_.setEnabled(false);
        writeNotifier_.setEnabled(false);
        presence_.stop();
        if (PortOpen()) {
            read_.Cancel(port_);
            write_.Cancel(port_);
            ::CloseHandle(port_);
            port_ = INVALID_HANDLE_VALUE;
        }
        QCoreApplication::removePostedEvents(&context_);
        textPosted_ = false;
        lostPosted_ = false;
        text_.clear();
        writing_.clear();
        waiting_.clear();
    }

    // Callbacks never come from inside a call or a notifier's signal, in which it is deaf: an
    // exchange or a box may run inside them.
    void PostText() {
        if (textPosted_) return;
        textPosted_ = true;
        QMetaObject::invokeMethod(
            &context_,
            [this] {
                textPosted_ = false;
                if (PortOpen() && !text_.empty()) TellText();
            },
            Qt::QueuedConnection);
    }

    void TellText() {
        if (rThreshold_ > 0) TellErrors();
        if (rThreshold_ > 0 && OnComm) OnComm(CommEvent::Received);
        if (OnTextWaiting) OnTextWaiting();
    }

    void TellErrors() {
        const DWORD errors = std::exchange(errors_, 0);
        if ((errors & CE_OVERRUN) != 0 && OnComm) OnComm(CommEvent::Overrun);
        if ((errors & CE_RXOVER) != 0 && OnComm) OnComm(CommEvent::ReceiveOverflow);
    }

    // Nothing is read or written any more; what had arrived waits for Input until the loss is told.
    void Lose(DWORD error) {
        if (lostPosted_) return;
        lostPosted_ = true;
        readNotifier_.setEnabled(false);
        writeNotifier_.setEnabled(false);
        presence_.stop();
        const QString reason = QString::fromStdString(SystemText(error));
        QMetaObject::invokeMethod(
            &context_,
            [this, reason] {
                Close();
                if (OnLost) OnLost(reason);
            },
            Qt::QueuedConnection);
    }

    const PortDevices& devices_;
    QObject context_;  // what the posted calls belong to
    HANDLE port_ = INVALID_HANDLE_VALUE;
    DCB state_{};
    std::int16_t commPort_ = 1;
    int rThreshold_ = 0;
    DWORD errors_ = 0;  // since they were told
    bool textPosted_ = false;
    bool lostPosted_ = false;

    char first_ = 0;
    std::string text_;     // has arrived and waits for Input
    std::string writing_;  // the driver reads from here
    std::string waiting_;  // comes behind it
    Overlapped read_;
    Overlapped write_;
    FineTimer timer_;
    QWinEventNotifier readNotifier_{read_.Event()};
    QWinEventNotifier writeNotifier_{write_.Event()};
    QTimer presence_;
};

}  // namespace

std::unique_ptr<SerialPort> MakeSerialPort(const PortDevices& devices) {
    return std::make_unique<WindowsSerialPort>(devices);
}

}  // namespace davo
