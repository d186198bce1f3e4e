#include "retrieval/record_download.h"

#include <utility>

#include "common/run_time_error.h"

namespace davo {
RecordDownload::RecordDownload(Link& link, Prompts& prompts, DirectoryTables& tables,
                               QString dataPath, QString scratchFolder)
    : link_(link),
      prompts_(prompts),
      tables_(tables),
      dataPath_(std::move(dataPath)),
      scratchFolder_(std::move(scratchFolder)) {}
DownloadResult RecordDownload::Run() {
    throw RunTimeError(ErrorNumber::TypeMismatch);
}
void RecordDownload::Leave() {
    leaving_ = true;
}
}  // namespace davo
