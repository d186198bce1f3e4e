// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <memory>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "common/run_time_error.h"

// Late-bound automation as Excel offers it, free of COM: members are called by their names. What
// is behind an object is the business of who made it.
namespace davo::excel {

// An argument that is left out, or a result that is empty.
struct Missing {};

class AutomationObject;
using ObjectReference = std::shared_ptr<AutomationObject>;

// The values of a rectangle of cells, row after row.
struct Table {
    int rows = 0;
    int columns = 0;
    std::vector<std::variant<QString, double>> cells;
};

using Value = std::variant<Missing, bool, int, double, QString, ObjectReference, Table>;
using Values = std::vector<Value>;

class AutomationObject {
  public:
    virtual ~AutomationObject() = default;

    // Calls a method or reads a property, as Visual Basic's late binding does without asking which
    // of them it is. Throws RunTimeError 440 with what the object says of its failure.
    virtual Value Call(std::string_view member, const Values& arguments) = 0;
    // Writes a property. Throws like Call.
    virtual void Set(std::string_view member, const Value& value) = 0;
};

// An object as the steps of a report use it. Every function throws RunTimeError 440: what the
// object says, or that a member gave something else than was asked for.
class Object {
  public:
    Object() = default;
    explicit Object(ObjectReference reference) : reference_(std::move(reference)) {}

    const ObjectReference& Reference() const { return reference_; }
    operator Value() const { return reference_; }

    Object Get(std::string_view member, const Values& arguments = {}) const {
        return Object(Of<ObjectReference>(Call(member, arguments), member));
    }
    // Of a member that is a number.
    double Number(std::string_view member) const {
        const Value value = Call(member);
        if (const int* whole = std::get_if<int>(&value)) return *whole;
        return Of<double>(value, member);
    }
    int Count() const { return static_cast<int>(Number("Count")); }
    QString Text(std::string_view member) const { return Of<QString>(Call(member), member); }
    Value Call(std::string_view member, const Values& arguments = {}) const {
        return reference_->Call(member, arguments);
    }
    void Set(std::string_view member, const Value& value) const { reference_->Set(member, value); }

  private:
    template <typename T>
    static T Of(const Value& value, std::string_view member) {
        const T* wanted = std::get_if<T>(&value);
        if (wanted == nullptr)
            throw RunTimeError(ErrorNumber::Automation,
                               std::string(member) + " gave no such value");
        return *wanted;
    }

    ObjectReference reference_;
};

}  // namespace davo::excel
