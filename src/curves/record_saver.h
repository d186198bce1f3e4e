// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <span>

#include "common/prompts.h"
#include "reports/page/certificate.h"

namespace davo {

// Saves what is made of records under a name that the operator chooses: the record's is proposed,
// and the box starts where the last file went, at first beside the record. It asks before it
// replaces a file, and says what fails. Records are named by the full paths of their files.
class RecordSaver {
  public:
    // Writes a file; what it does not have, in words.
    using Write = std::function<QStringList(const QString& path)>;

    // prompts must outlive it.
    explicit RecordSaver(Prompts& prompts) : prompts_(prompts) {}

    // What is to be shown: where the file is, and what write says. Empty when none was saved.
    QStringList Save(const QString& record, const QString& ending, const Write& write);

    // The same with the certificate of tests, as PDF or HTML by the name that was chosen.
    // kneepointType is the marker whose kneepoints its chart marks; compared is its section of a
    // comparison.
    QStringList SaveCertificate(const QString& record, std::span<const CertifiedTest> tests,
                                const QString& kneepointType, const QStringList& compared);
    // Of the tests of a record, which is read.
    QStringList SaveCertificate(const QString& record, const QString& kneepointType);

  private:
    QString AskForFile(const QString& record, const QString& ending);

    Prompts& prompts_;
    QString folder_;
};

}  // namespace davo
