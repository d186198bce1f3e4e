// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/command_line.h"

#include <QCommandLineParser>
#include <array>

#include "common/numbers.h"
#include "common/version.h"

namespace davo {

namespace {

struct Option {
    const char* name;
    const char* description;
    bool BatchOptions::*flag = nullptr;
    const char* value = nullptr;  // of one that has a value: its name
};
constexpr std::array kOptions = {
    Option{"pdf", "Make a certificate of each record.", &BatchOptions::pdf},
    Option{"html", "Make the certificate as a web page, all in one file.", &BatchOptions::html},
    Option{"xlsx", "Make the report of each record as a workbook.", &BatchOptions::xlsx},
    Option{"xls", "Make it as .xls, which needs LibreOffice Calc or Microsoft Excel.",
           &BatchOptions::xls},
    Option{"csv",
           "Make a table of the points of each record. \"--csv -\" writes to standard output "
           "instead: a row for each test of all records.",
           &BatchOptions::csv},
    Option{"summary", "Make summary.html of all records: a table of all tests and a chart.",
           &BatchOptions::summary},
    Option{"compare", "Compare each test with a record, or with a maker's curve in a CSV file.",
           nullptr, "reference"},
    Option{"limit", "Say whether the voltages differ by no more than this from the reference's.",
           nullptr, "percent"},
    Option{"rule", "Mark the kneepoint by asa, 45 or 30; asa when not given.", nullptr, "rule"},
    Option{"out",
           "Put files into this folder, and into folders in it as those of the records. Without "
           "it each file is next to its record, and summary.html in the current folder.",
           nullptr, "folder"},
    Option{"impedance", "Workbooks have a column V/I.", &BatchOptions::impedance},
    Option{"judge",
           "The rows of \"--csv -\" have the smooth kneepoints and the doubts, too. This is slow.",
           &BatchOptions::judge},
    Option{"no-heading", "The rows of \"--csv -\" begin without the names of the columns.",
           &BatchOptions::noHeading},
    Option{"force", "Replace files that are there. Without it they are kept.",
           &BatchOptions::force},
    Option{"help", "Show this text."},
    Option{"version", "Show the version."}};

constexpr const char* kAbout =
    "Makes reports of DAVO test records. In folders, and in folders in them, every\n"
    "file with \".txt\" in its name is taken for a record.\n"
    "Exit status: 0 all was made; 1 something was not, which is named on standard\n"
    "error; 2 the command line is wrong.";

// What is wrong with the options; empty where nothing is.
QString TakeOptions(const QCommandLineParser& parser, BatchOptions& options) {
    const auto isSet = [&](const char* name) { return parser.isSet(QLatin1String(name)); };
    const auto valueOf = [&](const char* name) { return parser.value(QLatin1String(name)); };
    for (const Option& option : kOptions) {
        if (option.flag != nullptr) options.*option.flag = isSet(option.name);
    }
    const bool makes = options.pdf || options.html || options.xlsx || options.xls || options.csv ||
                       options.summary;
    options.out = valueOf("out");
    options.reference = valueOf("compare");
    options.records = parser.positionalArguments();
    options.rows = options.csv && options.records.removeAll(QStringLiteral("-")) > 0;
    options.csv = options.csv && !options.rows;
    if (isSet("rule")) {
        const QStringList rules = QStringLiteral("asa 45 30").split(QLatin1Char(' '));
        const auto rule = rules.indexOf(valueOf("rule"));
        if (rule < 0) return QStringLiteral("The rule is asa, 45 or 30.");
        options.rule = kKneeRules.at(static_cast<std::size_t>(rule));
    }
    if (isSet("limit")) {
        options.limit = WholeNumericValue(valueOf("limit").toStdString());
        if (options.limit.value_or(0) <= 0)
            return QStringLiteral("The limit is a number of percent above 0.");
        if (!isSet("compare")) return QStringLiteral("--limit needs --compare.");
    }
    if (!makes && !isSet("compare"))
        return QStringLiteral("Nothing to make: give --pdf or another format.");
    if (isSet("compare") && options.reference.isEmpty())
        return QStringLiteral("No reference is given for --compare.");
    if (isSet("out") && options.out.isEmpty())
        return QStringLiteral("No folder is given for --out.");
    if (options.records.isEmpty() || options.records.contains(QString()))
        return QStringLiteral("No record is given.");
    return {};
}

}  // namespace

BatchOptions ParseCommandLine(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(kAbout));
    for (const Option& option : kOptions) {
        parser.addOption({QLatin1String(option.name), QLatin1String(option.description),
                          QLatin1String(option.value)});
    }
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
