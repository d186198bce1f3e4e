// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_name.h"

#include <QFileInfo>
#include <QStringList>
#include <algorithm>

#include "common/files.h"
#include "common/text.h"

namespace davo {

namespace {

constexpr qsizetype kLongestName = 100;

// Windows takes those that are set high for numbers of a port, too.
bool IsPortNumber(QChar c) {
    return c.isDigit() || c == u'\u00B9' || c == u'\u00B2' || c == u'\u00B3';
}

// The names that Windows keeps for devices.
bool IsDevice(const QString& name) {
    const QString upper = name.toUpper();
    static const QStringList kDevices = {QStringLiteral("CON"), QStringLiteral("PRN"),
                                         QStringLiteral("AUX"), QStringLiteral("NUL")};
    const bool isNumbered =
        upper.size() == 4 && IsPortNumber(upper.at(3)) &&
        (upper.startsWith(QLatin1String("COM")) || upper.startsWith(QLatin1String("LPT")));
    return kDevices.contains(upper) || isNumbered;
}

}  // namespace

QString RecordNameTrouble(const QString& name) {
    // The first "!" of a directory entry ends the name, and the first "." of a file name.
    const QString refused = QStringLiteral("\\/:*?\"<>|.!");
    const auto isRefused = [&refused](QChar c) {
        return c < QLatin1Char(' ') || refused.contains(c);
    };
    if (std::any_of(name.begin(), name.end(), isRefused)) {
        return QStringLiteral(
                   "The name %1 has a character that a file name cannot have.\r\n"
                   "These are not possible: \\ / : * ? \" < > | . !")
            .arg(name);
    }
    if (IsDevice(name)) {
        return QStringLiteral("The name %1 is that of a device and cannot be a file's.").arg(name);
    }
    if (!ToPage(name)) {
        return QStringLiteral("The name %1 has a character that a record file cannot hold.")
            .arg(name);
    }
    if (name.size() > kLongestName) {
        return QStringLiteral("The name is too long. At most %1 characters are possible.")
            .arg(kLongestName);
    }
    return {};
}

QString AskRecordName(Prompts& prompts, const RecordNameQuestion& question) {
    while (true) {
        QString name = prompts.Input(question.title, question.prompt).value_or(QString()).trimmed();
        if (name.isEmpty()) return {};
        QString trouble = RecordNameTrouble(name);
        if (!question.dotted.isEmpty() && name.contains(QLatin1Char('.')))
            trouble = question.dotted;
        if (trouble.isEmpty() && !FileExists(question.folder + name + QLatin1String(".txt")))
            return name;
        prompts.Message(trouble.isEmpty() ? question.taken.arg(name) : trouble);
    }
}

QString FreeRecordName(const QString& folder, const QString& wanted) {
    constexpr qsizetype kRoomForNumber = 8;
    QString name;
    for (const QChar c : wanted)
        name += RecordNameTrouble(c).isEmpty() ? c : QLatin1Char('-');
    name = name.simplified().left(kLongestName - kRoomForNumber).trimmed();
    if (name.isEmpty() || IsDevice(name)) name = QStringLiteral("Test ") + name;
    name = name.trimmed();
    QString free = name;
    for (int number = 2; FileExists(folder + free + QLatin1String(".txt")); ++number)
        free = QStringLiteral("%1 (%2)").arg(name).arg(number);
    return free;
}

bool IsRecordFileName(const QString& name) {
    return name.contains(QLatin1String(".txt"), Qt::CaseInsensitive);
}

QString RecordNameOf(const QString& path) {
    const QString name = QFileInfo(path).fileName();
    const auto end = name.lastIndexOf(QLatin1String(".txt"), -1, Qt::CaseInsensitive);
    return end < 0 ? name : name.left(end);
}

std::string PageRecordNameOf(const QString& path) {
    const QString name = RecordNameOf(path);
    return ToPage(name).value_or(name.toLatin1().toStdString());
}

}  // namespace davo
