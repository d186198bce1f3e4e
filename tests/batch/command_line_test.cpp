// SPDX-License-Identifier: GPL-3.0-or-later

#include "batch/command_line.h"

#include <QRegularExpression>

#include "common/version.h"
#include "tests/batch/report_program.h"

namespace davo {
namespace {

BatchOptions OptionsOf(const QStringList& arguments) {
    const BatchOptions options = ParseCommandLine(QStringList(u"davo-report"_s) + arguments);
    EXPECT_EQ((options.wrong + options.shown).toStdString(), "");
    return options;
}

TEST(CommandLine, TakesOptionsAndRecordsInAnyOrder) {
    const BatchOptions options = OptionsOf(
        {u"a"_s, u"--csv"_s, u"b.txt"_s, u"--rule"_s, u"30"_s, u"--out=o"_s, u"--"_s, u"--xls"_s});
    EXPECT_EQ(options.records, QStringList({u"a"_s, u"b.txt"_s, u"--xls"_s}));
    EXPECT_TRUE(options.csv);
    EXPECT_FALSE(options.xls);
    EXPECT_EQ(options.rule, KneeRule::Ieee30);
    EXPECT_EQ(options.out, u"o"_s);
}

TEST(CommandLine, HasAFlagForEachThing) {
    const std::vector<std::pair<QString, bool BatchOptions::*>> flags = {
        {u"--pdf"_s, &BatchOptions::pdf},
        {u"--html"_s, &BatchOptions::html},
        {u"--xlsx"_s, &BatchOptions::xlsx},
        {u"--xls"_s, &BatchOptions::xls},
        {u"--csv"_s, &BatchOptions::csv},
        {u"--summary"_s, &BatchOptions::summary},
        {u"--impedance"_s, &BatchOptions::impedance},
        {u"--judge"_s, &BatchOptions::judge},
        {u"--no-heading"_s, &BatchOptions::noHeading},
        {u"--force"_s, &BatchOptions::force}};
    for (const auto& [name, member] : flags) {
        SCOPED_TRACE(name.toStdString());
        const BatchOptions options = OptionsOf({u"--xlsx"_s, name, u"a"_s});
        for (const auto& [other, its] : flags)
            EXPECT_EQ(options.*its, other == name || other == u"--xlsx"_s) << other.toStdString();
    }
}

TEST(CommandLine, TakesTheRule) {
    EXPECT_EQ(OptionsOf({u"--csv"_s, u"a"_s}).rule, KneeRule::Asa1050);
    EXPECT_EQ(OptionsOf({u"--csv"_s, u"a"_s, u"--rule=asa"_s}).rule, KneeRule::Asa1050);
    EXPECT_EQ(OptionsOf({u"--csv"_s, u"a"_s, u"--rule=45"_s}).rule, KneeRule::Ieee45);
}

TEST(CommandLine, WritesRowsToStandardOutputForAMinus) {
    const BatchOptions options = OptionsOf({u"--csv"_s, u"-"_s, u"a"_s});
    EXPECT_TRUE(options.rows);
    EXPECT_FALSE(options.csv);
    EXPECT_EQ(options.records, QStringList(u"a"_s));
}

TEST(CommandLine, SaysWhatIsWrongAndEndsWith2) {
    const auto wrong = [](const QStringList& arguments, const std::string& text) {
        const test::Ended run = test::Report(arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, test::Said(text + " Try \"davo-report --help\"."));
    };
    wrong({u"--pfd"_s, u"a"_s}, "Unknown option 'pfd'.");
    wrong({u"--csv"_s, u"a"_s, u"--out"_s}, "Missing value after '--out'.");
    wrong({u"--csv"_s, u"a"_s, u"--rule"_s, u"46"_s}, "The rule is asa, 45 or 30.");
    wrong({u"a"_s}, "Nothing to make: give --pdf or another format.");
    wrong({u"--pdf"_s, u"-platform"_s, u"none"_s, u"a"_s},
          "Unknown options: p, l, a, t, f, o, r, m.");
    wrong({u"--csv"_s}, "No record is given.");
    wrong({u"--csv"_s, u"-"_s}, "No record is given.");
    wrong({u"--csv"_s, u"a"_s, u""_s}, "No record is given.");
    wrong({u"--csv"_s, u"--out="_s, u"a"_s}, "No folder is given for --out.");
    wrong({u"--csv"_s, u"--limit"_s, u"5"_s, u"a"_s}, "--limit needs --compare.");
    for (const QString& limit : {u""_s, u"0"_s, u"-5"_s, u"5%"_s, u"nan"_s}) {
        wrong({u"--compare"_s, u"r.txt"_s, u"--limit="_s + limit, u"a"_s},
              "The limit is a number of percent above 0.");
    }
    wrong({u"--compare="_s, u"a"_s}, "No reference is given for --compare.");
    wrong({}, "Nothing to make: give --pdf or another format.");
}

TEST(CommandLine, ShowsHelpAndVersion) {
    const test::Ended help = test::Report({u"--help"_s});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.err, "");
    for (const char* const option :
         {"--pdf", "--html", "--xlsx", "--xls", "--csv", "--summary", "--rule", "--impedance",
          "--judge", "--no-heading", "--compare", "--limit", "--out", "--force", "--help",
          "--version"}) {
        EXPECT_THAT(help.out, HasSubstr(std::string("\n  ") + option + " "));
    }
    EXPECT_THAT(help.out, StartsWith("Usage: davo-report [options] record-or-folder...\n"));
    for (const std::string& line : SplitLines(help.out))
        EXPECT_LE(line.size(), 80U) << line;
    const test::Ended version = test::Report({u"--version"_s});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, std::string("davo-report ") + kVersion + "\n");
}

// Each option of text that pattern finds, once.
QStringList OptionsIn(const QString& text, const QString& pattern) {
    QStringList options;
    const QRegularExpression option(pattern, QRegularExpression::MultilineOption);
    for (const QRegularExpressionMatch& match : option.globalMatch(text))
        options += match.captured(1);
    options.removeDuplicates();
    options.sort();
    return options;
}

TEST(CommandLine, HasTheSameOptionsInItsHelpItsManualPageAndTheGuide) {
    const auto text = [](const char* name) {
        return QString::fromStdString(
            ReadWholeFile(QStringLiteral(DAVO_TESTS_FOLDER "/../") + QLatin1String(name)));
    };
    const QStringList help =
        OptionsIn(QString::fromStdString(test::Report({u"--help"_s}).out), u"^  (--[a-z-]+)"_s);
    EXPECT_GT(help.size(), 10);
    const QString manual = text("packaging/debian/davo-report.1.in").replace(u"\\-"_s, u"-"_s);
    EXPECT_EQ(OptionsIn(manual, u"^\\.TP\\n\\.B[IR]? (--[a-z-]+)"_s), help);
    EXPECT_EQ(OptionsIn(text("docs/guide/batch.md"), u"`(--[a-z-]+)"_s), help);
}

// What bash proposes for the last of these words.
QStringList Proposed(const QString& words, const QString& folder) {
    const test::Ended run = test::Shell(
        u". " DAVO_TESTS_FOLDER
        "/../packaging/debian/davo-report.bash && COMP_WORDS=(%1) && "
        "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) && _davo_report && printf '%s\\n' \"${COMPREPLY[@]}\""_s
            .arg(words),
        folder);
    EXPECT_EQ(run.err, "");
    QStringList proposed = QString::fromStdString(run.out).split(u'\n', Qt::SkipEmptyParts);
    proposed.sort();
    return proposed;
}

TEST(Completion, ProposesEveryOptionThatTheHelpShows) {
    const test::TemporaryFolder folder;
    QStringList shown;
    for (const std::string& line : SplitLines(test::Report({u"--help"_s}).out)) {
        if (line.starts_with("  --")) shown += QString::fromStdString(line).section(u' ', 2, 2);
    }
    shown.sort();
    EXPECT_GT(shown.size(), 10);
    EXPECT_EQ(Proposed(u"davo-report --"_s, folder.Path()), shown);
    EXPECT_EQ(Proposed(u"davo-report --csv --ru"_s, folder.Path()), QStringList(u"--rule"_s));
}

TEST(Completion, ProposesRulesFoldersAndRecords) {
    const test::TemporaryFolder folder;
    for (const QString& name :
         {u"T 1.txt"_s, u"T2.TXT"_s, u"T3.pdf"_s, u"T5.csv"_s, u"Tests/T4.txt"_s})
        test::PutRecord(folder, name, "");
    EXPECT_EQ(Proposed(u"davo-report --rule ''"_s, folder.Path()),
              QStringList({u"30"_s, u"45"_s, u"asa"_s}));
    EXPECT_EQ(Proposed(u"davo-report --csv --out T"_s, folder.Path()), QStringList(u"Tests"_s));
    EXPECT_EQ(Proposed(u"davo-report --compare T"_s, folder.Path()),
              QStringList({u"T 1.txt"_s, u"T2.TXT"_s, u"T5.csv"_s, u"Tests"_s}));
    EXPECT_EQ(Proposed(u"davo-report --csv T"_s, folder.Path()),
              QStringList({u"T 1.txt"_s, u"T2.TXT"_s, u"Tests"_s}));
}

}  // namespace
}  // namespace davo
