// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "records/header_table.h"
#include "retrieval/header_upload.h"
#include "ui/event_handlers.h"

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace davo {

// What the header window is opened for.
enum class HeaderMode : std::int16_t {
    Session = 0,  // the boxes become the current header for the tests that follow
    Pc = 1,       // that, and the header file is rewritten
    Davo = 2,     // the ten header slots of the instrument are read, edited and uploaded
};

// Where the headers of modes 1 and 2 go to.
struct HeaderTargets {
    HeaderTable& header;
    QString dataPath;    // ends with the separator
    HeaderSlots& slots;  // as last read or edited
    Link& link;
    std::function<bool()> openPort;  // opens the port that is configured
    HeaderPatience patience = {};
};

// "Test Record Header Information".
class frmHeader : public QDialog {
  public:
    // Mode 0. All must outlive the window. testNotes: Windows-1252, lines joined by CR LF.
    frmHeader(HeaderTable& header, std::string& testNotes, Prompts& prompts, QWidget* parent);
    // Mode 1 or 2. What targets refers to must outlive the window. In mode 2 the slots are read
    // as soon as events run.
    frmHeader(HeaderMode mode, const HeaderTargets& targets, Prompts& prompts, QWidget* parent);

    // The header or the notes have changed.
    std::function<void()> OnChanged;
    // The window has closed.
    std::function<void()> OnUnload;

    // Every way of closing comes here. While the instrument is waited for, that is ended first and
    // the window closes then; a question comes before when the instrument's slots are erased and
    // not all sent.
    void done(int result) override;

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    frmHeader(HeaderMode mode, HeaderTable& header, Prompts& prompts, QWidget* parent);
    void BuildSlotChoice(QFormLayout* form);
    void BuildBoxes(QFormLayout* form);
    void BuildProgress(QVBoxLayout* column);
    void BuildButtons(QVBoxLayout* column);
    void Form_Load();

    void cmdSave_Click();
    void cmdNotes_Click();
    void cboHeader_Click();

    void UseHeader();
    bool MaySave(const HeaderBoxes& fields);
    void ShowState();
    HeaderBoxes Boxes() const;
    void ShowBoxes(const HeaderBoxes& boxes);
    // The same texts, but for those that were too long for a field.
    void ShowCutBoxes(const HeaderBoxes& boxes);
    // In the status, and on a line of its own what was cut.
    void Say(const QString& text);
    void PackShownSlot();
    void ShowSlot();

    // Runs a dialogue with the instrument; the window closes behind it when that was asked for.
    template <class Dialogue>
    void Converse(const Dialogue& dialogue);
    void EnableControls(bool enable);
    void ReadSlots();
    void UploadSlots();
    void TellUpload(const UploadResult& result);
    void ShowProgress(std::size_t done);
    void Leave();
    bool MayLeave();

    HeaderMode mode_;
    HeaderTable& header_;
    std::string* testNotes_ = nullptr;  // mode 0
    Prompts& prompts_;
    EventHandlers handlers_;
    std::optional<HeaderTargets> targets_;    // modes 1 and 2
    std::optional<HeaderExchange> exchange_;  // mode 2
    int shownSlot_ = 0;
    bool slotsRead_ = false;
    bool edited_ = false;  // the boxes hold what was not used, saved or sent yet
    QString cut_;          // what the last cut did, in words
    bool asking_ = false;
    bool askWhenSending_ = false;
    bool closeWanted_ = false;
    std::array<QLineEdit*, kHeaderFieldCount> txtHeader_{};
    QComboBox* cboHeader_ = nullptr;
    QLabel* lblUsed_ = nullptr;
    QProgressBar* pbarProgress_ = nullptr;
    QPushButton* cmdSave_ = nullptr;
    QPushButton* cmdExit_ = nullptr;
};

}  // namespace davo
