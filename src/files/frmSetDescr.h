// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "files/record_headers.h"
#include "records/directory_file.h"
#include "ui/event_handlers.h"

class QGridLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace davo {

class frmNotepad;
class BesideRecords;
class RecordList;

// "TEST Directory": the header, the tests' texts and the notes of saved records.
class frmSetDescr : public QWidget {
  public:
    // directory is loaded already; dataPath ends with the separator; kneepointType is the marker
    // that a certificate has. All of them must outlive the window.
    frmSetDescr(DirectoryTables& directory, const QString& dataPath, const QString& kneepointType,
                Prompts& prompts);
    // Writes changes back that are unsaved still: the program ends.
    ~frmSetDescr() override;

    // Fills the list of records.
    void Form_Load();

    // The window has closed.
    std::function<void()> OnUnload;
    // A record was saved, in words; the window may close next.
    std::function<void(const QString& text)> OnSaved;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    // The record file in hand. Its texts are read when it is chosen and kept until it is left.
    struct OpenFile {
        QString name;       // in the data folder
        std::string bytes;  // as read or written last
        RecordHeaders headers;
        bool changed = false;
    };

    QWidget* BuildLists();
    QGroupBox* BuildFrame();
    QLineEdit* AddBox(QGridLayout* grid, int row, int column, const char* caption,
                      const QString& name);
    void Connect();

    // Reads the folder again; the file in hand stays so, as it is by then.
    void ListAgain();
    void EscapePressed();
    void lvTest_Click();
    void lstTest_Click();
    // A text of the file in hand is not saved any more.
    void Changed();
    void TestTextChanged(QLineEdit* box, std::array<std::string, kMostTests>& texts);
    void cmdNotes_Click();

    // Takes the record file of that name in hand, or none.
    void Choose(const QString& name);
    void ShowFile();
    void ShowTest();
    void ShowStates();
    QString TestCaption(std::size_t test) const;

    // The file in hand.
    QString Path() const { return dataPath_ + file_->name; }
    QString Name() const;
    // Cuts the boxes of the header to 20 and takes them; the captions of those that were cut.
    QStringList TakeHeader();
    // Writes the file in hand back, whatever another program has made of it meanwhile; false when
    // the operator would rather not. Throws the errors of the files and RunTimeError 9; the file is
    // then as it was.
    bool WriteBack();
    void Keep(std::string written, const QStringList& cut);
    // Asks whether to write headers, which do not survive that.
    bool AgreesToLose(const RecordHeaders& headers) const;
    // Writes unsaved changes back; says why when that fails. False when the file stays in hand.
    bool MayLeaveFile();

    DirectoryTables& directory_;
    const QString& dataPath_;
    Prompts& prompts_;
    EventHandlers handlers_;
    std::optional<OpenFile> file_;
    int test_ = -1;  // the selected test, from 0; none: -1

    BesideRecords* beside_ = nullptr;
    RecordList* lvTest_ = nullptr;
    QListWidget* lstTest_ = nullptr;
    QLabel* lblFilename_ = nullptr;
    QLineEdit* txtFilenameData_ = nullptr;
    QLineEdit* txtTimeData_ = nullptr;
    QLineEdit* txtTestNumData_ = nullptr;
    QLineEdit* txtTestDescr_ = nullptr;
    QLineEdit* txtTestNotes_ = nullptr;
    std::array<QLineEdit*, kHeaderFieldCount> txtHeader_{};
    QLabel* lblState_ = nullptr;
    QPushButton* cmdNotes_ = nullptr;
    QPushButton* cmdSave_ = nullptr;
    QPushButton* cmdExit_ = nullptr;
    QPointer<frmNotepad> notepad_;
};

}  // namespace davo
