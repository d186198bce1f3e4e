// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>

#include "common/prompts.h"

namespace davo {

// Why name (without ".txt") cannot be that of a new record file, in words; empty when it can. A
// record must be readable on every machine that it is copied to, so what one platform refuses is
// refused everywhere.
QString RecordNameTrouble(const QString& name);

// A name for a new record file of folder (which ends with the separator), made of wanted: what a
// name cannot have is "-", and a number makes it one that no file has yet.
QString FreeRecordName(const QString& folder, const QString& wanted);

// Whether a record list takes a file of this name for a record: its lower-case form holds ".txt".
bool IsRecordFileName(const QString& name);

// The name of a record file without folder and without ".txt" (in any case of letters).
QString RecordNameOf(const QString& path);
// The same in bytes; a name given outside of this program may have characters that do not fit.
std::string PageRecordNameOf(const QString& path);

// How a new record's name is asked for.
struct RecordNameQuestion {
    QString title;
    QString prompt;
    QString folder;       // of the record, with the separator at its end
    QString taken;        // what is told of a name, "%1", that the folder has
    QString dotted = {};  // of one with a full stop, when not RecordNameTrouble's
};

// Asks until the answer can be the name of a new record; empty when none is given.
QString AskRecordName(Prompts& prompts, const RecordNameQuestion& question);

}  // namespace davo
