// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/prompts.h"
#include "link/link.h"
#include "records/directory_file.h"
#include "retrieval/record_reply.h"

namespace davo {

inline constexpr const char* kRecordScratchFileName = "TempTEST";

// How a download ended.
enum class DownloadEnd {
    Complete,   // the whole selection was gone through
    Cancelled,  // Cancel at a replace question
    NotFound,   // the instrument does not have a record; its file holds the header lines only
    Left,       // Leave, or the wait was ended elsewhere
    Lost,       // the port is closed, or another exchange has it
    Failed,     // a file could not be read or written
};

struct DownloadResult {
    DownloadEnd end = DownloadEnd::Complete;
    std::vector<QString> written;      // files in the data folder with a whole record, in order
    std::vector<std::string> missing;  // record names not fetched because the download ended early
};

// What is told of a record that did not arrive complete, by the entry it was chosen from: tests
// that are missing or doubtful. Empty when it did.
QString NotWholeText(std::string_view entry, const ConvertedRecord& record);

// Fetches the selected records from the instrument into the data folder. A record file appears
// there, or replaces an earlier one, in one go when its content is complete. A record that did not
// come whole is written too, with what came; over an earlier file only after a question.
// "DIRDNLD.DNL" lists the records that were written and is whole at every moment.
class RecordDownload {
  public:
    // link, prompts and tables must outlive it. dataPath and scratchFolder end with the separator.
    RecordDownload(Link& link, Prompts& prompts, DirectoryTables& tables, QString dataPath,
                   QString scratchFolder);

    // Downloads the first tables.recordCount of tables.dirEntries (tables.dirFileNames is rebuilt
    // from them). All questions are asked and everything that went wrong is told here, file errors
    // included. Not to be called while it runs.
    DownloadResult Run();

    // Ends a run under way at once, after the bytes that have arrived; one that is asking the
    // operator ends with his answer. Records that are complete stay.
    void Leave();
    bool Running() const { return running_; }

    // "Downloading Record 2 of 5", for the status label.
    std::function<void(const QString& text)> OnStatus = [](const QString&) {};
    // "Prepare to download from DAVO, Please Wait..." and the like, what is being done now.
    std::function<void(const QString& text)> OnActivity = [](const QString&) {};
    // Bytes of the replies when the entries have their sizes, else records. done never goes back
    // and ends at total when the selection was gone through.
    std::function<void(std::size_t done, std::size_t total)> OnProgress = [](auto, auto) {};

  private:
    void Download(DownloadResult& result);
    DownloadEnd DownloadRecord(std::size_t index, DownloadResult& result);
    // So many records are through, and so many bytes of the next one's reply are there.
    void TellProgress(std::size_t whole, std::size_t bytes) const;
    // Sends command and puts what came into reply. Nothing when the download can go on, else why it
    // ends.
    std::optional<DownloadEnd> Exchange(std::string_view command, std::string_view expectedReply,
                                        std::string& reply);
    std::optional<DownloadEnd> WhyEnded() const;
    void WriteRecord(const std::string& entry, const std::string& name, const std::string& reply,
                     DownloadResult& result);
    // Whether what came of a record, which remark says is not whole, may be written under name.
    bool MayWriteInPart(const std::string& name, const QString& remark);
    void WriteDirectory() const;

    // Under which name a record is to be written. Empty: the record is skipped; nothing: the whole
    // download is cancelled.
    std::optional<std::string> AskTarget(const std::string& name);
    QString PathOf(const std::string& name) const;
    void Tell(const DownloadResult& result, const QString& error);

    Link& link_;
    Prompts& prompts_;
    DirectoryTables& tables_;
    QString dataPath_;
    QString scratchFolder_;
    std::vector<std::string> listed_;  // the directory's entries so far
    QStringList notWhole_;             // the names of the records that did not arrive complete
    QStringList remarks_;              // and what is told of each
    std::size_t next_ = 0;             // the first entry that has not been gone through
    bool running_ = false;
    bool leaving_ = false;
};

}  // namespace davo
