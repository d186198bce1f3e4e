// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <memory>
#include <optional>

namespace davo {

// The user's short-date format, in the platform's own letters ("dd/MM/yyyy").
class ShortDateFormat {
  public:
    virtual ~ShortDateFormat() = default;
    // Nothing when the platform does not tell it.
    virtual std::optional<QString> Read() = 0;
    // A refusal by the platform is not reported: the program runs with the format as it is.
    virtual void Set(const QString& format) = 0;
};

// Windows: the locale setting of the user, told to all windows when it changes. Elsewhere: the
// locale's format; a change is kept in the returned object and goes with it.
std::unique_ptr<ShortDateFormat> MakeShortDateFormat();

// Dates in record files and file names are written and parsed month first. So the guard puts the
// user's short-date format, where the platform has one for all programs that one, to "MM/dd/yyyy"
// for the run of the program, and puts it back on a normal unload only.
class DateGuard {
  public:
    // format must outlive the guard.
    explicit DateGuard(ShortDateFormat& format) : format_(format) {}

    // Keeps the user's format and replaces it unless it is month first already: exactly
    // "MM-dd-yy", "MM/dd/yy", "MM.dd.yy", "MM/dd/yyyy", "MM-dd-yyyy" or "MM.dd.yyyy". A format
    // that cannot be read counts as empty, and an empty one is put back by Undo.
    void Run();

    // Puts the user's format back when Run replaced it.
    void Undo();

    const QString& SavedShortDate() const { return savedShortDate_; }
    bool ShortDateChanged() const { return shortDateChanged_; }

  private:
    ShortDateFormat& format_;
    QString savedShortDate_;
    bool shortDateChanged_ = false;
};

}  // namespace davo
