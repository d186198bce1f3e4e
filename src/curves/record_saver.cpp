// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/record_saver.h"

#include <QFileInfo>
#include <vector>

#include "common/files.h"
#include "common/run_time_error.h"
#include "records/record_name.h"
#include "reports/page/html.h"
#include "reports/page/pdf.h"
#include "reports/record_facts.h"
#include "reports/record_texts.h"

namespace davo {

namespace {

constexpr QLatin1String kCertificate(".pdf");

bool IsHtml(const QString& path) {
    return path.endsWith(QLatin1String(".html"), Qt::CaseInsensitive);
}

void WriteCertificate(const Certificate& certificate, const QString& path) {
    if (IsHtml(path)) {
        ReplaceFile(path, CertificateAsHtml(certificate, UsualPaper()));
    } else {
        WriteCertificatePdf(certificate, UsualPaper(), path);
    }
}

}  // namespace

QString RecordSaver::AskForFile(const QString& record, const QString& ending) {
    if (folder_.isEmpty()) folder_ = QFileInfo(record).absolutePath();
    QString filter = QLatin1Char('*') + ending;
    // A certificate is also for who reads it on a telephone.
    const bool isPage = ending == kCertificate;
    if (isPage) filter += QStringLiteral(";;*.html");
    QString path = prompts_.SaveFile(folder_, filter, RecordNameOf(record) + ending);
    if (path.isEmpty()) return {};
    const bool isHtml = isPage && IsHtml(path);
    if (!isHtml && !path.endsWith(ending, Qt::CaseInsensitive)) path += ending;
    folder_ = QFileInfo(path).absolutePath();
    if (!FileExists(path)) return path;
    const QString question =
        QStringLiteral("The file '%1' exists already. Do you want to replace it?")
            .arg(QFileInfo(path).fileName());
    return prompts_.Agrees(question) ? path : QString();
}

QStringList RecordSaver::Save(const QString& record, const QString& ending, const Write& write) {
    try {
        const QString path = AskForFile(record, ending);
        if (path.isEmpty()) return {};
        const QStringList notWritten = write(path);
        return QStringList{SavedText(path)} + notWritten;
    } catch (const RunTimeError& error) {
        prompts_.Message(QStringLiteral("The file was not saved. ") +
                         QString::fromUtf8(error.what()));
        return {};
    }
}

QStringList RecordSaver::SaveCertificate(const QString& record,
                                         std::span<const CertifiedTest> tests,
                                         const QString& kneepointType,
                                         const QStringList& compared) {
    return Save(record, kCertificate, [&](const QString& path) {
        Certificate certificate = CertificateOf(tests, KneeRuleOf(kneepointType.toStdString()));
        certificate.compared = compared;
        WriteCertificate(certificate, path);
        return QStringList();
    });
}

QStringList RecordSaver::SaveCertificate(const QString& record, const QString& kneepointType) {
    return Save(record, kCertificate, [&](const QString& path) {
        const RecordFacts facts = ReadRecordFacts(record);
        WriteCertificate(CertificateOf(facts, KneeRuleOf(kneepointType.toStdString())), path);
        return NotWritten({&facts}, 1);
    });
}

}  // namespace davo
