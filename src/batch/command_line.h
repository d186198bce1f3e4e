// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "analysis/kneepoint.h"

namespace davo {

// What a run of davo-report is to do.
struct BatchOptions {
    QString wrong;        // what is wrong with the command line; nothing is done then
    QString shown;        // the help or the version, which is all that is done then
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

    QString reference;            // of a comparison; empty without one
    std::optional<double> limit;  // in percent

    KneeRule rule = KneeRule::Asa1050;
    bool impedance = false;
    bool judge = false;      // rows have what there is to say about kneepoints
    bool noHeading = false;  // of rows
    bool force = false;
};

// Reads the command line, the program's name first.
BatchOptions ParseCommandLine(const QStringList& arguments);

}  // namespace davo
