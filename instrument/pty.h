// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace davo::instrument {

inline constexpr std::size_t kMostWaiting = 1000000;

// The device that the PC opens: the slave of a pseudo terminal, reached through a symbolic link.
// This side keeps the slave open too, so that the PC may open and close it as it likes.
class Pty {
  public:
    // Replaces a symbolic link at linkPath; anything else there is an error. Throws RunTimeError 57
    // when there is no pseudo terminal to be had, 75 when the link cannot be made.
    explicit Pty(std::string linkPath);
    ~Pty();
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    void PlugIn();
    // The device and its link are gone; the PC's next read or write fails.
    void Unplug();
    bool PluggedIn() const { return master_ >= 0; }

    // For poll; -1 while unplugged.
    int Descriptor() const { return master_; }
    // What the PC has written, without waiting.
    std::string Read();
    // Never waits: what the PC has no room for yet is kept for later calls, up to kMostWaiting
    // bytes, and the rest is lost, as on a line without handshaking.
    void Write(std::string_view bytes);
    // Bytes that were written and that the PC has not read yet.
    std::size_t Unread() const;
    bool WriteWaits() const { return !waiting_.empty(); }

    const std::string& LinkPath() const { return linkPath_; }

  private:
    std::string linkPath_;
    int master_ = -1;
    int slave_ = -1;
    std::string waiting_;
};

}  // namespace davo::instrument
