// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/run_time_error.h"

#include <array>

namespace davo {

namespace {

struct NumberAndText {
    ErrorNumber number;
    const char* text;
};

constexpr std::array kTexts = {
    NumberAndText{ErrorNumber::Overflow, "Overflow"},
    NumberAndText{ErrorNumber::SubscriptOutOfRange, "Subscript out of range"},
    NumberAndText{ErrorNumber::DivisionByZero, "Division by zero"},
    NumberAndText{ErrorNumber::TypeMismatch, "Type mismatch"},
    NumberAndText{ErrorNumber::BadFileNameOrNumber, "Bad file name or number"},
    NumberAndText{ErrorNumber::FileNotFound, "File not found"},
    NumberAndText{ErrorNumber::FileAlreadyOpen, "File already open"},
    NumberAndText{ErrorNumber::DeviceInputOutput, "Device I/O error"},
    NumberAndText{ErrorNumber::FileAlreadyExists, "File already exists"},
    NumberAndText{ErrorNumber::DiskFull, "Disk full"},
    NumberAndText{ErrorNumber::InputPastEnd, "Input past end of file"},
    NumberAndText{ErrorNumber::PermissionDenied, "Permission denied"},
    NumberAndText{ErrorNumber::PathFileAccess, "Path/File access error"},
    NumberAndText{ErrorNumber::PathNotFound, "Path not found"},
    NumberAndText{ErrorNumber::CannotCreateObject, "ActiveX component can't create object"},
    NumberAndText{ErrorNumber::Automation, "Automation error"},
    NumberAndText{ErrorNumber::InvalidPortNumber, "Invalid port number"},
    NumberAndText{ErrorNumber::PortAlreadyOpen, "Port already open"},
};

}  // namespace

std::string ErrorText(ErrorNumber number) {
    for (const auto& [known, text] : kTexts) {
        if (known == number) return text;
    }
    return "Application-defined or object-defined error";
}

RunTimeError::RunTimeError(ErrorNumber number, const std::string& detail)
    : std::runtime_error("Run-time error '" + std::to_string(static_cast<int>(number)) +
                         "': " + ErrorText(number) + (detail.empty() ? "" : ": " + detail)),
      number_(number) {}

}  // namespace davo
