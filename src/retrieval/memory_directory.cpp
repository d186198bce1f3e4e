#include "retrieval/memory_directory.h"

#include "common/run_time_error.h"

namespace davo {
std::optional<std::string> ReadMemoryDirectory(Link&, Prompts&) {
    throw RunTimeError(ErrorNumber::TypeMismatch);
}
CutRecordsResult CutRecords(std::string_view) {
    throw RunTimeError(ErrorNumber::TypeMismatch);
}
MemoryDirectory BuildEntries(std::string_view) {
    throw RunTimeError(ErrorNumber::TypeMismatch);
}
QString NotListedText(const MemoryDirectory&) {
    throw RunTimeError(ErrorNumber::TypeMismatch);
}
}  // namespace davo
