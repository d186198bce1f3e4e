#include "retrieval/record_reply.h"

#include "common/run_time_error.h"

namespace davo {
std::string RecordHeaderLines(std::string_view, std::string_view) {
    throw RunTimeError(ErrorNumber::TypeMismatch);
}
ConvertedRecord ConvertRecordReply(std::string_view) {
    throw RunTimeError(ErrorNumber::TypeMismatch);
}
std::size_t UsualReplyBytes(int) {
    throw RunTimeError(ErrorNumber::TypeMismatch);
}
}  // namespace davo
