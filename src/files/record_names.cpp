// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/record_names.h"

#include <string>

#include "common/files.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/record_keys.h"
#include "records/record_lines.h"
#include "records/record_name.h"

namespace davo {

namespace {

QString FileOf(const QString& name) {
    return name + QStringLiteral(".txt");
}

// The name that the operator enters for oldName; empty when the file is to stay as it is.
QString AskNewName(const QString& dataPath, const QString& oldName, Prompts& prompts) {
    return AskRecordName(
        prompts,
        {.title = QStringLiteral("Rename File"),
         .prompt = QStringLiteral("Old Filename: '") + oldName +
                   QStringLiteral("'\r\n\r\nNew Filename: "),
         .folder = dataPath,
         .taken = QStringLiteral("The Filename: %1 already exists. Please choose another name."),
         .dotted = QStringLiteral("Filename cannot contain ''.''  Please Re-enter.")});
}

// What is behind the first line.
std::string_view AfterFirstLine(std::string_view bytes) {
    const std::size_t end = bytes.find('\n');
    return end == std::string_view::npos ? std::string_view() : bytes.substr(end + 1);
}

void RenameRecord(const QString& dataPath, const QString& oldFile, const QString& newName) {
    const std::string old = ReadWholeFile(dataPath + oldFile);
    std::string text;
    PutRecordLine(text, kTestNumberKey, ToPage(newName).value_or(std::string()));
    text.append(AfterFirstLine(old));
    ReplaceFile(dataPath + FileOf(newName), text);
    DeleteFile(dataPath + oldFile);
}

}  // namespace

QString ShownName(const QString& file) {
    const bool usual = file.endsWith(QLatin1String(".txt"), Qt::CaseInsensitive);
    return usual ? RecordNameOf(file) : file;
}

void RenameRecords(const QString& dataPath, const std::vector<QString>& files, Prompts& prompts) {
    for (const QString& file : files) {
        const QString oldName = ShownName(file);
        const QString newName = AskNewName(dataPath, oldName, prompts);
        if (newName.isEmpty()) continue;
        const QString question = QStringLiteral("Rename file: '") + oldName +
                                 QStringLiteral("'\r\nTo: '") + newName + QStringLiteral("' ? ");
        if (!prompts.Agrees(question)) continue;
        try {
            RenameRecord(dataPath, file, newName);
        } catch (const RunTimeError& error) {
            prompts.Message(QString::fromUtf8(error.what()));
        }
    }
}

void DeleteRecords(const QString& dataPath, const std::vector<QString>& files, Prompts& prompts) {
    for (const QString& file : files) {
        const Answer answer = prompts.YesNoCancel(
            QStringLiteral("Delete file: ") + ShownName(file) + QStringLiteral("\r\n"), Answer::No);
        if (answer == Answer::Cancel) return;
        if (answer != Answer::Yes) continue;
        try {
            DeleteFile(dataPath + file);
        } catch (const RunTimeError& error) {
            prompts.Message(QString::fromUtf8(error.what()));
        }
    }
}

}  // namespace davo
