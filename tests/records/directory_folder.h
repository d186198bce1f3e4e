// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "common/run_time_error.h"
#include "records/directory_file.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo::test {

inline std::string RecordText(const std::string& date, const std::string& comments = "",
                              const std::string& lineEnd = "\r\n") {
    std::string text;
    for (const std::string& line :
         {std::string("TEST NUMBER: T"), "DATE: " + date, std::string("TIME: 14:05"),
          std::string("# OF SHOTS: 03"), std::string("COMPANY: ACME"),
          std::string("STATION: NORTH  "), std::string("CIRCUIT: C12"), std::string("MFR: ABB"),
          std::string("MODEL: M-1"), std::string("SN: 12345"), "COMMENTS: " + comments,
          std::string("OPERATOR: DOE"), std::string("REC NUMBER: 1")}) {
        text += line + lineEnd;
    }
    return text;
}

inline std::string EntryText(const std::string& name, const std::string& date,
                             const std::string& comments = "") {
    return name + "!" + date + " 14:05TESTS=03COMPANY=ACMESTATION=NORTH  CIRCUIT=C12MFR=ABB" +
           "MODEL=M-1SN=12345OPERATOR= DOECOMMENTS= " + comments;
}

// A data folder with what is in it and its tables.
class DirectoryFile : public testing::Test {
  protected:
    DirectoryFile() : dataPath(folder_.path() + "/Shots_Data/"_L1) { QDir().mkpath(dataPath); }

    void Write(const QString& name, const std::string& bytes) const {
        QFile file(dataPath + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes.data(), static_cast<qint64>(bytes.size())),
                  static_cast<qint64>(bytes.size()));
    }
    void Write(const char* name, const std::string& bytes) const {
        Write(QString::fromUtf8(name), bytes);
    }
    std::string Listing() const {
        QFile file(dataPath + "DIRDNLD.DNL"_L1);
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "missing";
    }
    QStringList Names() const {
        return QDir(dataPath).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    RebuildResult Rebuild() { return RebuildDirectory(dataPath, tables); }

    QTemporaryDir folder_;
    QString dataPath;
    DirectoryTables tables;
};

}  // namespace davo::test
