// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "analysis/kneepoint.h"

namespace davo {

// What a run of davo-report is to do.
struct BatchOptions {
    QStringList records;  // and folders
    QString out;          // empty: beside each record

    // Of each record.
    bool pdf = false;
    bool html = false;
    bool xlsx = false;
    bool xls = false;
    bool csv = false;
    // Of all records.
    bool rows = false;  // to standard output
    bool summary = false;

    KneeRule rule = KneeRule::Asa1050;
    bool impedance = false;
    bool judge = false;      // rows have what there is to say about kneepoints
    bool noHeading = false;  // of rows
    bool force = false;
};

// What there is to print instead, and the exit status.
struct CommandLineEnd {
    int status = 0;
    QString text;
};

// Reads the command line, the program's name first. Where nothing is to be made of records, end has
// why.
BatchOptions ParseCommandLine(const QStringList& arguments, std::optional<CommandLineEnd>& end);

}  // namespace davo
