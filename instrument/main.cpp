// SPDX-License-Identifier: GPL-3.0-or-later
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <iostream>
#include <random>

#include "instrument/command_line.h"

using namespace davo::instrument;

namespace {

// Signals that end the program are read from a descriptor, so that the loop ends between two bytes
// and the link is taken away.
int StopDescriptor() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGHUP);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

int RunProgram(const CommandLine& line) {
    const int stop = StopDescriptor();
    if (line.dieWithParent) {
        const pid_t parent = getppid();
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        // A parent that ended before the call sends no signal.
        if (getppid() != parent || parent == 1) return 0;
    }
    Instrument instrument(line.options);
    std::cout << "ready " << line.options.linkPath << " seed " << line.options.conversation.seed
              << std::endl;
    instrument.Run(stop);
    close(stop);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const CommandLine line =
            ParseCommandLine({argv + 1, argv + argc}, std::random_device()() % 1000000);
        if (!line.error.empty()) {
            std::cerr << "davo-instrument: " << line.error << "\n" << Usage();
            return 2;
        }
        if (line.help) {
            std::cout << Usage();
            return 0;
        }
        return RunProgram(line);
    } catch (const std::exception& error) {
        std::cerr << "davo-instrument: " << error.what() << "\n";
        return 1;
    }
}
