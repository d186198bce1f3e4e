// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/command_line.h"

#include <QCommandLineParser>
#include <algorithm>
#include <array>

#include "common/numbers.h"
#include "common/version.h"

namespace davo {

namespace {

struct Flag {
    const char* name;
    bool BatchOptions::*set;
    const char* description;
};
// The first ones make something.
constexpr std::size_t kFormats = 6;
constexpr std::array kFlags = {
    Flag{"pdf", &BatchOptions::pdf, "Make a certificate of each record."},
    Flag{"html", &BatchOptions::html, "Make the certificate as a web page, all in one file."},
    Flag{"xlsx", &BatchOptions::xlsx, "Make the report of each record as a workbook."},
    Flag{"xls", &BatchOptions::xls,
         "Make it as .xls, which needs LibreOffice Calc or Microsoft Excel."},
    Flag{"csv", &BatchOptions::csv,
         "Make a table of the points of each record. \"--csv -\" writes to standard output "
         "instead: a row for each test of all records."},
    Flag{"summary", &BatchOptions::summary,
         "Make summary.html of all records: a table of all tests and a chart."},
    Flag{"impedance", &BatchOptions::impedance, "Workbooks have a column V/I."},
    Flag{"judge", &BatchOptions::judge,
         "The rows of \"--csv -\" have the smooth kneepoints and the doubts, too. This is slow."},
    Flag{"no-heading", &BatchOptions::noHeading,
         "The rows of \"--csv -\" begin without the names of the columns."},
    Flag{"force", &BatchOptions::force, "Replace files that are there. Without it they are kept."}};

constexpr const char* kAbout =
    "Makes reports of DAVO test records. In folders, and in folders in them, every\n"
    "file with \".txt\" in its name is taken for a record.\n"
    "Exit status: 0 all was made; 1 something was not, which is named on standard\n"
    "error; 2 the command line is wrong.";

// What is wrong with the options; empty where nothing is.
QString TakeOptions(const QCommandLineParser& parser, BatchOptions& options) {
    for (const Flag& flag : kFlags)
        options.*flag.set = parser.isSet(QLatin1String(flag.name));
    const bool makes = std::any_of(kFlags.begin(), kFlags.begin() + kFormats,
                                   [&](const Flag& flag) { return options.*flag.set; });
    options.out = parser.value(QStringLiteral("out"));
    options.records = parser.positionalArguments();
    options.rows = options.csv && options.records.removeAll(QStringLiteral("-")) > 0;
    options.csv = options.csv && !options.rows;
    const QStringList rules = {QStringLiteral("asa"), QStringLiteral("45"), QStringLiteral("30")};
    const auto rule = rules.indexOf(parser.value(QStringLiteral("rule")));
    if (rule < 0) return QStringLiteral("The rule is asa, 45 or 30.");
    options.rule = kKneeRules.at(static_cast<std::size_t>(rule));
    options.reference = parser.value(QStringLiteral("compare"));
    if (parser.isSet(QStringLiteral("limit"))) {
        options.limit = WholeNumericValue(parser.value(QStringLiteral("limit")).toStdString());
        if (options.limit.value_or(0) <= 0)
            return QStringLiteral("The limit is a number of percent above 0.");
        if (!parser.isSet(QStringLiteral("compare")))
            return QStringLiteral("--limit needs --compare.");
    }
    if (parser.isSet(QStringLiteral("compare")) && options.reference.isEmpty())
        return QStringLiteral("No reference is given for --compare.");
    if (!makes && options.reference.isEmpty())
        return QStringLiteral("Nothing to make: give --pdf or another format.");
    if (parser.isSet(QStringLiteral("out")) && options.out.isEmpty())
        return QStringLiteral("No folder is given for --out.");
    if (options.records.isEmpty() || options.records.contains(QString()))
        return QStringLiteral("No record is given.");
    return {};
}

}  // namespace

BatchOptions ParseCommandLine(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(kAbout));
    for (const Flag& flag : kFlags)
        parser.addOption({QLatin1String(flag.name), QLatin1String(flag.description)});
    parser.addOptions(
        {{QStringLiteral("rule"),
          QStringLiteral("Mark the kneepoint by asa, 45 or 30; asa when not given."),
          QStringLiteral("rule"), QStringLiteral("asa")},
         {QStringLiteral("compare"),
          QStringLiteral("Compare each test with the test of the same number of this record, or "
                         "with its only curve: in sentences, or in columns of \"--csv -\"."),
          QStringLiteral("reference")},
         {QStringLiteral("limit"),
          QStringLiteral("Say whether the voltages are so near to the reference's."),
          QStringLiteral("percent")},
         {QStringLiteral("out"),
          QStringLiteral("Put files into this folder, and into folders in it as those of "
                         "the records. Without it each file is beside its record, and "
                         "summary.html in the current folder."),
          QStringLiteral("folder")},
         {QStringLiteral("help"), QStringLiteral("Show this text.")},
         {QStringLiteral("version"), QStringLiteral("Show the version.")}});
    parser.addPositionalArgument(QStringLiteral("records"), QStringLiteral("Records and folders."),
                                 QStringLiteral("record-or-folder..."));
    BatchOptions options;
    if (!parser.parse(arguments)) {
        options.wrong = parser.errorText();
    } else if (parser.isSet(QStringLiteral("help"))) {
        options.shown = parser.helpText().replace(arguments.front(), QStringLiteral("davo-report"));
    } else if (parser.isSet(QStringLiteral("version"))) {
        options.shown = QStringLiteral("davo-report %1\n").arg(QLatin1String(kVersion));
    } else {
        options.wrong = TakeOptions(parser, options);
    }
    return options;
}

}  // namespace davo
