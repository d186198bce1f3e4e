// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace davo {

// On the wire and in files a character is one byte of Windows-1252; positions and widths count
// bytes. Text becomes a QString at the widget's edge only.

// The line end of files and of the instrument.
inline constexpr std::string_view kLineEnd = "\r\n";

// What a file in UTF-8 may begin with. Without it a spreadsheet takes the text for the computer's
// own page.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// What a record is between, on the wire and in the capture file.
inline constexpr std::string_view kRecordStart = "DATA";
inline constexpr std::string_view kRecordEnd = "DONE";

// text without the blanks (code 32 only) at both ends.
std::string TrimBlanks(std::string_view text);

// text filled on the right with blanks to width bytes; never cut.
std::string PadRight(std::string_view text, std::size_t width);

// text without any blank, CR or LF.
std::string RemoveBlanksAndLineEnds(std::string_view text);

bool Contains(std::string_view text, std::string_view part);

// Replaces each control character of text (codes 0 to 31 and 127) by "?", but those in kept, which
// no file and no workbook is spoilt by; how many were replaced. Positions and widths stay.
std::size_t ReplaceControls(std::string& text, std::string_view kept = {});

// text[start, start + length) in 0-based bytes, as far as it exists: a start past the end gives
// an empty text, never an error.
std::string_view Middle(std::string_view text, std::size_t start,
                        std::size_t length = std::string_view::npos);

// Windows-1252 bytes as a QString. The five codes that the page leaves open (81, 8D, 8F, 90, 9D
// hexadecimal) become the control characters of the same code, so that every byte comes back.
QString FromPage(std::string_view bytes);

// The Windows-1252 bytes of text; nothing when a character cannot be written in that page.
std::optional<std::string> ToPage(const QString& text);

// "1 to 4, 7, 8": the names of rising numbers; of three and more that follow each other the ends.
QString RunsText(const std::vector<int>& rising, const std::function<QString(int)>& nameOf);

// Reads text as comma-delimited fields: a field ends at a comma or a line end (CR LF, LF or CR);
// blanks around it are dropped; a field that starts with a double quote runs to the next double
// quote and loses both, and what is between that quote and the next comma or line end is
// passed over.
class FieldReader {
  public:
    // bytes must live as long as the reader.
    explicit FieldReader(std::string_view bytes) : bytes_(bytes) {}

    bool AtEnd() const { return at_ >= bytes_.size(); }

    // The next field. Throws RunTimeError 62 (Input past end of file) at the end.
    std::string Next();

  private:
    std::string_view bytes_;
    std::size_t at_ = 0;
};

}  // namespace davo
