// SPDX-License-Identifier: GPL-3.0-or-later
// davo_freeze FOLDER: the files of this release as the program writes them, each made by the
// program's own writer, with their readings beside them; see frozen_test.cpp.

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QWidget>
#include <cstdio>

#include "app/window_geometry.h"
#include "common/files.h"
#include "common/places.h"
#include "common/settings_store.h"
#include "common/text.h"
#include "files/group_file.h"
#include "files/record_headers.h"
#include "instrument/byte_log.h"
#include "instrument/memory.h"
#include "records/capture_file.h"
#include "records/directory_file.h"
#include "records/nameplate_file.h"
#include "records/record_file_writer.h"
#include "records/unsaved_sessions.h"
#include "reports/reference_curve.h"
#include "retrieval/memory_directory.h"
#include "retrieval/record_reply.h"
#include "tests/frozen/readings.h"
#include "tests/records/captures.h"

namespace {

using namespace davo;
using namespace Qt::Literals::StringLiterals;
using test::CaptureBlock;

QString Made(const QString& folder) {
    CreateFolder(folder);
    return folder + QLatin1Char('/');
}

HeaderTable Header(const std::array<std::string, kHeaderFieldCount>& texts,
                   const std::string& date = "06/03/26") {
    HeaderTable table;
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        std::string text = texts.at(static_cast<std::size_t>(i));
        table.Field(i) = PadRight(TakeHeaderField(text), kHeaderFieldWidth);
    }
    table.headerFields[kHeaderDate] = date;
    table.headerFields[kHeaderTime] = "09:07";
    return table;
}

HeaderTable OrdinaryHeader() {
    return Header({"Northern Grid", "Hilltop", "Feeder 4 B", "Acme", "CT-600", "00012345",
                   "after repair", "J. Doe"});
}

// Letters beyond ASCII, signs that a list or a group file is cut at, and the key of another line.
HeaderTable OddHeader() {
    return Header(
        {"M\xFCller & S\xF6hne, Z\xFCrich",
         "Stra\xDF"
         "e \x80 5",
         "A=B!C#D", "\"Acme\"", "100% \\ x", "-1.5E-05", "see SN: 5", "  \xC5. \xD8rsted \x97"},
        "12/31/29");
}

// Every slot in use, the highest counts, the coarse range.
RecordImage FullImage() {
    RecordImage image;
    for (int i = 0; i < kPointSlots; ++i)
        image.slots[i] = {65535 - 2000 * i, 65535 - 1999 * i};
    image.kneeVoltage = image.kneeCurrent = 65535;
    image.excitationCurrent = 1235;
    image.excitationVoltage = 1;
    image.measuredRatio = 4294967295;
    image.phaseAngle = 2695;
    image.kneeTypeCode = 2;
    image.currentRangeCode = 10;
    return image;
}

// Slots without a current or a voltage between the others.
RecordImage GappedImage() {
    RecordImage image = test::ImageWithPoints(9);
    image.slots[2].current = 0;
    image.slots[5].voltage = 0;
    image.phaseAngle = 905;
    image.kneeTypeCode = 3;
    return image;
}

// A line as the instrument sends it, cut into lines of 32 digits.
std::string InLines(const std::string& digits) {
    std::string text;
    for (std::size_t i = 0; i < digits.size(); i += 32)
        text += digits.substr(i, 32) + "\r\n";
    return text;
}

std::string OrdinaryCapture() {
    return CaptureBlock(InLines(EncodeRecordImage(test::SaturatedImage())), "240.7", "240 (1200:5)",
                        "0.29%") +
           CaptureBlock(test::ImageWithPoints(14)) +
           CaptureBlock(EncodeRecordImage(test::ImageWithPoints(0)), "119.9", "N/A", "N/A");
}

std::string OddCapture() {
    const std::string digits = EncodeRecordImage(test::ImageWithPoints(5));
    return "noise\r\nxx" + CaptureBlock(FullImage()) +
           CaptureBlock(EncodeRecordImage(GappedImage()), "", "0.001 (1:1000)", "99999.00%") +
           CaptureBlock(digits.substr(0, 101), "?#", "N/A", "N/A") +
           CaptureBlock(digits.substr(0, 60) + "zz~ 1" + digits.substr(64)) + "DATA0102";
}

struct Session {
    const char* name;
    std::string capture;
    HeaderTable header;
    std::int16_t shots;
    std::string notes = {};
};

void WriteRecord(const QString& data, const QString& scratch, const Session& session) {
    const QString path = scratch + QLatin1String(kCaptureFileName);
    CaptureFile file;
    file.Create(path);
    file.Append(session.capture);
    file.Close();
    WriteTestRecordFile(QLatin1String(session.name), data, path, session.header, session.shots,
                        session.notes);
}

void EditRecord(const QString& data) {
    const std::string file = ReadWholeFile(data + u"Ordinary.txt"_s);
    RecordHeaders headers = ReadRecordHeaders(file);
    headers.testDescriptions[0] = "core 1, S1-S2";
    headers.testNotes[0] = "20 characters, full.";
    headers.testDescriptions[2] = "ratio \xB1 only";
    headers.header[6] = "edited";
    headers.fileNotes += "\r\nadded later";
    ReplaceFile(data + u"Edited.txt"_s, RewriteRecord(file, EveryText(headers)));
}

void WriteData(const QString& data) {
    const QTemporaryDir scratchFolder;
    const QString scratch = scratchFolder.path() + QLatin1Char('/');
    const std::vector<Session> sessions = {
        {"Ordinary.txt", OrdinaryCapture(), OrdinaryHeader(), 3, "first line\r\nsecond: 5 %"},
        {"Odd, texts.txt", OddCapture(), OddHeader(), 4,
         "TEST NUMBER: no\r\n\r\n  REC NUMBER: 9\r\nNOTES:\r\n\ttab \xE9"},
        {"Blank.TXT", CaptureBlock(test::ImageWithPoints(1)), Header({}, "01/01/30"), 1},
        {"No date.txt", CaptureBlock(test::ImageWithPoints(2)), Header({}, "13/01/26"), 1},
        {"No shot.txt", "DATA0102", OrdinaryHeader(), 0, "no shot was complete"}};
    for (const Session& session : sessions)
        WriteRecord(data, scratch, session);
    EditRecord(data);
    SaveHeaderFile(OrdinaryHeader(), data);
    WriteGroupFile(data, {u"Ordinary.txt"_s, 2}, {u"Odd, texts.txt"_s, 1});
    DirectoryTables tables;
    ListFolder(data, tables);
}

// What a download leaves: its records and a directory file of these.
void WriteDownload(const QString& data) {
    const auto memory = instrument::MakeMemory(3, 1);
    const std::vector<std::string> entries =
        BuildEntries(instrument::DirectoryReply(memory)).entries;
    for (const std::string& entry : entries) {
        const std::string name = EntryName(entry).value();
        for (const instrument::MemoryRecord& record : memory) {
            if (!name.ends_with(std::to_string(record.number))) continue;
            ReplaceFile(data + FromPage(name) + u".txt"_s,
                        RecordHeaderLines(entry, name) +
                            ConvertRecordReply(instrument::RecordReply(record)).lines);
        }
    }
    ReplaceFile(data + QLatin1String(kDirectoryFileName),
                DirectoryFileText({entries.begin(), entries.begin() + 2}));
    SaveHeaderFile(OddHeader(), data);
}

// The folder's only record is listed whatever its date.
void WriteUndated(const QString& data) {
    const QTemporaryDir scratch;
    WriteRecord(data, scratch.path() + QLatin1Char('/'),
                {"Only.two.dots.txt", CaptureBlock(GappedImage()), Header({}, ""), 1});
    SaveHeaderFile({}, data);
    DirectoryTables tables;
    ListFolder(data, tables);
}

struct LeftSession {
    std::string capture;
    std::string pending = {};
    int shots = 0;
    bool saved = false;
};

void WriteScratch(const QString& scratch, const LeftSession& session, const HeaderTable& header) {
    SessionJournal journal;
    journal.header = header;
    journal.testNotes = "notes: 100 %\r\nsecond \xE4\tline";
    journal.shotsInCapture = session.shots;
    journal.pendingShot = session.pending;
    journal.saved = session.saved;
    journal.Write(scratch + QLatin1String(kJournalFileName));
    CaptureFile file;
    file.Create(scratch + QLatin1String(kCaptureFileName));
    file.Append(session.capture);
}

// Two of the same second, as two kills and two starts leave them.
void WriteSetAside(const QString& scratch) {
    const QDateTime time(QDate(2026, 6, 3), QTime(9, 12, 44));
    for (const std::string& capture : {OrdinaryCapture(), CaptureBlock(FullImage())}) {
        const int shots = static_cast<int>(CapturedShots(capture).size());
        WriteScratch(scratch, {capture, {}, shots}, OddHeader());
        for (const char* name : {kCaptureFileName, kJournalFileName}) {
            QFile file(scratch + QLatin1String(name));
            if (file.open(QIODevice::ReadWrite))
                file.setFileTime(time, QFileDevice::FileModificationTime);
        }
        SetSessionAside(scratch);
    }
}

void WriteUnsaved(const QString& unsaved) {
    const std::string one = CaptureBlock(test::ImageWithPoints(3));
    const std::string two = one + CaptureBlock(test::SaturatedImage());
    const std::string pending = CaptureBlock(FullImage());
    WriteScratch(Made(unsaved + u"running"_s), {two, pending, 2}, OrdinaryHeader());
    WriteScratch(Made(unsaved + u"killed_while_appending"_s),
                 {two + pending.substr(0, 200), pending, 2}, OddHeader());
    WriteScratch(Made(unsaved + u"appended_but_not_noted"_s), {two + pending, pending, 2},
                 OrdinaryHeader());
    WriteScratch(Made(unsaved + u"first_shot_pending"_s), {"", pending, 0}, Header({}));
    WriteScratch(Made(unsaved + u"saved"_s), {two, "", 2, true}, OrdinaryHeader());
    WriteScratch(Made(unsaved + u"no_shot"_s), {"DATA01", "", 0}, OrdinaryHeader());
    const QString alone = Made(unsaved + u"no_journal"_s);
    WriteScratch(alone, {OddCapture()}, {});
    DeleteFile(alone + QLatin1String(kJournalFileName));
    const QString damaged = Made(unsaved + u"journal_of_a_bad_disk"_s);
    WriteScratch(damaged, {one, pending, 1}, OrdinaryHeader());
    const QString journal = damaged + QLatin1String(kJournalFileName);
    ReplaceFile(journal, ReadWholeFile(journal).substr(0, 150));
    WriteSetAside(Made(unsaved + u"set_aside"_s));
}

void WriteStore(const QString& folder, const Settings& settings) {
    const auto store = MakeSettingsStore({folder, folder, folder});
    WriteSettings(*store, settings);
}

void WriteSettingsFiles(const QString& settings) {
    WriteStore(Made(settings + u"ordinary"_s), {QLatin1String(kKneeIeee45),
                                                3,
                                                true,
                                                1,
                                                2,
                                                u"/home/anna/Documents/DAVO/Shots_Data/"_s,
                                                {}});
    WriteStore(Made(settings + u"odd"_s),
               {u"another, \"newer\"; type = 5"_s,
                kNoPortChosen,
                false,
                -1,
                -1,
                FromPage("/srv/M\xFCller, \"B\xFCro\"; 100% \\ \x80/[x]=y/Shots_Data/"),
                {}});
    WriteStore(Made(settings + u"compared"_s), {QLatin1String(kKneeAsa),
                                                1,
                                                false,
                                                0,
                                                3,
                                                u"/home/anna/Shots_Data/"_s,
                                                {},
                                                u"7.5"_s,
                                                u"0.2"_s});
}

// The main window's place, and the limit that the test window keeps beside it.
void WriteWindows(const QString& windows) {
    const Places places{windows, windows, windows};
    QWidget main;
    main.setObjectName(u"frmMain"_s);
    main.setGeometry(40, 60, 700, 500);
    main.setWindowState(Qt::WindowMaximized);
    SaveWindowGeometry(main, places);
    QSettings(WindowFile(places), QSettings::IniFormat)
        .setValue(u"frmCControl/errorLimit"_s, u"0.35"_s);
}

// A full one, one of a few texts, and letters beyond ASCII; the last took an earlier one's place.
void WriteNameplates(const QString& data) {
    KeepNameplate(
        data, "00012345",
        {"5P20", "5", "0.32", "410", "0.08", "240", "0.5", "20", "30", "1.2", "150", "2"});
    KeepNameplate(data, " M\xFC 7 / \x80 ",
                  {"PX", "", "1,5", "", "", "", "", "", "", "", "", "S1-S2; 80 %"});
    KeepNameplate(data, "ab 12", {"C200"});
    KeepNameplate(data, "AB  12", {"C400", "5", "", "", "", "", "", "", "", "", "400"});
}

// Makers' tables as they come, with units or without, and what is kept of each beside the records.
void WriteCurves(const QString& folder) {
    struct Table {
        QString name;
        std::string text;
        std::string typed = {};  // units, where the table has none
    };
    const std::vector<Table> tables = {
        {u"points"_s, "current_A,voltage_V\n0.0123,87.5\n0.1,440\n1.25,495.5\n"},
        {u"commas"_s, "Kern 1\r\nI [mA];U [kV]\r\n12,3;0,0875\r\n100;0,44\r\n1250;0,4955\r\n"},
        {u"tabs, turned"_s, "U/mV\tI/A\r\n\r\n87500\t0,0123\r\n440000\t0,1\r\n"},
        {u"without heading"_s, "\xEF\xBB\xBF\"12.3\",\"0.0875\"\n\"100\",\"0.44\"\n", "mA;kV"},
        {u"without units"_s, "M\xFCller;Strom;\r\nU;I\r\n87,5;12,3\r\n", "V;mA"},
        // Nothing is left out: what is no place of a curve, what falls, what comes twice.
        {u"odd"_s,
         "A;V\r\n0;0\r\n-1;5\r\n1e-5;1.23456789012345678\r\n0.3;2e15\r\n0.3;7\r\n0.2;1e300\r\n"}};
    for (const Table& table : tables) {
        ReplaceFile(folder + table.name + u".csv"_s, table.text);
        ReplaceFile(folder + table.name + QLatin1String(kReferenceCurveEnding),
                    ReferenceCurveText(ParseReferenceCurve(table.text, table.typed)));
    }
}

// A conversation: a byte, lines that are longer than one of the log's, and what no text has.
void WriteLog(const QString& line) {
    instrument::ByteLog log((line + u"conversation.log"_s).toStdString());
    log.FromPc("B", instrument::Micros{0});
    log.ToPc("RDY\r\n", instrument::Micros{10'250});
    log.FromPc("F", instrument::Micros{1'000'000});
    log.ToPc(OrdinaryCapture().substr(0, 100), instrument::Micros{59'999'999});
    log.ToPc(std::string("\x00\xFF\x7F end", 7), instrument::Micros{3'600'000'001});
}

void WriteReadings(const QString& release) {
    for (const QString& file : test::FrozenFiles(release)) {
        try {
            ReplaceFile(test::ReadingPath(file), test::Reading(file));
        } catch (const RunTimeError& error) {
            std::printf("%s: %s\n", file.toUtf8().constData(), error.what());
        }
    }
    const QDir unsaved(release + u"/unsaved"_s);
    for (const QString& name : unsaved.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString folder = unsaved.filePath(name);
        ReplaceFile(folder + u'/' + QLatin1String(test::kRecoveredName),
                    test::RecoveredReading(folder));
    }
}

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    if (argc != 2 || FolderExists(QString::fromLocal8Bit(argv[1]))) {
        std::puts("usage: davo_freeze FOLDER, which is not there yet");
        return 2;
    }
    const QString release = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    WriteData(Made(release + u"/data"_s));
    WriteDownload(Made(release + u"/download"_s));
    WriteUndated(Made(release + u"/undated"_s));
    WriteUnsaved(Made(release + u"/unsaved"_s));
    WriteSettingsFiles(Made(release + u"/settings"_s));
    WriteWindows(Made(release + u"/windows"_s));
    WriteLog(Made(release + u"/line"_s));
    WriteNameplates(Made(release + u"/nameplates"_s));
    WriteCurves(Made(release + u"/curves"_s));
    WriteReadings(release);
    return 0;
}
