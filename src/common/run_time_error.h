// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stdexcept>
#include <string>

namespace davo {

// The numbers of the run-time errors that this system raises or passes on.
enum class ErrorNumber {
    Overflow = 6,
    SubscriptOutOfRange = 9,
    DivisionByZero = 11,
    TypeMismatch = 13,
    BadFileNameOrNumber = 52,
    FileNotFound = 53,
    FileAlreadyOpen = 55,
    DeviceInputOutput = 57,
    FileAlreadyExists = 58,
    DiskFull = 61,
    InputPastEnd = 62,
    PermissionDenied = 70,
    PathFileAccess = 75,
    PathNotFound = 76,
    CannotCreateObject = 429,
    Automation = 440,
    InvalidPortNumber = 8002,
    PortAlreadyOpen = 8005,
};

// The text that belongs to a number, e.g. "Subscript out of range" for 9.
std::string ErrorText(ErrorNumber number);

// What stops an operation. It is thrown where it happens and caught once, at the event handler,
// which shows it; nothing on disk is half-written when it arrives there.
class RunTimeError : public std::runtime_error {
  public:
    // detail (a path, a port) is appended to the number's own text; UTF-8.
    explicit RunTimeError(ErrorNumber number, const std::string& detail = {});

    ErrorNumber Number() const { return number_; }

  private:
    ErrorNumber number_;
};

}  // namespace davo
