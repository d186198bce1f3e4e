// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch_run.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <csignal>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>

#include "batch/streams.h"
#include "batch/summary_page.h"
#include "common/files.h"
#include "common/places.h"
#include "common/run_time_error.h"
#include "common/settings.h"
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

struct RunEnded {};

void ThrowIfEnded() {
    if (end_signal != 0) throw RunEnded{};
}

std::string KneepointType(KneeRule rule) {
    for (const char* const type : {kKneeIeee30, kKneeIeee45}) {
        if (KneeRuleOf(type) == rule) return type;
    }
    return kKneeAsa;
}

// A name that is no UTF-8 cannot be said to the system, nor what it is the name of.
bool HasForeignName(const QString& name) {
    return name.contains(QChar(QChar::ReplacementCharacter));
}

constexpr std::size_t kBlock = 65536;

struct FoundRecord {
    QString path;
    QString below = {};  // the folders that it is in below the one that was given: "north/2026/"
};

// A record in hand, read once whatever is made of it.
struct OpenRecord {
    FoundRecord found;
    std::string bytes;
    RecordFacts facts;
    QStringList made = {};  // its files that are there
};

class BatchRun {
  public:
    explicit BatchRun(const BatchOptions& options);
    int Run();

  private:
    using Write = std::function<void(const QString& target)>;

    void Fail(const QString& said);
    void FailRecord(const QString& said);
    void Walk(const QString& folder, const QString& below);
    void Do(const FoundRecord& found);
    std::optional<OpenRecord> Open(const FoundRecord& found);
    void MakeFiles(OpenRecord& record);
    void MakeCertificates(OpenRecord& record);
    void MakeOfRecord(OpenRecord& record, const char* extension, const Write& write);
    bool Make(const QString& target, const Write& write);
    void Render(ReportRenderer& renderer, const OpenRecord& record, const QString& target);

    const BatchOptions& options_;
    const bool needsJudgement_;
    const Paper paper_ = UsualPaper();
    StandardError said_;
    std::string rows_;  // not written yet
    SummaryPage summary_;
    std::unique_ptr<ReportRenderer> xls_;  // null where no .xls is made
    std::set<QString> targets_;            // of this run, made or kept
    int records_ = 0;
    bool failed_ = false;
};

BatchRun::BatchRun(const BatchOptions& options)
    : options_(options),
      needsJudgement_(options.csv || options.pdf || options.html || options.summary ||
                      (options.rows && options.judge)),
      said_(options.rows),
      summary_(options.rule, options.out) {}

void BatchRun::Fail(const QString& said) {
    failed_ = true;
    said_.Say(said);
}

void BatchRun::FailRecord(const QString& said) {
    Fail(said);
    if (options_.summary) summary_.AddUnread(said);
}

int BatchRun::Run() {
    if (options_.xls) {
        ChosenRenderer chosen = ChooseRenderer();
        if (chosen.isBuiltIn) {
            Fail(
                QStringLiteral("No .xls is made: that needs LibreOffice Calc or Microsoft Excel."));
        } else {
            xls_ = std::move(chosen.renderer);
        }
    }
    try {
        if (options_.rows && !options_.noHeading) rows_ = TestRowsHeading(options_.judge);
        for (const QString& given : options_.records) {
            if (QFileInfo(given).isDir()) {
                Walk(given.endsWith(QLatin1Char('/')) ? given : given + QLatin1Char('/'), {});
            } else {
                Do({given});
            }
        }
        WriteOutput(rows_);
        if (options_.summary) {
            const QString target =
                QDir::cleanPath(QDir(options_.out).filePath(QStringLiteral("summary.html")));
            Make(target, [this](const QString& path) { ReplaceFile(path, summary_.Html()); });
        }
    } catch (const ReaderGone&) {
        return 1;
    } catch (const RunEnded&) {
        return 1;
    } catch (const RunTimeError& error) {
        Fail(QString::fromUtf8(error.what()));
        return 1;
    }
    return failed_ ? 1 : 0;
}

// In the order of a record list. Links to folders are followed only where they were given, so that
// a walk ends. folder and below end with a separator.
void BatchRun::Walk(const QString& folder, const QString& below) {
    std::vector<QString> names;
    try {
        names = NamesInFolder(folder);
        // Of a folder that may be listed and not entered, the folders in it would be overlooked.
        if (!FolderExists(folder + QLatin1Char('.')))
            throw RunTimeError(ErrorNumber::PermissionDenied, ShownPath(folder).toStdString());
    } catch (const RunTimeError& error) {
        FailRecord(TroubleText(ShownPath(folder), error));
        return;
    }
    std::sort(names.begin(), names.end());
    for (const QString& name : names) {
        const QFileInfo info(folder + name);
        if (info.isDir()) {
            const QString inside = name + QLatin1Char('/');
            if (!info.isSymLink()) Walk(folder + inside, below + inside);
        } else if (IsRecordFileName(name) || (HasForeignName(name) && !info.exists())) {
            Do({folder + name, below});
        }
    }
}

std::optional<OpenRecord> BatchRun::Open(const FoundRecord& found) {
    const QString path = ShownPath(found.path);
    const QFileInfo info(found.path);
    if (HasForeignName(found.path) && !info.exists()) {
        FailRecord(QStringLiteral("%1 cannot be shown: its name is not in UTF-8.").arg(path));
        return std::nullopt;
    }
    if (info.exists() && !info.isFile()) {
        // Opening a named pipe would wait for its writer.
        FailRecord(QStringLiteral("%1 cannot be shown: it is not a file.").arg(path));
        return std::nullopt;
    }
    try {
        std::string bytes = ReadWholeFile(found.path);
        RecordFacts facts = ParseRecordFacts(bytes, PageRecordNameOf(found.path),
                                             needsJudgement_ ? kMostFactTests : 0);
        if (!needsJudgement_ && options_.rows) FindPrintedKneepoints(facts);
        return OpenRecord{found, std::move(bytes), std::move(facts)};
    } catch (const RunTimeError& error) {
        FailRecord(TroubleText(path, error));
    } catch (const std::exception& error) {
        FailRecord(
            QStringLiteral("%1 cannot be shown: %2").arg(path, QString::fromUtf8(error.what())));
    }
    return std::nullopt;
}

void BatchRun::Do(const FoundRecord& found) {
    ThrowIfEnded();
    said_.ShowProgress(++records_, found.path);
    std::optional<OpenRecord> record = Open(found);
    if (!record) return;
    const bool isCut = record->facts.testsLeft > 0;
    if (isCut) {
        Fail(ShownPath(found.path) + QLatin1String(": ") +
             NotWritten({&record->facts}, 1).join(QLatin1Char(' ')));
    }
    if (options_.rows) rows_ += TestRowsOf(record->facts, ShownPath(found.path), options_.judge);
    if (rows_.size() >= kBlock) {
        WriteOutput(rows_);
        rows_.clear();
    }
    MakeFiles(*record);
    if (options_.summary) summary_.Add(record->facts, ShownPath(found.path), record->made);
}

void BatchRun::MakeFiles(OpenRecord& record) {
    if (options_.csv) {
        MakeOfRecord(record, ".csv", [&record](const QString& target) {
            ReplaceFile(target, RecordsAsCsv({record.facts}));
        });
    }
    if (options_.xlsx) {
        MakeOfRecord(record, ".xlsx", [&](const QString& target) {
            XlsxRenderer renderer;
            Render(renderer, record, target);
        });
    }
    if (xls_) {
        MakeOfRecord(record, ".xls", [&](const QString& target) { Render(*xls_, record, target); });
    }
    if (options_.pdf || options_.html) MakeCertificates(record);
}

void BatchRun::MakeCertificates(OpenRecord& record) {
    const Certificate certificate = CertificateOf(record.facts, options_.rule);
    if (options_.pdf) {
        MakeOfRecord(record, ".pdf", [&](const QString& target) {
            WriteCertificatePdf(certificate, paper_, target);
        });
    }
    if (options_.html) {
        MakeOfRecord(record, ".html", [&](const QString& target) {
            ReplaceFile(target, CertificateAsHtml(certificate, paper_));
        });
    }
}

void BatchRun::Render(ReportRenderer& renderer, const OpenRecord& record, const QString& target) {
    const ReportTables tables =
        ParseReportTables(record.bytes, record.facts.name, RecordSource::RecordFile);
    // One of the user's own, as in the folder of the program's reports.
    const QString own = QDir(options_.out).filePath(QLatin1String(kTemplateFileName));
    const QString model =
        FileExists(own) ? own : InstalledTemplate(QCoreApplication::applicationDirPath());
    renderer.Render(BuildReport(tables, {KneepointType(options_.rule), options_.impedance}), model,
                    target, {}, {});
}

void BatchRun::MakeOfRecord(OpenRecord& record, const char* extension, const Write& write) {
    const FoundRecord& found = record.found;
    const QString name = RecordNameOf(found.path) + QLatin1String(extension);
    const QDir folder = options_.out.isEmpty()
                            ? QFileInfo(found.path).dir()
                            : QDir(options_.out + QLatin1Char('/') + found.below);
    const QString target = QDir::cleanPath(folder.filePath(name));
    if (Make(target, write)) record.made += target;
}

// Whether the file is there at the end.
bool BatchRun::Make(const QString& target, const Write& write) {
    ThrowIfEnded();
    const QString path = ShownPath(target);
    if (targets_.contains(target)) {
        Fail(QStringLiteral("%1 is that of an earlier record of this run.").arg(path));
        return false;
    }
    if (!options_.force && QFileInfo::exists(target)) {
        Fail(QStringLiteral("%1 is kept. --force replaces it.").arg(path));
        targets_.insert(target);
        return true;
    }
    try {
        const QString folder = QFileInfo(target).path();
        if (!FolderExists(folder)) CreateFolder(folder);
        write(target);
        targets_.insert(target);
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
