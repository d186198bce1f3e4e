// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/excel/com_windows.h"

#include <array>
#include <chrono>
#include <new>
#include <thread>

namespace davo::excel {

namespace {

using namespace std::chrono_literals;

// Formulas and number formats are written in English whatever language Excel speaks.
constexpr LCID kEnglish = 0x0409;

constexpr auto kPatienceWithBusy = 30s;
constexpr auto kPauseWhileBusy = 100ms;

// What Excel answers while it shows a message or a cell is being edited; not in any header.
constexpr auto kExcelIsBusy = static_cast<HRESULT>(0x800AC472);

bool IsBusy(HRESULT result) {
    return result == RPC_E_CALL_REJECTED || result == RPC_E_SERVERCALL_RETRYLATER ||
           result == kExcelIsBusy;
}

BSTR BstrOf(const QString& text) {
    static_assert(sizeof(OLECHAR) == sizeof(char16_t));
    BSTR made = ::SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.utf16()),
                                    static_cast<UINT>(text.size()));
    if (made == nullptr) throw std::bad_alloc();
    return made;
}

QString TextOf(BSTR text) {
    return QString::fromWCharArray(text, static_cast<int>(::SysStringLen(text)));
}

Variant TextVariant(const QString& text) {
    Variant made;
    V_BSTR(made.Address()) = BstrOf(text);
    V_VT(made.Address()) = VT_BSTR;
    return made;
}

Variant NumberVariant(double number) {
    Variant made;
    V_VT(made.Address()) = VT_R8;
    V_R8(made.Address()) = number;
    return made;
}

// Both dimensions count from 1, as Excel's own do.
Variant TableVariant(const Table& table) {
    std::array<SAFEARRAYBOUND, 2> bounds = {SAFEARRAYBOUND{static_cast<ULONG>(table.rows), 1},
                                            SAFEARRAYBOUND{static_cast<ULONG>(table.columns), 1}};
    Variant made;
    V_ARRAY(made.Address()) =
        ::SafeArrayCreate(VT_VARIANT, static_cast<UINT>(bounds.size()), bounds.data());
    if (V_ARRAY(made.Address()) == nullptr) throw std::bad_alloc();
    V_VT(made.Address()) = VT_ARRAY | VT_VARIANT;
    for (LONG row = 1; row <= table.rows; ++row) {
        for (LONG column = 1; column <= table.columns; ++column) {
            const auto& cell =
                table.cells.at(static_cast<std::size_t>((row - 1) * table.columns + column - 1));
            const auto* number = std::get_if<double>(&cell);
            Variant element =
                number != nullptr ? NumberVariant(*number) : TextVariant(std::get<QString>(cell));
            std::array<LONG, 2> place = {row, column};
            const HRESULT result =
                ::SafeArrayPutElement(V_ARRAY(made.Address()), place.data(), element.Address());
            if (FAILED(result)) throw std::bad_alloc();
        }
    }
    return made;
}

// The system's words for a code, or the code itself.
std::string WordsOf(HRESULT result) {
    const QString code =
        QStringLiteral("0x%1").arg(static_cast<quint32>(result), 8, 16, QLatin1Char('0'));
    wchar_t* words = nullptr;
    ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(result), 0, reinterpret_cast<wchar_t*>(&words), 0, nullptr);
    if (words == nullptr) return code.toStdString();
    const QString text = QString::fromWCharArray(words).simplified();
    ::LocalFree(words);
    return (text + QStringLiteral(" (") + code + QLatin1Char(')')).toStdString();
}

RunTimeError ErrorOf(std::string_view member, HRESULT result, EXCEPINFO& exception) {
    std::string words;
    if (result == DISP_E_EXCEPTION) {
        if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
        words = TextOf(exception.bstrDescription).simplified().toStdString();
        if (words.empty()) words = WordsOf(exception.scode != 0 ? exception.scode : result);
    } else {
        words = WordsOf(result);
    }
    ::SysFreeString(exception.bstrSource);
    ::SysFreeString(exception.bstrDescription);
    ::SysFreeString(exception.bstrHelpFile);
    return RunTimeError(ErrorNumber::Automation, "Excel, " + std::string(member) + ": " + words);
}

// Calls again while the answer is that Excel is busy.
template <typename Attempt>
HRESULT Patiently(const Attempt& attempt) {
    const auto end = std::chrono::steady_clock::now() + kPatienceWithBusy;
    for (;;) {
        const HRESULT result = attempt();
        if (!IsBusy(result) || std::chrono::steady_clock::now() > end) return result;
        std::this_thread::sleep_for(kPauseWhileBusy);
    }
}

}  // namespace

ComApartment::ComApartment()
    : isOurs_(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}

ComApartment::~ComApartment() {
    if (isOurs_) ::CoUninitialize();
}

Value ValueOf(const VARIANT& variant) {
    switch (V_VT(&variant)) {
        case VT_BOOL:
            return V_BOOL(&variant) != VARIANT_FALSE;
        case VT_I2:
            return int{V_I2(&variant)};
        case VT_I4:
            return static_cast<int>(V_I4(&variant));
        case VT_R8:
            return V_R8(&variant);
        case VT_BSTR:
            return TextOf(V_BSTR(&variant));
        case VT_DISPATCH:
            if (V_DISPATCH(&variant) == nullptr) return Missing{};
            V_DISPATCH(&variant)->AddRef();
            return std::make_shared<ComObject>(V_DISPATCH(&variant));
        default:
            return Missing{};
    }
}

Variant VariantOf(const Value& value) {
    Variant made;
    VARIANT* const to = made.Address();
    if (std::holds_alternative<Missing>(value)) {
        V_VT(to) = VT_ERROR;
        V_ERROR(to) = DISP_E_PARAMNOTFOUND;
    } else if (const bool* flag = std::get_if<bool>(&value)) {
        V_VT(to) = VT_BOOL;
        V_BOOL(to) = *flag ? VARIANT_TRUE : VARIANT_FALSE;
    } else if (const int* whole = std::get_if<int>(&value)) {
        V_VT(to) = VT_I4;
        V_I4(to) = *whole;
    } else if (const double* number = std::get_if<double>(&value)) {
        made = NumberVariant(*number);
    } else if (const QString* text = std::get_if<QString>(&value)) {
        made = TextVariant(*text);
    } else if (const Table* table = std::get_if<Table>(&value)) {
        made = TableVariant(*table);
    } else {
        const auto& object = static_cast<const ComObject&>(*std::get<ObjectReference>(value));
        V_VT(to) = VT_DISPATCH;
        V_DISPATCH(to) = object.Dispatch();
        object.Dispatch()->AddRef();
    }
    return made;
}

DISPID ComObject::IdOf(std::string_view member) const {
    std::wstring name(member.begin(), member.end());
    wchar_t* names = name.data();
    DISPID id = 0;
    const HRESULT result =
        Patiently([&] { return dispatch_->GetIDsOfNames(IID_NULL, &names, 1, kEnglish, &id); });
    if (FAILED(result)) {
        EXCEPINFO none{};
        throw ErrorOf(member, result, none);
    }
    return id;
}

void ComObject::Invoke(std::string_view member, WORD kind, DISPPARAMS& parameters,
                       VARIANT* result) {
    const DISPID id = IdOf(member);
    EXCEPINFO exception{};
    const HRESULT how = Patiently([&] {
        return dispatch_->Invoke(id, IID_NULL, kEnglish, kind, &parameters, result, &exception,
                                 nullptr);
    });
    if (FAILED(how)) throw ErrorOf(member, how, exception);
}

Value ComObject::Call(std::string_view member, const Values& arguments) {
    // The last argument comes first.
    std::vector<Variant> owned;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
        owned.push_back(VariantOf(*argument));
    std::vector<VARIANT> passed;
    for (Variant& variant : owned)
        passed.push_back(*variant.Address());
    DISPPARAMS parameters{passed.data(), nullptr, static_cast<UINT>(passed.size()), 0};
    Variant result;
    Invoke(member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, parameters, result.Address());
    return ValueOf(*result.Address());
}

void ComObject::Set(std::string_view member, const Value& value) {
    Variant owned = VariantOf(value);
    DISPID named = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{owned.Address(), &named, 1, 1};
    Invoke(member, DISPATCH_PROPERTYPUT, parameters, nullptr);
}

}  // namespace davo::excel
