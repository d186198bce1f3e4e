// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/xls_file.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace davo::calc {

namespace {

// Little-endian; 0 behind the end.
std::uint32_t NumberIn(std::string_view bytes, std::size_t at, std::size_t size) {
    constexpr unsigned kByte = 8;
    std::uint32_t number = 0;
    for (std::size_t i = size; i > 0; --i) {
        const std::size_t place = at + i - 1;
        const unsigned char byte =
            place < bytes.size() ? static_cast<unsigned char>(bytes[place]) : 0;
        number = number << kByte | byte;
    }
    return number;
}

// Where a stream of a compound file has its sectors.
class CompoundStream {
  public:
    CompoundStream(std::string& file, std::string_view name) : file_(file) {
        constexpr std::size_t kSectorShiftAt = 30;
        constexpr std::size_t kDirectoryAt = 48;
        constexpr std::size_t kEntry = 128;
        constexpr std::size_t kSmallShift = 9;
        constexpr std::size_t kLargeShift = 12;
        const std::size_t shift = NumberIn(file, kSectorShiftAt, 2);
        if (shift != kSmallShift && shift != kLargeShift) return;
        sectorSize_ = std::size_t{1} << shift;
        for (const std::size_t sector : ChainFrom(NumberIn(file, kDirectoryAt, 4))) {
            const std::size_t begin = (sector + 1) * sectorSize_;
            for (std::size_t at = begin; at < begin + sectorSize_; at += kEntry) {
                if (HasName(at, name)) {
                    constexpr std::size_t kStartAt = 116;
                    constexpr std::size_t kSizeAt = 120;
                    sectors_ = ChainFrom(NumberIn(file_, at + kStartAt, 4));
                    size_ = NumberIn(file_, at + kSizeAt, 4);
                    // A short stream is elsewhere, and of a very long one not all is found.
                    constexpr std::size_t kShort = 4096;
                    if (size_ < kShort || sectors_.size() * sectorSize_ < size_) sectors_.clear();
                    return;
                }
            }
        }
    }

    std::string Read() const {
        std::string bytes;
        for (const std::size_t sector : sectors_)
            bytes += file_.substr((sector + 1) * sectorSize_, sectorSize_);
        bytes.resize(std::min(bytes.size(), size_));
        return bytes;
    }
    // As many bytes as were read.
    void Write(std::string_view bytes) {
        for (const std::size_t sector : sectors_) {
            const std::string_view part = bytes.substr(0, sectorSize_);
            file_.replace((sector + 1) * sectorSize_, part.size(), part);
            bytes.remove_prefix(part.size());
        }
    }

  private:
    // UTF-16.
    bool HasName(std::size_t at, std::string_view name) const {
        for (std::size_t i = 0; i < name.size(); ++i) {
            if (NumberIn(file_, at + 2 * i, 2) != static_cast<unsigned char>(name[i])) return false;
        }
        return NumberIn(file_, at + 2 * name.size(), 2) == 0;
    }
    std::size_t After(std::size_t sector) const {
        constexpr std::size_t kTablesAt = 76;
        constexpr std::size_t kTablesInHead = 109;
        const std::size_t perTable = sectorSize_ / 4;
        if (sector / perTable >= kTablesInHead) return file_.size();
        const std::size_t table = NumberIn(file_, kTablesAt + 4 * (sector / perTable), 4);
        return NumberIn(file_, (table + 1) * sectorSize_ + 4 * (sector % perTable), 4);
    }
    // Ends at the mark of an end, and where there is no such sector.
    std::vector<std::size_t> ChainFrom(std::size_t sector) const {
        std::vector<std::size_t> chain;
        while ((sector + 2) * sectorSize_ <= file_.size() &&
               chain.size() * sectorSize_ < file_.size()) {
            chain.push_back(sector);
            sector = After(sector);
        }
        return chain;
    }

    std::string& file_;
    std::size_t sectorSize_ = 0;
    std::vector<std::size_t> sectors_;
    std::size_t size_ = 0;
};

enum Kind : std::uint32_t {
    kEndOfPart = 0x000A,
    kSelection = 0x001D,
    kFirstWindow = 0x003D,
    kWindow = 0x023E,
    kBeginOfPart = 0x0809,
    kBegin = 0x1033,
    kEnd = 0x1034,
    kSource = 0x1051,
};

struct Record {
    std::uint32_t kind = 0;
    std::size_t at = 0;    // of its data
    std::size_t size = 0;  // of its data
};
constexpr std::size_t kRecordHead = 4;
constexpr std::size_t kActiveSheet = 10;  // where the first window has it
constexpr std::size_t kWindowSize = 6;    // of what is written of a sheet's window
constexpr std::size_t kSelections = 9;    // where the ranges are that are selected

// Walks through the records of a workbook's stream.
class XlsFinisher {
  public:
    XlsFinisher(std::string& stream, const Workbook& workbook)
        : stream_(stream), workbook_(workbook) {}

    void Run() {
        for (std::size_t at = 0; at + kRecordHead <= stream_.size();) {
            const Record record{NumberIn(stream_, at, 2), at + kRecordHead,
                                NumberIn(stream_, at + 2, 2)};
            if (record.at + record.size > stream_.size()) return;
            Visit(record);
            // A series' name is another record by now.
            at = record.at + NumberIn(stream_, at + 2, 2);
        }
    }

  private:
    void Visit(const Record& record) {
        if (record.kind == kBeginOfPart) {
            // The first part is the workbook's, the next ones are the sheets', and in those the
            // charts'.
            if (++depth_ == 1) {
                ++parts_;
                isFrozen_ = false;
            }
        } else if (record.kind == kEndOfPart) {
            --depth_;
        } else if (record.kind == kFirstWindow && record.size >= kActiveSheet + 2) {
            Put(record.at + kActiveSheet, workbook_.activeSheet);
        } else if (record.kind == kWindow && record.size >= kWindowSize && HasSheet()) {
            ShowFrom(record.at);
        } else if (record.kind == kSelection && record.size >= kSelections && HasSheet()) {
            Select(record);
        } else if (record.kind == kSource && HasSheet() && depth_ == 2) {
            TakeOutOfLegend(record);
        }
    }

    bool HasSheet() const { return parts_ >= 2 && parts_ - 2 < workbook_.sheets.size(); }
    const Sheet& SheetHere() const { return workbook_.sheets.at(parts_ - 2); }

    void Put(std::size_t at, std::size_t number) {
        constexpr unsigned kByte = 8;
        if (at + 1 >= stream_.size()) return;
        stream_.at(at) = static_cast<char>(number & 0xFFU);
        stream_.at(at + 1) = static_cast<char>(number >> kByte & 0xFFU);
    }

    void ShowFrom(std::size_t at) {
        constexpr std::uint32_t kFrozen = 0x0008;
        constexpr std::uint32_t kSelectedAndShown = 0x0600;
        std::uint32_t flags = NumberIn(stream_, at, 2) & ~kSelectedAndShown;
        if (parts_ - 2 == workbook_.activeSheet) flags |= kSelectedAndShown;
        Put(at, flags);
        isFrozen_ = (flags & kFrozen) != 0;
        if (isFrozen_) return;  // the template's owner has chosen what is seen
        Put(at + 2, static_cast<std::size_t>(SheetHere().firstVisible.row - 1));
        Put(at + 4, static_cast<std::size_t>(SheetHere().firstVisible.column - 1));
    }

    // The pane and the number of ranges stay; each becomes the cell.
    void Select(const Record& record) {
        if (isFrozen_) return;
        constexpr std::size_t kActiveCell = 1;
        constexpr std::size_t kRange = 6;  // bytes
        constexpr unsigned kByte = 8;
        const auto row = static_cast<std::size_t>(SheetHere().selected.row - 1);
        const auto column = static_cast<std::size_t>(SheetHere().selected.column - 1);
        Put(record.at + kActiveCell, row);
        Put(record.at + kActiveCell + 2, column);
        Put(record.at + kActiveCell + 4, 0);  // the first range has it
        for (std::size_t at = kSelections; at + kRange <= record.size; at += kRange) {
            Put(record.at + at, row);
            Put(record.at + at + 2, row);
            Put(record.at + at + 4, column << kByte | column);
        }
    }

    // Of the report's series, only those that are not in the legend have a list of two cells for a
    // name; a short text
    // in its place leaves the eight bytes for what deletes the entry, which is the last of a
    // series.
    void TakeOutOfLegend(const Record& source) {
        using namespace std::string_view_literals;
        constexpr std::size_t kSizeOfTwoCells = 27;
        constexpr std::string_view kName =
            "\x51\x10\x08\0\0\x01\0\0\0\0\0\0"                                   // a text as name:
            "\x0D\x10\x07\0\0\0\x03\0Vkp"sv;                                     // "Vkp"
        constexpr std::string_view kDeleted = "\x43\x10\x04\0\xFF\xFF\x01\0"sv;  // the entry
        const bool isName = source.size == kSizeOfTwoCells && stream_.at(source.at) == '\0';
        if (!isName) return;
        const std::size_t begin = source.at - kRecordHead;
        const std::size_t behind = source.at + source.size;
        std::size_t end = behind;
        for (int depth = 0; end < stream_.size();
             end += kRecordHead + NumberIn(stream_, end + 2, 2)) {
            const std::uint32_t kind = NumberIn(stream_, end, 2);
            if (kind == kEnd && depth == 0) break;
            depth += kind == kBegin ? 1 : kind == kEnd ? -1 : 0;
        }
        if (end >= stream_.size()) return;
        std::string made(kName);
        made += stream_.substr(behind, end - behind);
        made += kDeleted;
        if (made.size() == end - begin) stream_.replace(begin, made.size(), made);
    }

    std::string& stream_;
    const Workbook& workbook_;
    std::size_t parts_ = 0;
    int depth_ = 0;
    bool isFrozen_ = false;  // the sheet
};

}  // namespace

void FinishXls(std::string& bytes, const Workbook& workbook) {
    CompoundStream stream(bytes, "Workbook");
    std::string records = stream.Read();
    XlsFinisher(records, workbook).Run();
    stream.Write(records);
}

}  // namespace davo::calc
