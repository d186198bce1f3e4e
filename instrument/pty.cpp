// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/pty.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

#include "common/run_time_error.h"

namespace davo::instrument {

namespace {

bool IsLinkOrAbsent(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) != 0 || S_ISLNK(info.st_mode);
}

}  // namespace

Pty::Pty(std::string linkPath) : linkPath_(std::move(linkPath)) {
    PlugIn();
}

Pty::~Pty() {
    Unplug();
}

void Pty::PlugIn() {
    if (PluggedIn()) return;
    if (!IsLinkOrAbsent(linkPath_)) throw RunTimeError(ErrorNumber::PathFileAccess, linkPath_);
    std::array<char, 256> name{};
    termios settings{};
    cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    settings.c_cc[VMIN] = 1;
    if (openpty(&master_, &slave_, name.data(), &settings, nullptr) != 0) {
        master_ = -1;
        throw RunTimeError(ErrorNumber::DeviceInputOutput, "pseudo terminal");
    }
    for (const int descriptor : {master_, slave_}) {
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
        fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    }
    unlink(linkPath_.c_str());
    if (symlink(name.data(), linkPath_.c_str()) != 0) {
        Unplug();
        throw RunTimeError(ErrorNumber::PathFileAccess, linkPath_);
    }
}

void Pty::Unplug() {
    if (!PluggedIn()) return;
    if (IsLinkOrAbsent(linkPath_)) unlink(linkPath_.c_str());
    waiting_.clear();
    close(std::exchange(slave_, -1));
    close(std::exchange(master_, -1));
}

std::string Pty::Read() {
    std::string bytes;
    std::array<char, 4096> part{};
    while (PluggedIn()) {
        const ssize_t length = read(master_, part.data(), part.size());
        if (length <= 0) break;
        bytes.append(part.data(), static_cast<std::size_t>(length));
    }
    return bytes;
}

void Pty::Write(std::string_view bytes) {
    if (!PluggedIn()) return;
    waiting_ += bytes.substr(0, kMostWaiting - std::min(waiting_.size(), kMostWaiting));
    while (!waiting_.empty()) {
        const ssize_t length = write(master_, waiting_.data(), waiting_.size());
        if (length <= 0) break;
        waiting_.erase(0, static_cast<std::size_t>(length));
    }
}

std::size_t Pty::Unread() const {
    int length = 0;
    if (!PluggedIn() || ioctl(slave_, FIONREAD, &length) != 0) return 0;
    return waiting_.size() + static_cast<std::size_t>(length);
}

}  // namespace davo::instrument
