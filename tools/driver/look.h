// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QObject>

namespace davo::test {

// What an operator sees in front of him and could do now, for one who picks at random:
//   acts      commands of the driver, each with the text of what it presses: "click", "answer",
//             "menu", "type" (without the text), "row" (without the number, of so many rows) and
//             "close"
//   dialogs   the visible message boxes and file dialogs of the program, with their texts
//   children  the open windows that work in the main window
//   file      whether the menu "mnuFile" is enabled; absent without one
//   focus     the control that has it
QJsonObject Look();

// Writes what a control of that name shows each time that it is painted with another text.
class Watch : public QObject {
  public:
    explicit Watch(QString name) : name_(std::move(name)) {}
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QString name_;
    QString shown_;
};

}  // namespace davo::test
