// SPDX-License-Identifier: GPL-3.0-or-later
// davo_pictures FOLDER [SET...]: grabs the windows, each set into a folder of its own in FOLDER, to
// look at what a change shows and to compare it with what was before. Without SET: all sets.
//   curves          the record panel, its chart and what it saves, the windows that have it
//   files           the file utilities, overlaying, copying, progress
//   headers         the header windows and their chooser
//   record_headers  the editor of saved headers
//   shell           the main window, configuration, about and splash, light and dark
//   test_list       the test list of a folder and of an instrument, a download
//   test_window     the test window while the line is silent or lost, and at its limits
// Scale: QT_SCALE_FACTOR; screen:
// QT_QPA_PLATFORM=offscreen:configfile=tools/driver/laptop_screen.json; letters: DAVO_POINTS=14.
// Says which texts are cut off, and ends with 1 then.

#include <iostream>
#include <map>

#include "tools/pictures/pictures.h"
#include "ui/contrast.h"

int main(int argc, char** argv) {
    using namespace davo::test;
    // Without a runner of tests a rig's failed check ends the program.
    GTEST_FLAG_SET(throw_on_failure, true);
    const QApplication application(argc, argv);
    QApplication::setStyle(davo::MakeOutlineStyle());
    if (const int points = qEnvironmentVariableIntValue("DAVO_POINTS"); points > 0) {
        QFont font = QApplication::font();
        font.setPointSize(points);
        QApplication::setFont(font);
    }
    std::map<QString, void (*)(const Album&)> sets = {
        {QStringLiteral("curves"), TakeCurves},
        {QStringLiteral("files"), TakeFiles},
        {QStringLiteral("headers"), TakeHeaders},
        {QStringLiteral("record_headers"), TakeRecordHeaders},
        {QStringLiteral("shell"), TakeShell},
        {QStringLiteral("test_list"), TakeTestList},
        {QStringLiteral("test_window"), TakeTestWindow}};
    const QStringList arguments = QApplication::arguments();
    const QStringList wanted = arguments.mid(2);
    const bool known = std::all_of(wanted.begin(), wanted.end(),
                                   [&](const QString& set) { return sets.contains(set); });
    if (arguments.size() < 2 || !known) {
        std::cerr << "usage: " << argv[0] << " FOLDER [SET...], with the sets";
        for (const auto& [name, take] : sets)
            std::cerr << ' ' << name.toStdString();
        std::cerr << '\n';
        return 2;
    }
    for (const auto& [name, take] : sets)
        if (wanted.isEmpty() || wanted.contains(name))
            take(Album(QDir(arguments.at(1)).filePath(name)));
    for (const QString& cut : Album::cutTexts)
        std::cout << "cut off: " << cut.toStdString() << '\n';
    return Album::cutTexts.isEmpty() ? 0 : 1;
}
