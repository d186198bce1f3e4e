// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/frozen/readings.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>

#include "common/files.h"
#include "common/numbers.h"
#include "common/places.h"
#include "common/settings_store.h"
#include "instrument/conversation_log.h"
#include "records/capture_file.h"
#include "records/directory_file.h"
#include "records/header_table.h"
#include "records/nameplate_file.h"
#include "records/record_file.h"
#include "records/record_file_writer.h"
#include "records/session_journal.h"
#include "records/unsaved_sessions.h"
#include "reports/reference_curve.h"
#include "testing/session_save.h"
#include "tests/support/fake_prompts.h"

namespace davo::test {

namespace {

constexpr QLatin1String kReadingEnd(".read");

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= ' ' && byte < 0x7F && c != '"' && c != '\\') {
            quoted += c;
            continue;
        }
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02X", unsigned{byte});
        quoted += hex;
    }
    return quoted + '"';
}

class Lines {
  public:
    template <class... Words>
    void Put(const Words&... words) {
        const std::size_t begin = text_.size();
        ((text_ += (text_.size() == begin ? "" : " ") + std::string(words)), ...);
        text_ += '\n';
    }
    void PutText(std::string_view key, std::string_view text) { Put(key, Quoted(text)); }
    template <class Number>
    void PutNumber(std::string_view key, Number number) {
        Put(key, std::to_string(number));
    }
    std::string Take() { return std::move(text_); }

  private:
    std::string text_;
};

void PutTest(Lines& lines, const TestRecord& test) {
    lines.PutText(kRecordKey, test.recordNumber);
    lines.PutText(kDescriptionKey, test.testDescription);
    lines.PutText(kTestNotesKey, test.testNotes);
    for (const DataPoint& point : test.points)
        lines.Put("POINT:", GeneralNumber(point.current), GeneralNumber(point.voltage));
    lines.PutNumber(kPointCountKey, test.dataPointCount);
    for (const auto& [key, text] : kResultLines)
        lines.PutText(key, test.*text);
}

template <class Table>
void PutFields(Lines& lines, const Table& fields) {
    for (std::size_t i = 0; i < fields.size(); ++i)
        lines.PutText(kHeaderKeys.at(i), fields[i]);
}

std::string RecordReading(std::string_view bytes, RecordSource source) {
    const TestRecordFile file = ParseTestRecordFile(bytes, source);
    Lines lines;
    for (std::size_t i = 0; i < file.headers.size(); ++i) {
        const RecordFileHeader& header = file.headers[i];
        lines.PutText(kTestNumberKey, header.testNumber);
        lines.PutText(kDateKey, header.date);
        lines.PutText(kTimeKey, header.time);
        lines.PutText(kShotsKey, header.shots);
        PutFields(lines, header.fields);
        for (const TestRecord& test : file.records) {
            if (test.header == i) PutTest(lines, test);
        }
    }
    for (const std::string& notes : file.notes)
        lines.PutText(kNotesKey, notes);
    lines.PutNumber("control characters:", file.controls);
    return lines.Take();
}

std::string CaptureReading(const std::string& bytes) {
    Lines lines;
    std::size_t number = 0;
    for (const CapturedShot& shot : CapturedShots(bytes)) {
        PutTest(lines, RecordOfShot(++number, shot));
        lines.Put("lines behind it:", shot.trailerWhole ? "whole" : "not whole");
        lines.PutNumber("ends at:", shot.end);
    }
    lines.PutNumber("shots:", number);
    return lines.Take();
}

std::string JournalReading(const QString& path) {
    const SessionJournal journal = SessionJournal::Read(path);
    Lines lines;
    lines.PutText(kDateKey, journal.header.headerFields.at(kHeaderDate));
    lines.PutText(kTimeKey, journal.header.headerFields.at(kHeaderTime));
    PutFields(lines, journal.header.Fields());
    lines.PutText(kNotesKey, journal.testNotes);
    lines.PutNumber("shots in the capture file:", journal.shotsInCapture);
    lines.PutText("pending shot:", journal.pendingShot);
    lines.Put("saved:", journal.saved ? "yes" : "no");
    return lines.Take();
}

std::string HeaderReading(const QString& dataPath) {
    HeaderTable table;
    LoadHeaderFile(table, dataPath);
    Lines lines;
    PutFields(lines, table.Fields());
    return lines.Take();
}

void CopyFiles(const QString& from, const QString& to) {
    for (const QString& name : QDir(from).entryList(QDir::Files)) {
        if (!name.endsWith(kReadingEnd)) ReplaceFile(to + name, ReadWholeFile(from + name));
    }
}

QString FolderOf(const QTemporaryDir& folder) {
    return ShownPath(folder.path() + QLatin1Char('/'));
}

// The directory file as it is, its rows, and what a rebuild makes of its folder.
std::string DirectoryReading(const QString& dataPath) {
    DirectoryTables tables;
    LoadDirectoryFile(dataPath, tables);
    Lines lines;
    lines.PutNumber("records:", tables.recordCount);
    for (const std::string& entry : tables.dirEntries)
        lines.PutText("entry:", entry);
    for (const ListRow& row : RowsForList(tables, tables.recordCount)) {
        lines.Put("row:", Quoted(row.filename), Quoted(row.date), Quoted(row.tests),
                  Quoted(row.station), Quoted(row.circuit), Quoted(row.mfr), Quoted(row.model));
    }
    const QTemporaryDir copy;
    CopyFiles(dataPath, FolderOf(copy));
    DirectoryTables listed;
    ListFolder(FolderOf(copy), listed);
    for (std::size_t i = 0; i < listed.dirEntries.size(); ++i) {
        lines.Put("listed:", Quoted(RecordFileOf(listed, i).toStdString()),
                  Quoted(listed.dirEntries[i]));
    }
    for (const SkippedFile& file : listed.listing.skipped) {
        lines.Put("not listed:", Quoted(file.name.toStdString()),
                  SkipReasonText(file.reason).toStdString());
    }
    for (const QString& name : listed.listing.cleaned)
        lines.PutText("control characters in the header of:", name.toStdString());
    return lines.Take();
}

std::string SettingsReading(const QString& folder) {
    const Places places{folder, folder, folder};
    const auto store = MakeSettingsStore(places);
    const auto [settings, errors] = ReadSettings(*store, places);
    Lines lines;
    lines.PutText("kneepoint:", settings.kneepointType.toStdString());
    lines.PutNumber("port:", settings.comPort);
    lines.Put("impedance:", settings.showImpedance ? "yes" : "no");
    lines.PutNumber("sort order:", settings.sortOrder);
    lines.PutNumber("sorted by:", settings.sortDisplay);
    lines.PutText("data:", settings.dataPath.toStdString());
    lines.PutText("reports:", settings.excelPath.toStdString());
    // Who never compares has none.
    if (!settings.curveLimit.isEmpty() || !settings.ratioLimit.isEmpty()) {
        lines.PutText("limit of curves:", settings.curveLimit.toStdString());
        lines.PutText("limit of ratios:", settings.ratioLimit.toStdString());
    }
    for (const RunTimeError& error : errors)
        lines.PutNumber("error:", static_cast<int>(error.Number()));
    return lines.Take();
}

// What crossed the line between a PC and an instrument.
std::string LogReading(const QString& path) {
    Lines lines;
    for (const instrument::LoggedBytes& logged :
         instrument::ReadConversationLog(path.toStdString()))
        lines.Put(std::to_string(logged.line), std::to_string(logged.at.count()),
                  logged.toPc ? ">" : "<", Quoted(logged.bytes));
    return lines.Take();
}

// The nameplate of each serial number in the file; texts that nobody typed have no line.
std::string NameplatesReading(const QString& path) {
    Lines lines;
    const std::vector<std::string> kept = ReadLines(path);
    for (std::size_t i = 1; i < kept.size(); ++i) {
        const std::string serial = kept[i].substr(0, kept[i].find('\t'));
        lines.PutText("nameplate of:", serial);
        const NameplateTexts texts = ReadNameplate(QFileInfo(path).path() + u'/', serial);
        for (std::size_t k = 0; k < texts.size(); ++k) {
            if (!texts[k].empty()) lines.PutText(std::string(kNameplateFields[k]) + ':', texts[k]);
        }
    }
    return lines.Take();
}

// A maker's curve, in amperes and volts where the table has no units.
std::string CurveReading(const std::string& bytes) {
    Lines lines;
    lines.Put("units:", NamesUnits(bytes) ? "named" : "not named");
    for (const CurvePoint& point : ParseReferenceCurve(bytes))
        lines.Put("POINT:", GeneralNumber(point.current), GeneralNumber(point.voltage));
    return lines.Take();
}

// The time of a session under the names of the running one is that of its files.
void SetTime(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly)) return;
    file.setFileTime(QDateTime(QDate(2026, 11, 22), QTime(10, 15, 30)),
                     QFileDevice::FileModificationTime);
}

// The window's settings as they are in the file; that the windows take them is another matter.
std::string WindowFileReading(const QString& path) {
    const QSettings file(path, QSettings::IniFormat);
    return WindowsReading(file.value(QStringLiteral("frmMain/normalGeometry")).toRect(),
                          file.value(QStringLiteral("frmMain/maximized")).toBool(),
                          file.value(QStringLiteral("frmCControl/errorLimit")).toString());
}

}  // namespace

std::string WindowsReading(const QRect& geometry, bool isMaximized, const QString& errorLimit) {
    Lines lines;
    lines.Put("main window:", std::to_string(geometry.x()), std::to_string(geometry.y()),
              std::to_string(geometry.width()), std::to_string(geometry.height()));
    lines.Put("maximized:", isMaximized ? "yes" : "no");
    lines.PutText("error limit:", errorLimit.toStdString());
    return lines.Take();
}

QString ReadingPath(const QString& file) {
    const QFileInfo info(file);
    QString name = info.fileName();
    name.replace(QLatin1Char('.'), QLatin1Char('_'));
    return info.path() + QLatin1Char('/') + name + kReadingEnd;
}

std::vector<QString> FrozenFiles(const QString& release) {
    std::vector<QString> files;
    QDirIterator each(release, QDir::Files, QDirIterator::Subdirectories);
    while (each.hasNext()) {
        const QString path = each.next();
        if (!path.endsWith(kReadingEnd)) files.push_back(path);
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string Reading(const QString& file) {
    const QFileInfo info(file);
    const QString name = info.fileName();
    const QString folder = ShownPath(info.path() + QLatin1Char('/'));
    if (name == QLatin1String(kDirectoryFileName)) return DirectoryReading(folder);
    if (name == QLatin1String("Davo.ini")) return HeaderReading(folder);
    if (name == QLatin1String("davo.ini")) return SettingsReading(folder);
    if (name == QLatin1String("davo-window.ini")) return WindowFileReading(file);
    if (name == QLatin1String(kNameplateFileName)) return NameplatesReading(file);
    if (name.endsWith(QLatin1String(".log"))) return LogReading(file);
    if (name.endsWith(QLatin1String(".csv"))) return CurveReading(ReadWholeFile(file));
    if (name.endsWith(QLatin1String(".jnl"))) return JournalReading(file);
    const std::string bytes = ReadWholeFile(file);
    if (name.startsWith(QLatin1String("TESTFILE"))) return CaptureReading(bytes);
    const bool isGroup = name.endsWith(QLatin1String(".GRP"));
    return RecordReading(bytes, isGroup ? RecordSource::GroupFile : RecordSource::RecordFile);
}

std::string RecoveredReading(const QString& scratchFolder) {
    const QTemporaryDir copy;
    const QString scratch = FolderOf(copy);
    CopyFiles(ShownPath(scratchFolder + QLatin1Char('/')), scratch);
    SetTime(scratch + QLatin1String(kCaptureFileName));
    SetTime(scratch + QLatin1String(kJournalFileName));
    const QTemporaryDir saved;
    Settings settings;
    settings.dataPath = FolderOf(saved) + QStringLiteral("Shots_Data") + QDir::separator();
    CreateFolder(settings.dataPath);
    FakePrompts prompts;
    Lines lines;
    std::string text;
    for (const UnsavedSession& session : SetAsideUnsavedSessions(scratch)) {
        lines.Put("session of",
                  session.lastChange.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toStdString());
        lines.PutNumber("number:", session.number);
        lines.PutNumber("shots:", session.shots);
        prompts.files = {settings.dataPath + QStringLiteral("Recovered.txt")};
        prompts.answers = {Answer::Yes};  // to the question whether to replace the one before
        const QString record = SaveUnsavedSession(session, prompts, settings);
        text += lines.Take() + RecordReading(ReadWholeFile(record), RecordSource::RecordFile);
    }
    return text + "left: " +
           QDir(scratch).entryList(QDir::Files).join(QStringLiteral(", ")).toStdString() + "\n";
}

}  // namespace davo::test
