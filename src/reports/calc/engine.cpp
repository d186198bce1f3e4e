// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/engine.h"

#include <rtl/bootstrap.hxx>

#include <com/sun/star/bridge/UnoUrlResolver.hpp>
#include <com/sun/star/connection/NoConnectException.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <cppuhelper/bootstrap.hxx>
#include <csignal>
#include <thread>

#include "common/run_time_error.h"

namespace davo {

namespace {

using namespace calc;
using namespace std::chrono_literals;

// This program's own side of the bridge, one for all engines. The types are named here and not in
// the environment, which the engine would inherit and stumble over.
Context LocalContext(const QString& programFolder) {
    static const Context context = [&] {
        // The bridge writes into pipes whose other end may have died; it is told by the result.
        std::signal(SIGPIPE, SIG_IGN);
        rtl::Bootstrap::set("URE_MORE_TYPES",
                            UrlOf(programFolder + QStringLiteral("/types/offapi.rdb")));
        return cppu::defaultBootstrap_InitialComponentContext();
    }();
    return context;
}

}  // namespace

CalcEngine::CalcEngine(const CalcSettings& settings)
    : settings_(settings), process_(settings.programFolder) {}

CalcEngine::~CalcEngine() {
    Quit();
}

Context CalcEngine::Connect() {
    if (!process_.IsRunning()) {
        remote_.clear();
        reports_ = 0;
        process_.Start();
    }
    // The first start makes the profile, which is no hang.
    constexpr auto kStartPatience = 30s;
    const auto end = std::chrono::steady_clock::now() + kStartPatience;
    while (!remote_.is() && process_.IsRunning() && std::chrono::steady_clock::now() < end) {
        process_.EndAt(end);
        remote_ = TryToConnect();
        if (!remote_.is()) std::this_thread::sleep_for(10ms);
    }
    if (!remote_.is())
        throw RunTimeError(ErrorNumber::Automation, "LibreOffice Calc does not start");
    KeepWatch();
    return remote_;
}

Context CalcEngine::TryToConnect() {
    try {
        const auto resolver =
            sun::bridge::UnoUrlResolver::create(LocalContext(settings_.programFolder));
        const QString url = QStringLiteral("uno:pipe,name=") + process_.PipeName() +
                            QStringLiteral(";urp;StarOffice.ComponentContext");
        return {resolver->resolve(ToUno(url)), sun::uno::UNO_QUERY};
    } catch (const sun::connection::NoConnectException&) {
        return {};  // not yet
    } catch (const sun::uno::RuntimeException&) {
        return {};  // ended while it answered
    }
}

void CalcEngine::KeepWatch() {
    process_.EndAt(std::chrono::steady_clock::now() + settings_.patience);
}

void CalcEngine::EndWatch(bool reportIsDone) {
    process_.EndAt({});
    if (!process_.IsRunning()) {
        remote_.clear();
        process_.Start();
        return;
    }
    if (reportIsDone && ++reports_ >= settings_.reportsPerEngine) {
        Quit();
        process_.Start();
    }
}

void CalcEngine::Quit() {
    constexpr auto kEndPatience = 2s;
    if (process_.IsRunning() && remote_.is()) {
        try {
            process_.EndAt(std::chrono::steady_clock::now() + kEndPatience);
            sun::frame::Desktop::create(remote_)->terminate();
        } catch (const sun::uno::Exception&) {
            // It has ended, and faster than it could answer.
        }
        process_.WaitForEnd(kEndPatience);
    }
    remote_.clear();
    reports_ = 0;
    process_.Kill();
}

}  // namespace davo
