// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/excel/renderer.h"

#include <windows.h>

#include <objbase.h>

#include <chrono>
#include <optional>

#include "reports/excel/com_windows.h"
#include "reports/excel/process_windows.h"
#include "reports/excel/steps.h"

namespace davo {

namespace {

using namespace excel;
using namespace std::chrono_literals;

constexpr auto kPatienceWithStep = 60s;
constexpr auto kPatienceAfterStop = 3s;
constexpr auto kPatienceWithQuit = 10s;

// A class that is registered is taken to be installed.
std::optional<CLSID> ExcelClass() {
    CLSID id{};
    if (FAILED(::CLSIDFromProgID(L"Excel.Application", &id))) return std::nullopt;
    return id;
}

// Excel makes a new process for everybody who asks for its class; what the user has open is apart.
Object NewExcel() {
    const std::optional<CLSID> id = ExcelClass();
    void* made = nullptr;
    const HRESULT result =
        id ? ::CoCreateInstance(*id, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch, &made)
           : REGDB_E_CLASSNOTREG;
    if (FAILED(result)) {
        const QString code = QStringLiteral("Microsoft Excel (0x%1)")
                                 .arg(static_cast<quint32>(result), 8, 16, QLatin1Char('0'));
        throw RunTimeError(ErrorNumber::CannotCreateObject, code.toStdString());
    }
    return Object(std::make_shared<ComObject>(static_cast<IDispatch*>(made)));
}

class ExcelSession : public Session {
  public:
    explicit ExcelSession(const std::stop_token& stop) : application_(NewExcel()) {
        try {
            const auto window = static_cast<INT_PTR>(application_.Number("Hwnd"));
            process_.emplace(reinterpret_cast<HWND>(window));
            watchStop_.emplace(stop, EndSoon{*process_});
            KeepWatch();
            Quieten(application_);
        } catch (const RunTimeError&) {
            Quit();
            throw;
        }
    }
    ~ExcelSession() override { Quit(); }
    Q_DISABLE_COPY_MOVE(ExcelSession)

    const Object& Application() const override { return application_; }
    void KeepWatch() override { process_->EndWithin(kPatienceWithStep); }

  private:
    // Who stops does not wait long for a call that hangs.
    struct EndSoon {
        ExcelProcess& process;
        void operator()() const { process.EndWithin(kPatienceAfterStop, true); }
    };

    void Quit() {
        watchStop_.reset();
        if (process_) process_->EndWithin(kPatienceWithQuit);
        try {
            application_.Call("Quit");
        } catch (const RunTimeError&) {
            // It is ended by its process.
        }
        application_ = Object();
        process_.reset();
    }

    const ComApartment apartment_;  // first: the others are COM's
    Object application_;
    std::optional<ExcelProcess> process_;
    std::optional<std::stop_callback<EndSoon>> watchStop_;
};

class ExcelLauncher : public Launcher {
  public:
    std::unique_ptr<Session> Start(const std::stop_token& stop) override {
        return std::make_unique<ExcelSession>(stop);
    }
};

}  // namespace

std::unique_ptr<ReportRenderer> MakeExcelRenderer() {
    if (!ExcelClass()) return nullptr;
    return std::make_unique<ExcelRenderer>(std::make_unique<ExcelLauncher>());
}

}  // namespace davo
