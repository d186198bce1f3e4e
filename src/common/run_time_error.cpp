// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/run_time_error.h"

namespace davo {

std::string ErrorText(ErrorNumber number) {
    switch (number) {
        case ErrorNumber::Overflow:
            return "Overflow";
        case ErrorNumber::SubscriptOutOfRange:
            return "Subscript out of range";
        case ErrorNumber::DivisionByZero:
            return "Division by zero";
        case ErrorNumber::TypeMismatch:
            return "Type mismatch";
        case ErrorNumber::BadFileNameOrNumber:
            return "Bad file name or number";
        case ErrorNumber::FileNotFound:
            return "File not found";
        case ErrorNumber::FileAlreadyOpen:
            return "File already open";
        case ErrorNumber::DeviceInputOutput:
            return "Device I/O error";
        case ErrorNumber::FileAlreadyExists:
            return "File already exists";
        case ErrorNumber::DiskFull:
            return "Disk full";
        case ErrorNumber::InputPastEnd:
            return "Input past end of file";
        case ErrorNumber::PermissionDenied:
            return "Permission denied";
        case ErrorNumber::PathFileAccess:
            return "Path/File access error";
        case ErrorNumber::PathNotFound:
            return "Path not found";
        case ErrorNumber::CannotCreateObject:
            return "ActiveX component can't create object";
        case ErrorNumber::Automation:
            return "Automation error";
        case ErrorNumber::InvalidPortNumber:
            return "Invalid port number";
        case ErrorNumber::PortAlreadyOpen:
            return "Port already open";
    }
    return "Application-defined or object-defined error";
}

RunTimeError::RunTimeError(ErrorNumber number, const std::string& detail)
    : std::runtime_error("Run-time error '" + std::to_string(static_cast<int>(number)) +
                         "': " + ErrorText(number) + (detail.empty() ? "" : ": " + detail)),
      number_(number) {}

}  // namespace davo
