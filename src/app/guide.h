// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QThreadPool>
#include <functional>

#include "common/prompts.h"

class QWidget;

namespace davo {

// Where the guide of this program may be: beside the executable, or where a package puts it.
QStringList GuideFolders();

// The file of the guide in folder that fits the place of widget: "f1/<name>.html" of the nearest
// widget upwards that has such a file, else the first page. The name is the widget's property
// "guidePlace", or without one its object name. In the main window's own parts
// (menu, status bar) it is the window that is open in its area, in a message box the place of its
// message: the line of "f1/messages.txt", "<file>\t<part of a message>\t<advice>", with the longest
// part that is in its "exactText". Empty when folder has no guide.
QString GuidePage(const QString& folder, const QWidget* widget);

// What to do about a message, one sentence: the advice of that line, of the first folder that has
// one. Empty without.
QString GuideAdvice(const QStringList& folders, const QString& message);

// What F1 does in every window of the application, modal ones too: it opens the guide. Installed
// as the application's event filter.
class GuideKey : public QObject {
  public:
    // Shows the file at path; false when nothing does. Called on another thread: a desktop may take
    // seconds to start a browser, and a test under way must not wait for it.
    using Open = std::function<bool(const QString& path)>;

    // prompts must outlive it. What is missing is said in a message.
    GuideKey(QStringList folders, Prompts& prompts, Open open);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void Show(const QWidget* widget);
    void Opened(const QString& path, bool shown);

    QStringList folders_;
    Prompts& prompts_;
    Open open_;
    bool busy_ = false;  // one at a time, however often the key is pressed
    QThreadPool pool_;
};

}  // namespace davo
