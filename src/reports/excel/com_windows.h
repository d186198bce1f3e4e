// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <utility>

#include "reports/excel/automation.h"

// Excel's automation objects over COM.
namespace davo::excel {

// COM on this thread, as a single-threaded apartment unless the thread has another one already.
class ComApartment {
  public:
    ComApartment();
    ~ComApartment();
    Q_DISABLE_COPY_MOVE(ComApartment)

  private:
    bool isOurs_;
};

// A VARIANT that frees what it holds.
class Variant {
  public:
    Variant() { ::VariantInit(&variant_); }
    ~Variant() { ::VariantClear(&variant_); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    Variant(Variant&& other) noexcept : variant_(other.variant_) { ::VariantInit(&other.variant_); }
    Variant& operator=(Variant&& other) noexcept {
        std::swap(variant_, other.variant_);
        return *this;
    }

    VARIANT* Address() { return &variant_; }
    // Gives what it holds away.
    VARIANT Release() {
        const VARIANT held = variant_;
        ::VariantInit(&variant_);
        return held;
    }

  private:
    VARIANT variant_;
};

// The value of a variant; one of a kind that Excel has no need of is Missing. Adds a reference to
// an object.
Value ValueOf(const VARIANT& variant);
// Throws std::bad_alloc.
Variant VariantOf(const Value& value);

// A reference that is released with this object, on the thread that made it.
class ComObject : public AutomationObject {
  public:
    // Takes the reference over.
    explicit ComObject(IDispatch* dispatch) : dispatch_(dispatch) {}
    ~ComObject() override { dispatch_->Release(); }
    Q_DISABLE_COPY_MOVE(ComObject)

    // A call that Excel rejects because it is busy is repeated for half a minute.
    Value Call(std::string_view member, const Values& arguments) override;
    void Set(std::string_view member, const Value& value) override;

    IDispatch* Dispatch() const { return dispatch_; }

  private:
    DISPID IdOf(std::string_view member) const;
    void Invoke(std::string_view member, WORD kind, DISPPARAMS& parameters, VARIANT* result);

    IDispatch* dispatch_;
};

}  // namespace davo::excel
