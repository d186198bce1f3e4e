// SPDX-License-Identifier: GPL-3.0-or-later
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <iostream>
#include <random>

#include "instrument/command_line.h"
#include "instrument/log_check.h"
#include "instrument/replay_device.h"
#include "instrument/stop_signals.h"

using namespace davo::instrument;

namespace {

std::vector<LoggedBytes> LogAt(const std::string& path) {
    std::size_t cut = 0;
    std::vector<LoggedBytes> log = ReadConversationLog(path, &cut);
    if (cut > 0) {
        std::cerr << "davo-instrument: line " << cut << " of " << path
                  << " is cut off; what is before it counts." << std::endl;
    }
    return log;
}

int CheckOf(const std::string& path) {
    const LogReport report = CheckLog(LogAt(path));
    std::cout << report.Text();
    return report.departures.empty() ? 0 : 1;
}

int RunProgram(const CommandLine& line) {
    if (!line.checkPath.empty()) return CheckOf(line.checkPath);
    const int stop = StopDescriptor();
    if (line.dieWithParent) {
        const pid_t parent = getppid();
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        // A parent that ended before the call sends no signal.
        if (getppid() != parent || parent == 1) return 0;
    }
    if (!line.replayPath.empty()) {
        ReplayDevice device(LogAt(line.replayPath), line.options.linkPath);
        std::cout << "ready " << line.options.linkPath << std::endl;
        device.Run(stop);
        close(stop);
        std::cout << device.State() << std::endl;
        return device.IsWhole() ? 0 : 1;
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
