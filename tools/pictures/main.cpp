// SPDX-License-Identifier: GPL-3.0-or-later
// davo_pictures [--like KEPT] FOLDER [SET...]: grabs the windows, each set into a
// folder of its own in FOLDER, to look at what a change shows and to compare it with what was
// before. Without SET: all sets.
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
// With --like it takes only the pictures that KEPT has. --compare KEPT FOLDER says which of FOLDER
// differ, and ends with 1 then; --renew KEPT FOLDER keeps those. tools/golden-pictures does it all.

#include <iostream>
#include <map>

#include "tools/pictures/golden.h"
#include "tools/pictures/pictures.h"
#include "ui/contrast.h"

namespace {

constexpr QLatin1String kLike("--like");
constexpr QLatin1String kCompare("--compare");
constexpr QLatin1String kRenew("--renew");

int Compare(const QDir& kept, const QDir& made, bool renews) {
    const QStringList different = davo::test::DifferentPictures(kept, made);
    for (const QString& name : different)
        std::cout << "differs: " << name.toStdString() << '\n';
    if (renews) davo::test::RenewPictures(kept, made, different);
    return different.isEmpty() || renews ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace davo::test;
    // Without a runner of tests a rig's failed check ends the program.
    GTEST_FLAG_SET(throw_on_failure, true);
    const QApplication application(argc, argv);
    QApplication::setStyle(davo::MakeOutlineStyle());
    QApplication::setCursorFlashTime(0);
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
    QStringList arguments = QApplication::arguments().mid(1);
    QString option;
    QDir kept;
    if (arguments.value(0).startsWith(QLatin1String("--"))) {
        option = arguments.takeFirst();
        kept.setPath(arguments.isEmpty() ? QString() : arguments.takeFirst());
    }
    const QStringList wanted = arguments.mid(1);
    const bool known = std::all_of(wanted.begin(), wanted.end(),
                                   [&](const QString& set) { return sets.contains(set); });
    const QStringList options{QString(), kLike, kCompare, kRenew};
    if (arguments.isEmpty() || !known || !options.contains(option)) {
        std::cerr << "usage: " << argv[0]
                  << " [--like | --compare | --renew KEPT] FOLDER [SET...], with the sets";
        for (const auto& [name, take] : sets)
            std::cerr << ' ' << name.toStdString();
        std::cerr << '\n';
        return 2;
    }
    const QDir folder(arguments.front());
    if (option == kCompare || option == kRenew) return Compare(kept, folder, option == kRenew);
    for (const auto& [name, take] : sets) {
        if (!wanted.isEmpty() && !wanted.contains(name)) continue;
        const QStringList pictures = option == kLike ? KeptPictures(kept, name) : QStringList();
        take(Album(folder.filePath(name), pictures));
    }
    if (option == kLike) return 0;
    for (const QString& cut : Album::cutTexts)
        std::cout << "cut off: " << cut.toStdString() << '\n';
    return Album::cutTexts.isEmpty() ? 0 : 1;
}
