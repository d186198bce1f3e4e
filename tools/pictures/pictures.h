// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QDir>
#include <QPalette>
#include <QTest>
#include <algorithm>
#include <stdexcept>

#include "tests/support/pause.h"
#include "tests/support/testing.h"
#include "tools/pictures/cut_texts.h"

namespace davo::test {

// Where the pictures of a set go. Throws what cannot be written.
class Album {
  public:
    // Takes only the pictures that are wanted; all of them without a name.
    explicit Album(const QString& folder, QStringList wanted = {})
        : folder_(folder), wanted_(std::move(wanted)) {
        if (!folder_.mkpath(u"."_s)) throw std::runtime_error(folder.toStdString());
    }

    QString Path(const QString& fileName) const { return folder_.filePath(fileName); }
    // Whether a picture whose name ends so is wanted.
    bool Wants(const QString& end) const {
        return wanted_.isEmpty() ||
               std::any_of(wanted_.begin(), wanted_.end(),
                           [&](const QString& name) { return name.endsWith(end); });
    }
    void Save(QWidget& window, const QString& name) const {
        if (!wanted_.isEmpty() && !wanted_.contains(name)) return;
        const QString path = Path(name + u".png"_s);
        if (!window.grab().save(path)) throw std::runtime_error(path.toStdString());
        for (const QString& cut : CutTexts(window))
            cutTexts += folder_.dirName() + u'/' + name + u": "_s + cut;
    }

    // Of all pictures that were saved, each with its picture's name.
    static inline QStringList cutTexts;

    // When what is on its way has come. On a busy machine the panel needs 100 ms for sixty tests.
    void Grab(QWidget& window, const QString& name) const {
        test::Pause(wanted_.isEmpty() || wanted_.contains(name) ? 250 : 20);
        Save(window, name);
    }
    void ShowAndGrab(QWidget& window, const QString& name) const {
        window.show();
        Grab(window, name);
    }

  private:
    QDir folder_;
    QStringList wanted_;
};

// The colours of all windows as long as it lasts, so that no set has those of another.
class Colours {
  public:
    explicit Colours(const QPalette& palette) { QApplication::setPalette(palette); }
    ~Colours() { QApplication::setPalette(usual_); }
    Colours(const Colours&) = delete;
    Colours& operator=(const Colours&) = delete;

  private:
    QPalette usual_ = QApplication::palette();
};

inline QPalette DarkPalette(const QColor& base, const QColor& alternateBase) {
    const QColor window(45, 45, 48);
    QPalette dark(window, window);
    dark.setColor(QPalette::Base, base);
    dark.setColor(QPalette::AlternateBase, alternateBase);
    return dark;
}

// The sets.
void TakeCurves(const Album& album);
void TakeFiles(const Album& album);
void TakeHeaders(const Album& album);
void TakeRecordHeaders(const Album& album);
void TakeShell(const Album& album);
void TakeTestList(const Album& album);
void TakeTestWindow(const Album& album);

}  // namespace davo::test
