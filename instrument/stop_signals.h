// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/signalfd.h>

#include <csignal>

namespace davo::instrument {

// Signals that end a program are read from this descriptor, so that its loop ends between two bytes
// and its link is taken away.
inline int StopDescriptor() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGHUP);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

}  // namespace davo::instrument
