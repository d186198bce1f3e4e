// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/session_save.h"

#include <QFileInfo>
#include <QScopedValueRollback>
#include <optional>

#include "common/files.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/record_file_writer.h"
#include "records/record_name.h"

namespace davo {

namespace {

constexpr QLatin1String kExtension(".txt");

// What is made into a record file.
struct SessionContent {
    QString capturePath;
    const HeaderTable& header;
    std::int16_t shotCount;
    const std::string& testNotes;
};

// How the dialogue ended: the record file, an empty path when the file dialog was left without a
// name, nothing when it goes back to the question whether to save.
using SavedFile = std::optional<QString>;

QString NameOf(const QString& path) {
    return QFileInfo(path).fileName();
}

// The name of a record without blanks around it and without ".txt".
QString StemOf(const QString& fileName) {
    QString stem = fileName.trimmed();
    if (stem.endsWith(kExtension, Qt::CaseInsensitive)) stem.chop(kExtension.size());
    return stem.trimmed();
}

// Why a record cannot have that name, in words; empty when it can.
QString NameTrouble(const QString& stem) {
    if (stem.isEmpty()) return QStringLiteral("The test record needs a name.");
    if (stem.size() >= 2 && stem.contains(QLatin1Char('.'))) {
        return QStringLiteral("Filename cannot contain ''.''  Please Re-enter.");
    }
    return RecordNameTrouble(stem);
}

// What is proposed as the record's name: the circuit, else the serial number, and the date.
QString ProposedName(const HeaderTable& header, const QString& folder) {
    constexpr int kCircuit = 2;
    constexpr int kSerialNumber = 5;
    std::string what = TrimBlanks(header.Field(kCircuit));
    if (what.empty()) what = TrimBlanks(header.Field(kSerialNumber));
    return FreeRecordName(folder, FromPage(what + ' ' + header.headerFields[kHeaderDate]));
}

// Asks for the record file's path until its name is one that a record can have; empty when the
// operator left the dialog. The name ends in ".txt".
QString AskForPath(Prompts& prompts, const QString& folder, const HeaderTable& header) {
    while (true) {
        const QString path =
            prompts.SaveFile(folder, QStringLiteral("*.txt"), ProposedName(header, folder));
        if (path.isEmpty()) return {};
        const QString name = NameOf(path);
        const QString stem = StemOf(name);
        const QString trouble = NameTrouble(stem);
        if (trouble.isEmpty()) return path.chopped(name.size()) + stem + kExtension;
        prompts.Message(trouble);
    }
}

// Makes the data folder that the chosen path asks for. Only a folder that had to be made becomes
// the data path; a file chosen for another folder that exists is written in the data path all the
// same, the folder that Recall Test lists. False when the data folder has vanished and the operator
// does not want the record where it would go.
bool FollowChosenFolder(const QString& path, Prompts& prompts, Settings& settings) {
    const QString dataFolder = FolderText(R"(\Shots_Data\)");
    QString folder = ShownPath(path);
    folder.chop(NameOf(path).size());
    if (!folder.contains(dataFolder)) folder += dataFolder.mid(1);
    if (FolderExists(folder)) return true;
    const QString question =
        QStringLiteral(
            "The data folder is not there any more. Do you want to save the test record as '%1'? ")
            .arg(folder + NameOf(path));
    if (!FolderExists(settings.dataPath) && prompts.YesNo(question, Answer::No) != Answer::Yes) {
        return false;
    }
    CreateFolder(folder);
    settings.dataPath = folder;
    return true;
}

// From the file dialog to the record file. Throws what creating the folder and writing throw.
SavedFile SaveAsRecordFile(const SessionContent& content, Prompts& prompts, Settings& settings) {
    // The data path is put back whatever happens.
    const QScopedValueRollback dataPath(settings.dataPath);
    const QString path = AskForPath(prompts, settings.dataPath, content.header);
    if (path.isEmpty()) return path;
    if (!FollowChosenFolder(path, prompts, settings)) return std::nullopt;
    const QString name = NameOf(path);
    const QString target = settings.dataPath + name;
    if (FileExists(target) &&
        prompts.YesNo(QStringLiteral("File '%1' exists. Do you want to override? ").arg(name),
                      Answer::No) != Answer::Yes) {
        return std::nullopt;
    }
    // The old file is replaced when the new one is whole, so it needs no deleting before.
    WriteTestRecordFile(name, settings.dataPath, content.capturePath, content.header,
                        content.shotCount, content.testNotes);
    return target;
}

// The same; a failure is said and leads back to the question.
SavedFile TrySave(const SessionContent& content, Prompts& prompts, Settings& settings) {
    try {
        return SaveAsRecordFile(content, prompts, settings);
    } catch (const RunTimeError& error) {
        prompts.Message(QStringLiteral("The test record was not saved.\r\n%1")
                            .arg(QString::fromUtf8(error.what())));
        return std::nullopt;
    }
}

void SayKept(Prompts& prompts) {
    prompts.Inform(
        QStringLiteral("No test record was saved. The session is kept and will be offered again."));
}

// The pending shot into the capture file. False when the disk refuses; the shot stays pending.
bool FinishCapture(ShotSequence& sequence) {
    if (!sequence.KeepCapture()) {
        sequence.Around().prompts.Message(
            QStringLiteral("The session cannot be saved: its folder is gone and its shots are only "
                           "in memory. Do not leave this window."));
        return false;
    }
    try {
        sequence.WriteShotTrailer();
        sequence.Capture().Close();
        return true;
    } catch (const RunTimeError& error) {
        sequence.Around().prompts.Message(
            QStringLiteral("The last shot could not be written; the session is kept.\r\n%1")
                .arg(QString::fromUtf8(error.what())));
        return false;
    }
}

// The session is a record file now. Not being able to note it costs a needless question at the
// next start, never the record, so it is said and the exit goes on.
void MarkSessionSaved(const TestSurroundings& around) {
    SessionJournal journal;
    journal.header = around.header;
    journal.testNotes = around.session.testNotes;
    journal.shotsInCapture = around.session.shotCount;
    journal.saved = true;
    try {
        journal.Write(around.places.scratchFolder + QLatin1String(kJournalFileName));
    } catch (const RunTimeError& error) {
        around.prompts.Message(QString::fromUtf8(error.what()));
    }
}

// The question and the dialogue until the session is saved or given up.
SaveOutcome AskAndSave(ShotSequence& sequence, const QString& capturePath, Settings& settings) {
    const TestSurroundings& around = sequence.Around();
    Prompts& prompts = around.prompts;
    while (true) {
        if (prompts.YesNo(QStringLiteral("Do you want to save the test record? "), Answer::Yes) !=
            Answer::Yes) {
            if (prompts.YesNo(
                    QStringLiteral("The test record is not saved. Do you still want to exit? "),
                    Answer::No) == Answer::Yes &&
                sequence.MayLeave()) {
                return {true, {}, false};
            }
            continue;
        }
        sequence.KeepCapture();
        const SavedFile saved = TrySave(
            {capturePath, around.header, around.session.shotCount, around.session.testNotes},
            prompts, settings);
        if (!saved || (saved->isEmpty() && !sequence.MayLeave())) continue;
        if (saved->isEmpty() && sequence.KeepCapture()) SayKept(prompts);
        return {true, *saved, false};
    }
}

}  // namespace

SaveOutcome ExitAndSave(ShotSequence& sequence, Settings& settings, bool offerResults) {
    const TestSurroundings& around = sequence.Around();
    sequence.StopTimers();
    around.beep();
    around.beep();
    if (!sequence.ShotPending() && !sequence.ShotRefused()) {
        // After "&Repeat Test" the window stays; in any other state it closes without a question.
        const bool dropped = sequence.TestState() == kStateShotComplete;
        if (dropped) {
            sequence.Screen().ShowNotice("SHOT DROPPED.\nPRESS NEXT TEST, OR ESC.", false);
        }
        return {!dropped && sequence.MayLeave(), {}, false};
    }
    const QString capturePath = sequence.Capture().Path();
    if (!FinishCapture(sequence)) return {};
    SaveOutcome outcome = AskAndSave(sequence, capturePath, settings);
    if (outcome.savedFile.isEmpty()) return outcome;
    MarkSessionSaved(around);
    outcome.viewResults =
        offerResults && around.prompts.YesNo(QStringLiteral("Do you want to view test results? "),
                                             Answer::Yes) == Answer::Yes;
    return outcome;
}

QString SaveUnsavedSession(const UnsavedSession& session, Prompts& prompts, Settings& settings) {
    const SessionContent content{session.capturePath, session.journal.header,
                                 static_cast<std::int16_t>(session.shots),
                                 session.journal.testNotes};
    SavedFile saved;
    while (!saved)
        saved = TrySave(content, prompts, settings);
    if (saved->isEmpty()) {
        SayKept(prompts);
        return {};
    }
    try {
        DeleteSavedSession(session);
    } catch (const RunTimeError& error) {
        prompts.Message(
            QStringLiteral("The session is saved as %1. Its files in the program's own folder "
                           "could not be deleted, it may be offered again.\r\n%2")
                .arg(ShownPath(*saved), QString::fromUtf8(error.what())));
    }
    return *saved;
}

}  // namespace davo
