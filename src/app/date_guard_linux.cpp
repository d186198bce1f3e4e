// SPDX-License-Identifier: GPL-3.0-or-later
#include <QLocale>

#include "app/date_guard.h"

namespace davo {

namespace {

// There is no user-wide setting to change here, so a change lives in this object.
class LocaleShortDateFormat : public ShortDateFormat {
  public:
    std::optional<QString> Read() override {
        return changed_ ? *changed_ : QLocale::system().dateFormat(QLocale::ShortFormat);
    }
    void Set(const QString& format) override { changed_ = format; }

  private:
    std::optional<QString> changed_;
};

}  // namespace

std::unique_ptr<ShortDateFormat> MakeShortDateFormat() {
    return std::make_unique<LocaleShortDateFormat>();
}

}  // namespace davo
