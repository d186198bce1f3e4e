// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch_run.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMultiHash>
#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "analysis/limits.h"
#include "analysis/result_tables.h"
#include "batch/reference.h"
#include "batch/streams.h"
#include "batch/summary_page.h"
#include "common/files.h"
#include "common/places.h"
#include "common/run_time_error.h"
#include "common/settings.h"
#include "common/text.h"
#include "records/record_name.h"
#include "reports/choose_renderer.h"
#include "reports/page/html.h"
#include "reports/page/pdf.h"
#include "reports/record_csv.h"
#include "reports/record_facts.h"
#include "reports/record_texts.h"
#include "reports/report_writer.h"
#include "reports/template_file.h"
#include "reports/xlsx/renderer.h"

namespace davo {

namespace {

// The signal that ends the run as soon as the file in hand is whole; 0 while there is none.
volatile std::sig_atomic_t end_signal = 0;

// The next one ends the program at once.
extern "C" void EndRun(int signal) {
    end_signal = signal;
    std::signal(signal, SIG_DFL);
}

constexpr std::size_t kBlock = 65536;  // of rows, at least, but for the last one

// A name that is no UTF-8 cannot be said to the system, nor what it is the name of.
bool HasForeignName(const QString& name) {
    return name.contains(QChar(QChar::ReplacementCharacter));
}

// Throws the reason where what is at path is not read; that it is missing is said when it is read.
void RequireFile(const QString& path) {
    const QFileInfo info(path);
    if (HasForeignName(path) && !info.exists())
        throw std::runtime_error("its name is not in UTF-8.");
    // Opening a named pipe would wait for its writer.
    if (info.exists() && !info.isFile()) throw std::runtime_error("it is not a file.");
    // The tests that are read, of as many points as there can be, have less than 1 MB.
    constexpr qint64 kMostBytes = qint64{16} * 1024 * 1024;
    if (info.size() > kMostBytes)
        throw std::runtime_error("it has more than 16 MB, and no record has.");
}

QString TroubleWith(const QString& path, const std::exception& error) {
    const auto* const known = dynamic_cast<const RunTimeError*>(&error);
    if (known != nullptr) return TroubleText(ShownPath(path), *known);
    return QStringLiteral("%1 cannot be shown: %2")
        .arg(ShownPath(path), QString::fromUtf8(error.what()));
}

// "a.txt.csv" of the record "a.txt.txt" is none.
bool IsMadeOfRecord(const QString& name) {
    static const QStringList kMade =
        QStringLiteral("csv xlsx xls pdf html").split(QLatin1Char(' '));
    return kMade.contains(QFileInfo(name).suffix());
}

class BatchRun {
  public:
    explicit BatchRun(const BatchOptions& options) : options_(options) {}
    int Run();

  private:
    using Write = std::function<void(const QString& target)>;

    void Fail(const QString& said) {
        failed_ = true;
        said_.Say(said);
    }
    void FailRecord(const QString& said) {
        Fail(said);
        if (options_.summary) summary_.AddUnread(said);
    }
    void WriteRows() {
        WriteOutput(rows_);
        rows_.clear();
    }
    void DoAll();
    void Walk(const QString& folder, const QString& below);
    void Do(const QString& path, const QString& below);
    QStringList MakeFiles(const std::string& bytes, const RecordFacts& facts, const QString& path,
                          const QString& below, const QStringList& compared);
    bool Make(const QString& target, const Write& write);

    const BatchOptions& options_;
    const Paper paper_ = UsualPaper();
    StandardError said_{options_.rows};
    std::string rows_;  // not written yet
    SummaryPage summary_{options_.rule, options_.out};
    Reference reference_;
    XlsxRenderer xlsx_;
    std::unique_ptr<ReportRenderer> xls_;  // null where no .xls is made
    // Those of this run, made or kept, by what they are to a disk that knows no capitals.
    QMultiHash<QString, QString> targets_;
    int records_ = 0;
    bool failed_ = false;
};

int BatchRun::Run() {
    if (!options_.wrong.isEmpty()) {
        Fail(options_.wrong + QStringLiteral(" Try \"davo-report --help\"."));
        return 2;
    }
    try {
        DoAll();
    } catch (const RunEnded&) {
        failed_ = true;
    } catch (const RunTimeError& error) {
        Fail(QString::fromUtf8(error.what()));
    }
    return failed_ ? 1 : 0;
}

void BatchRun::DoAll() {
    if (options_.xls) {
        ChosenRenderer chosen = ChooseRenderer();
        if (chosen.isBuiltIn) {
            Fail(
                QStringLiteral("No .xls is made: that needs LibreOffice Calc or Microsoft Excel."));
        } else {
            xls_ = std::move(chosen.renderer);
        }
    }
    rows_ = options_.shown.toStdString();
    try {
        RequireFile(options_.reference);
        reference_ = ReadReference(options_);
    } catch (const std::exception& error) {
        return Fail(TroubleWith(options_.reference, error));
    }
    if (options_.rows && !options_.noHeading)
        rows_ = TestRowsHeading(
            options_.judge, options_.reference.isEmpty() ? std::string_view() : kComparedColumns);
    for (const QString& given : options_.records) {
        if (QFileInfo(given).isDir()) {
            Walk(given.endsWith(QLatin1Char('/')) ? given : given + QLatin1Char('/'), {});
        } else {
            Do(given, {});
        }
    }
    WriteRows();
    if (!options_.summary) return;
    Make(QDir::cleanPath(QDir(options_.out).filePath(QStringLiteral("summary.html"))),
         [this](const QString& target) { ReplaceFile(target, summary_.Html()); });
}

// In the order of a record list. Links to folders are followed only where they were given, so that
// a walk ends. folder and below, which is its part under the one that was given, end with a
// separator.
void BatchRun::Walk(const QString& folder, const QString& below) {
    std::vector<QString> names;
    try {
        names = NamesInFolder(folder);
        // Of a folder that may be listed and not entered, the folders in it would be overlooked.
        if (!FolderExists(folder + QLatin1Char('.')))
            throw RunTimeError(ErrorNumber::PermissionDenied, ShownPath(folder).toStdString());
    } catch (const RunTimeError& error) {
        return FailRecord(TroubleWith(folder, error));
    }
    std::sort(names.begin(), names.end());
    for (const QString& name : names) {
        const QFileInfo info(folder + name);
        if (info.isDir()) {
            const QString inside = name + QLatin1Char('/');
            if (!info.isSymLink()) Walk(folder + inside, below + inside);
        } else if ((IsRecordFileName(name) && !IsMadeOfRecord(name)) ||
                   (HasForeignName(name) && !info.exists())) {
            Do(folder + name, below);
        }
    }
}

// Reads the record once, whatever is made of it.
void BatchRun::Do(const QString& path, const QString& below) {
    if (end_signal != 0) throw RunEnded{};
    if (rows_.size() >= kBlock) WriteRows();
    said_.ShowProgress(++records_, path);
    const QString shown = ShownPath(path);
    const bool isJudged = options_.csv || options_.pdf || options_.html || options_.summary ||
                          (options_.rows && options_.judge);
    try {
        RequireFile(path);
        const std::string bytes = ReadWholeFile(path);
        RecordFacts facts =
            ParseRecordFacts(bytes, PageRecordNameOf(path), isJudged ? kMostFactTests : 0);
        if (!isJudged && options_.rows) FindPrintedKneepoints(facts);
        if (facts.testsLeft > 0)
            Fail(shown + QLatin1String(": ") + NotWritten({&facts}, 1).join(QLatin1Char(' ')));
        QStringList sentences;
        for (RecordTest& test : facts.tests) {
            if (options_.reference.isEmpty()) break;
            test.compared = ComparedTexts(test, reference_, options_);
            if (sentences.isEmpty())
                sentences += QStringLiteral("Reference: ") + FromPage(test.compared.front());
            std::string said = "Test " + test.testNumber + ": " + test.compared.back();
            for (const Finding& finding : RatioFindings(test.measuredRatio, test.nameplateRatio,
                                                        test.polarity, std::nullopt))
                said += ' ' + finding.sentence;
            sentences += FromPage(said);
            std::string line = shown.toStdString() + ' ' + said;
            ReplaceControls(line);
            if (!options_.rows) rows_ += line + '\n';
        }
        if (options_.rows) rows_ += TestRowsOf(facts, shown, options_.judge);
        const QStringList made = MakeFiles(bytes, facts, path, below, sentences);
        if (options_.summary) summary_.Add(facts, shown, made);
    } catch (const std::exception& error) {
        FailRecord(TroubleWith(path, error));
    }
}

// Those that are there then.
QStringList BatchRun::MakeFiles(const std::string& bytes, const RecordFacts& facts,
                                const QString& path, const QString& below,
                                const QStringList& compared) {
    QStringList made;
    const auto make = [&](bool isAsked, const char* extension, const auto& write) {
        if (!isAsked) return;
        const QDir folder(options_.out.isEmpty() ? QFileInfo(path).path()
                                                 : options_.out + QLatin1Char('/') + below);
        const QString name = RecordNameOf(path) + QLatin1String(extension);
        const QString target = QDir::cleanPath(folder.filePath(name));
        if (Make(target, write)) made += target;
    };
    const auto render = [&](ReportRenderer& renderer, const QString& target) {
        if (const std::size_t tests = facts.tests.size() + facts.testsLeft; tests > kKneeSlots) {
            throw std::runtime_error("a workbook has at most 31 tests, and the record has " +
                                     std::to_string(tests) + ". The other formats have them.");
        }
        const ReportTables tables = ParseReportTables(bytes, facts.name, RecordSource::RecordFile);
        // One of the user's own, as in the folder of the program's reports.
        const QString own = QDir(options_.out).filePath(QLatin1String(kTemplateFileName));
        const QString model =
            FileExists(own) ? own : InstalledTemplate(QCoreApplication::applicationDirPath());
        const auto rule = std::ranges::find(kKneeRules, options_.rule) - kKneeRules.begin();
        const std::string marked = std::array{kKneeAsa, kKneeIeee45, kKneeIeee30}.at(rule);
        renderer.Render(BuildReport(tables, {marked, options_.impedance}), model, target, {}, {});
    };
    make(options_.csv, ".csv",
         [&](const QString& target) { ReplaceFile(target, RecordsAsCsv({facts})); });
    make(options_.xlsx, ".xlsx", [&](const QString& target) { render(xlsx_, target); });
    make(xls_ != nullptr, ".xls", [&](const QString& target) { render(*xls_, target); });
    if (!options_.pdf && !options_.html) return made;
    Certificate certificate = CertificateOf(facts, options_.rule);
    certificate.compared = compared;
    make(options_.pdf, ".pdf",
         [&](const QString& target) { WriteCertificatePdf(certificate, paper_, target); });
    make(options_.html, ".html", [&](const QString& target) {
        ReplaceFile(target, CertificateAsHtml(certificate, paper_));
    });
    return made;
}

// Whether the file is there at the end.
bool BatchRun::Make(const QString& target, const Write& write) {
    if (end_signal != 0) throw RunEnded{};
    const QString path = ShownPath(target);
    const QFileInfo file(target);
    for (const QString& made : targets_.values(target.toCaseFolded())) {
        std::error_code none;
        if (!std::filesystem::equivalent(file.filesystemFilePath(),
                                         QFileInfo(made).filesystemFilePath(), none))
            continue;
        Fail(QStringLiteral("%1 is that of an earlier record of this run.").arg(path));
        return false;
    }
    try {
        if (!options_.force && file.exists()) {
            Fail(QStringLiteral("%1 is kept. --force replaces it.").arg(path));
        } else {
            if (!FolderExists(file.path())) CreateFolder(file.path());
            write(target);
        }
        targets_.insert(target.toCaseFolded(), target);
        return true;
    } catch (const std::exception& error) {
        Fail(QStringLiteral("%1 is not made: %2").arg(path, QString::fromUtf8(error.what())));
    }
    return false;
}

}  // namespace

int RunBatch(const BatchOptions& options) {
    for (const int signal : {SIGINT, SIGTERM}) {
        if (std::signal(signal, EndRun) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
    const int status = BatchRun(options).Run();
    // Whoever started the program sees what ended it.
    if (end_signal != 0) std::raise(end_signal);
    return status;
}

}  // namespace davo
