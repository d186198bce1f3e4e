#pragma once

#include <QFile>
#include <QString>
#include <string>
#include <string_view>
#include <vector>

namespace davo {

// "TESTFILE.txt" in the scratch folder.
inline constexpr const char* kCaptureFileName = "TESTFILE.txt";

// The raw file that a running session appends its shots to. Every Append is on the disk (flushed)
// when it returns. All functions throw RunTimeError with the number of what the system said.
class CaptureFile {
 public:
    // Creates path empty and keeps it open for writing.
    void Create(const QString& path);
    bool IsOpen() const { return file_.isOpen(); }
    // Appends block whole and flushes it to the disk. When it fails, the file is cut back to the
    // length it had, so that a later try does not follow a part.
    void Append(std::string_view block);
    void Close();
    QString Path() const { return file_.fileName(); }

 private:
    QFile file_;
};

// One shot as the capture file holds it.
struct CapturedShot {
    std::string hexText;         // between DATA and DONE, blanks and line ends removed
    std::string measuredRatio;   // text after "MEASURED RATIO: " from character 17 on
    std::string nameplateRatio;  // from character 18 on, trimmed; "N/A" when there is none
    std::string percentError;    // from character 16 on, trimmed
};

// The complete shots of a capture file's bytes, by the rules of WriteTestRecordFile.
std::vector<CapturedShot> CapturedShots(std::string_view bytes);

}  // namespace davo
