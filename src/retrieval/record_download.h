#pragma once

#include <QString>
#include <functional>
#include <string>
#include <vector>

#include "common/prompts.h"
#include "link/link.h"
#include "records/directory_file.h"

namespace davo {

inline constexpr const char* kRecordScratchFileName = "TempTEST";

// How a download ended.
enum class DownloadEnd {
    Complete,   // the whole selection was gone through
    Cancelled,  // Cancel at a replace question
    NotFound,   // the instrument does not have a record; its file holds the header lines only
    Left,       // Leave, or the wait was ended elsewhere
    Lost,       // the port is closed
    Failed,     // a file could not be written
};

struct DownloadResult {
    DownloadEnd end = DownloadEnd::Complete;
    std::vector<QString> written;      // files in the data folder, in order
    std::vector<std::string> missing;  // record names not fetched because the download ended early
};

// Fetches the selected records from the instrument into the data folder. A record file appears
// there, or replaces an earlier one, in one go when its content is complete. "DIRDNLD.DNL" lists
// the downloaded records and is whole at every moment.
class RecordDownload {
  public:
    // link, prompts and tables must outlive it. dataPath and scratchFolder end with the separator.
    RecordDownload(Link& link, Prompts& prompts, DirectoryTables& tables, QString dataPath,
                   QString scratchFolder);

    // Downloads the first tables.recordCount of tables.dirEntries (tables.dirFileNames is rebuilt
    // from them). All questions are asked and everything that went wrong is told here; throws
    // nothing of its own. Not to be called while it runs.
    DownloadResult Run();

    // Ends a run under way: the exchange at once, the run when what the instrument was still
    // sending has passed and cannot be taken for a later reply. A second call does not wait for
    // that. Records that are complete stay. Nothing happens without a run.
    void Leave();
    bool Running() const { return running_; }

    // "Downloading Record 2 of 5", for the status label.
    std::function<void(const QString& text)> OnStatus;
    // "Prepare to download from DAVO, Please Wait..." and the like, what is being done now.
    std::function<void(const QString& text)> OnActivity;
    // Bytes of the replies when the entries tell their sizes, else records. done never goes back
    // and ends at total when the selection was gone through.
    std::function<void(std::size_t done, std::size_t total)> OnProgress;

  private:
    Link& link_;
    Prompts& prompts_;
    DirectoryTables& tables_;
    QString dataPath_;
    QString scratchFolder_;
    bool running_ = false;
    bool leaving_ = false;
};

}  // namespace davo
