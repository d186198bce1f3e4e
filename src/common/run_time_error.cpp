// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/run_time_error.h"

#include <utility>

namespace davo {

namespace {

constexpr std::pair<ErrorNumber, const char*> kTexts[] = {
    {ErrorNumber::Overflow, "Overflow"},
    {ErrorNumber::SubscriptOutOfRange, "Subscript out of range"},
    {ErrorNumber::DivisionByZero, "Division by zero"},
    {ErrorNumber::TypeMismatch, "Type mismatch"},
    {ErrorNumber::BadFileNameOrNumber, "Bad file name or number"},
    {ErrorNumber::FileNotFound, "File not found"},
    {ErrorNumber::FileAlreadyOpen, "File already open"},
    {ErrorNumber::DeviceInputOutput, "Device I/O error"},
    {ErrorNumber::FileAlreadyExists, "File already exists"},
    {ErrorNumber::DiskFull, "Disk full"},
    {ErrorNumber::InputPastEnd, "Input past end of file"},
    {ErrorNumber::PermissionDenied, "Permission denied"},
    {ErrorNumber::PathFileAccess, "Path/File access error"},
    {ErrorNumber::PathNotFound, "Path not found"},
    {ErrorNumber::CannotCreateObject, "ActiveX component can't create object"},
    {ErrorNumber::Automation, "Automation error"},
    {ErrorNumber::InvalidPortNumber, "Invalid port number"},
    {ErrorNumber::PortAlreadyOpen, "Port already open"},
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
