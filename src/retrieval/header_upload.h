// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <vector>

#include "common/prompts.h"
#include "link/link.h"
#include "retrieval/header_slots.h"

namespace davo {

// How long the instrument may be quiet: before it gives up an echo, before "ERASING" or within the
// reply to "Fr", and while it erases.
struct HeaderPatience {
    std::chrono::milliseconds echo{2000};
    std::chrono::milliseconds reply{5000};
    std::chrono::milliseconds erasing{60000};
};

// How an upload ended.
enum class UploadEnd {
    Stored,       // and read back as sent
    Differs,      // slots were read back that are not what was sent
    NotReadBack,  // all was sent, but the slots did not come back
    NotReady,     // nothing was sent; the instrument's slots are as they were, or erased when it
                  // said so and then never asked for them
    Ended,        // Leave, the wait was ended elsewhere, or the port was lost
};

struct UploadResult {
    UploadEnd end = UploadEnd::Stored;
    std::vector<int> differing;  // slots, from 1
};

// "The DAVO did not store header slots 2 and 5 as sent." and what to do.
QString DifferingMessage(const std::vector<int>& differing);

// The dialogues over the instrument's header slots. One at a time.
class HeaderExchange {
  public:
    // link and prompts must outlive it. openPort opens the port that is configured.
    HeaderExchange(Link& link, Prompts& prompts, std::function<bool()> openPort,
                   HeaderPatience patience = {});

    // Reads the slots: opens the port when it is closed, "B", "Fr". False when slots are left as
    // they were: after kNotReadyMessage when "B" is not answered, without a message when the reply
    // is of a wrong length, the wait was ended or the port was lost.
    bool Read(HeaderSlots& slots);

    // Erases the instrument's slots and sends these, character by character, each when the one
    // before was echoed or patience.echo has passed, then reads them back. Opens the port when it
    // is closed. Shows kNotReadyMessage when there is no answer.
    UploadResult Upload(const HeaderSlots& slots);

    // Ends the dialogue under way. An upload that has begun comes to an end that the instrument
    // understands first: the slot under way is sent whole, those after it empty. A second call
    // does not wait for that, nor does anyone once an echo is missing.
    void Leave();

    // The instrument has been told to erase its slots and does not have all of the new ones.
    bool Unfinished() const { return unfinished_; }
    // The characters are on their way, also behind a question on the screen.
    bool Sending() const { return sending_; }

    // What is being done: "Reading the headers of the DAVO...", "slot 3 of 10".
    std::function<void(const QString& text)> OnStatus = [](const QString&) {};
    // Characters of the upload that are done with, of kHeaderMemoryWidth.
    std::function<void(std::size_t done)> OnProgress = [](std::size_t) {};

  private:
    bool MakeReady();
    bool MayFinishUpload(const std::string& reply);
    void FinishBrokenUpload();
    std::optional<HeaderSlots> Fetch();
    bool EraseAndSend(const std::string& upload);
    bool Erase();
    void Send(const std::string& upload);
    void SendRest(const std::string& upload, std::size_t done);
    UploadResult Compare(const std::string& upload);
    void SentUpTo(std::size_t done, bool echoed);
    QString SlotText(std::size_t done) const;

    Link& link_;
    Prompts& prompts_;
    std::function<bool()> openPort_;
    HeaderPatience patience_;
    bool unfinished_ = false;
    bool sending_ = false;
    bool leaving_ = false;
    bool atOnce_ = false;  // leaving waits for nothing
    int notEchoed_ = 0;    // characters of the upload under way
    bool broken_ = false;  // the last upload stopped before its last character
};

}  // namespace davo
