// SPDX-License-Identifier: GPL-3.0-or-later
// An Excel that records: a local server of Excel's class, which a test registers with these
// arguments:
//   log=FILE        the conversation, a line per call
//   fail-at=N       the N-th call fails
//   busy-at=N       the N-th call is rejected twice first, as Excel does while it is busy
//   hang-at=N       the N-th call does not return
//   stay            does not end with Quit
// It ends when it is told to quit, or when nobody holds its application any more.

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <QFile>
#include <QString>
#include <atomic>
#include <string>
#include <vector>

#include "reports/excel/com_windows.h"
#include "tests/reports/excel/class_windows.h"
#include "tests/reports/excel/recording.h"

namespace davo::test {
namespace {

struct Settings {
    QString log;
    int failAt = 0;
    int busyAt = 0;
    int hangAt = 0;
    bool stays = false;
};

struct Server {
    Settings settings;
    ExcelRecording recording;
    QFile log;
    std::vector<std::wstring> members;  // an id counts from 1
    int rejections = 2;
    bool ends = false;
    DWORD thread = ::GetCurrentThreadId();
};

void EndLoop(Server& server) {
    if (server.settings.stays) return;
    server.ends = true;  // COM may take the message in a loop of its own
    ::PostThreadMessageW(server.thread, WM_QUIT, 0, 0);
}

// A recorded object as COM knows it. The identity that only this program asks for tells its own
// objects from others when they come back as arguments.
constexpr GUID kOwn = {
    0x5d2b6a31, 0x1c0e, 0x4f0b, {0x9a, 0x51, 0x2e, 0x7d, 0x40, 0x11, 0x6c, 0x02}};

class Dispatch : public IDispatch {
  public:
    Dispatch(Server& server, std::shared_ptr<RecordedObject> object)
        : server_(server), object_(std::move(object)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** made) override {
        const bool isKnown = ::IsEqualIID(id, IID_IUnknown) || ::IsEqualIID(id, IID_IDispatch) ||
                             ::IsEqualIID(id, kOwn);
        *made = isKnown ? this : nullptr;
        if (!isKnown) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left > 0) return left;
        if (object_->Path() == QLatin1String("Application")) EndLoop(server_);
        delete this;
        return 0;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                            DISPID* ids) override {
        server_.members.emplace_back(names[0]);
        ids[0] = static_cast<DISPID>(server_.members.size());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT*) override;

    const std::shared_ptr<RecordedObject>& Recorded() const { return object_; }

  private:
    virtual ~Dispatch() = default;
    excel::Value ArgumentOf(const VARIANT& variant) const;
    void Answer(const excel::Value& value, VARIANT* result) const;

    Server& server_;
    std::shared_ptr<RecordedObject> object_;
    std::atomic<ULONG> references_ = 1;
};

excel::Value Dispatch::ArgumentOf(const VARIANT& given) const {
    const VARIANT& variant =
        V_VT(&given) == (VT_BYREF | VT_VARIANT) ? *V_VARIANTREF(&given) : given;
    if (V_VT(&variant) == VT_DISPATCH) {
        void* own = nullptr;
        if (FAILED(V_DISPATCH(&variant)->QueryInterface(kOwn, &own))) return excel::Missing{};
        auto* dispatch = static_cast<Dispatch*>(own);
        std::shared_ptr<RecordedObject> object = dispatch->Recorded();
        dispatch->Release();
        return object;
    }
    if (V_VT(&variant) != (VT_ARRAY | VT_VARIANT)) return excel::ValueOf(variant);
    excel::Table table;
    LONG lastRow = 0;
    LONG lastColumn = 0;
    ::SafeArrayGetUBound(V_ARRAY(&variant), 1, &lastRow);
    ::SafeArrayGetUBound(V_ARRAY(&variant), 2, &lastColumn);
    table.rows = static_cast<int>(lastRow);
    table.columns = static_cast<int>(lastColumn);
    for (LONG row = 1; row <= lastRow; ++row) {
        for (LONG column = 1; column <= lastColumn; ++column) {
            excel::Variant cell;
            LONG place[] = {row, column};
            ::SafeArrayGetElement(V_ARRAY(&variant), place, cell.Address());
            const excel::Value value = excel::ValueOf(*cell.Address());
            if (const double* number = std::get_if<double>(&value)) {
                table.cells.emplace_back(*number);
            } else {
                table.cells.emplace_back(std::get<QString>(value));
            }
        }
    }
    return table;
}

void Dispatch::Answer(const excel::Value& value, VARIANT* result) const {
    if (result == nullptr) return;
    if (const auto* object = std::get_if<excel::ObjectReference>(&value)) {
        V_VT(result) = VT_DISPATCH;
        V_DISPATCH(result) =
            new Dispatch(server_, std::static_pointer_cast<RecordedObject>(*object));
    } else {
        *result = excel::VariantOf(value).Release();
    }
}

HRESULT Dispatch::Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters,
                         VARIANT* result, EXCEPINFO* exception, UINT*) {
    const int call = server_.recording.calls + 1;
    if (call == server_.settings.busyAt && server_.rejections-- > 0)
        return RPC_E_SERVERCALL_RETRYLATER;
    if (call == server_.settings.hangAt) ::Sleep(INFINITE);
    const std::wstring& wide = server_.members.at(static_cast<std::size_t>(id - 1));
    const std::string member(wide.begin(), wide.end());
    excel::Values arguments;
    for (UINT i = parameters->cArgs; i > 0; --i)
        arguments.push_back(ArgumentOf(parameters->rgvarg[i - 1]));
    try {
        if ((kind & DISPATCH_PROPERTYPUT) != 0) {
            object_->Set(member, arguments.at(0));
        } else {
            Answer(object_->Call(member, arguments), result);
        }
    } catch (const RunTimeError& error) {
        exception->bstrDescription =
            ::SysAllocString(QString::fromLatin1(error.what()).toStdWString().c_str());
        exception->scode = E_FAIL;
        return DISP_E_EXCEPTION;
    }
    if (member == "Quit") EndLoop(server_);
    return S_OK;
}

// One application per process, as Excel's is.
class Factory : public IClassFactory {
  public:
    explicit Factory(Server& server) : server_(server) {}
    virtual ~Factory() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** made) override {
        const bool isKnown = ::IsEqualIID(id, IID_IUnknown) || ::IsEqualIID(id, IID_IClassFactory);
        *made = isKnown ? this : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** made) override {
        auto* application = new Dispatch(
            server_,
            std::make_shared<RecordedObject>(server_.recording, QStringLiteral("Application")));
        const HRESULT result = application->QueryInterface(id, made);
        application->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

  private:
    Server& server_;
};

int Run(const Settings& settings) {
    Server server;
    server.settings = settings;
    server.recording.failAt = settings.failAt;
    server.log.setFileName(settings.log);
    if (!server.log.open(QIODevice::WriteOnly)) return 1;
    server.recording.written = [&](const QString& line) {
        server.log.write(line.toUtf8() + '\n');
        server.log.flush();
    };
    HWND window = ::CreateWindowExW(0, L"STATIC", L"Excel", 0, 0, 0, 0, 0, nullptr, nullptr,
                                    nullptr, nullptr);
    server.recording.window = static_cast<int>(reinterpret_cast<INT_PTR>(window));
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    Factory factory(server);
    DWORD registration = 0;
    if (FAILED(::CoRegisterClassObject(kExcelClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE,
                                       &registration)))
        return 1;
    MSG message{};
    while (!server.ends && ::GetMessageW(&message, nullptr, 0, 0) > 0) {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
    // All is written; COM's own end has waited for ever in Wine.
    ::TerminateProcess(::GetCurrentProcess(), 0);
    return 0;
}

Settings Read(int count, char** arguments) {
    Settings settings;
    for (int i = 1; i < count; ++i) {
        const QString argument = QString::fromLocal8Bit(arguments[i]);
        const QString value = argument.section(QLatin1Char('='), 1);
        if (argument.startsWith(QLatin1String("log="))) settings.log = value;
        if (argument.startsWith(QLatin1String("fail-at="))) settings.failAt = value.toInt();
        if (argument.startsWith(QLatin1String("busy-at="))) settings.busyAt = value.toInt();
        if (argument.startsWith(QLatin1String("hang-at="))) settings.hangAt = value.toInt();
        if (argument == QLatin1String("stay")) settings.stays = true;
    }
    return settings;
}

}  // namespace
}  // namespace davo::test

int main(int count, char** arguments) {
    return davo::test::Run(davo::test::Read(count, arguments));
}
