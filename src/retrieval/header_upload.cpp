// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/header_upload.h"

#include <QScopedValueRollback>
#include <QStringList>
#include <algorithm>
#include <utility>

#include "common/text.h"

namespace davo {

namespace {

constexpr std::string_view kErasing = "ERASING";
constexpr std::string_view kPrompt = "H:\r\n";
constexpr const char* kFinishQuestion =
    "The DAVO seems to wait for the rest of headers that were once saved to it.\r\n"
    "Until it has them it takes no commands. The rest can be sent as empty headers.\r\n"
    "Do you want to send empty headers?";
// No echo for so long: the instrument has what it waited for.
constexpr std::chrono::milliseconds kRestPatience{500};

// What is still to come of the prompt behind text that may end in the middle of it.
std::string_view RestOfPrompt(std::string_view text) {
    if (Contains(text, kPrompt)) return {};
    for (std::size_t length = kPrompt.size() - 1; length > 0; --length) {
        if (text.ends_with(kPrompt.substr(0, length))) return kPrompt.substr(length);
    }
    return kPrompt;
}

}  // namespace

QString DifferingMessage(const std::vector<int>& differing) {
    QStringList numbers;
    for (const int slot : differing)
        numbers << QString::number(slot);
    const QString named = numbers.size() == 1
                              ? QStringLiteral("header slot ") + numbers.front()
                              : QStringLiteral("header slots ") +
                                    numbers.mid(0, numbers.size() - 1).join(QStringLiteral(", ")) +
                                    QStringLiteral(" and ") + numbers.back();
    return QStringLiteral(
               "The DAVO did not store %1 as sent.\r\n"
               "Please save the headers to the DAVO again.")
        .arg(named);
}

HeaderExchange::HeaderExchange(Link& link, Prompts& prompts, std::function<bool()> openPort,
                               HeaderPatience patience)
    : link_(link), prompts_(prompts), openPort_(std::move(openPort)), patience_(patience) {}

bool HeaderExchange::Read(HeaderSlots& slots) {
    leaving_ = false;
    atOnce_ = false;
    OnStatus(QStringLiteral("Reading the headers of the DAVO..."));
    if (!MakeReady()) return false;
    const auto read = Fetch();
    if (!read) return false;
    std::copy_n(read->begin(), kHeaderSlotCount, slots.begin());
    return true;
}

UploadResult HeaderExchange::Upload(const HeaderSlots& slots) {
    leaving_ = false;
    atOnce_ = false;
    notEchoed_ = 0;
    const std::string upload = JoinSlots(slots);
    OnStatus(QStringLiteral("Preparing the DAVO for the headers..."));
    if (!MakeReady()) return {link_.LastWaitEnded() ? UploadEnd::Ended : UploadEnd::NotReady, {}};
    const bool asked = EraseAndSend(upload);
    if (leaving_ || link_.LastWaitEnded()) return {UploadEnd::Ended, {}};
    if (asked) return Compare(upload);
    prompts_.Message(QLatin1String(kNotReadyMessage));
    return {UploadEnd::NotReady, {}};
}

void HeaderExchange::Leave() {
    atOnce_ = !unfinished_ || leaving_;
    leaving_ = true;
    if (atOnce_) link_.EndWait();
}

bool HeaderExchange::MakeReady() {
    if (!link_.State().portOpen) openPort_();
    const std::string reply = link_.SendCommand(kReadyCommand, kReadyReply);
    if (Contains(reply, kReadyCommand) && !Contains(reply, kReadyReply)) {
        if (!MayFinishUpload(reply)) return false;
        FinishBrokenUpload();
        if (leaving_ || !link_.State().portOpen) return false;
        return link_.AskReady(kNotReadyMessage);
    }
    if (reply.empty() && !link_.LastWaitEnded()) {
        prompts_.Message(QLatin1String(kNotReadyMessage));
    }
    if (!reply.empty()) broken_ = false;  // a ready one waits for no rest of an upload
    return !reply.empty();
}

// An instrument that echoes a command takes it for a header: an upload broke off, the rest of it is
// what the instrument waits for. Anything else with that letter in it is noise.
bool HeaderExchange::MayFinishUpload(const std::string& reply) {
    if (broken_) return true;
    if (reply == kReadyCommand) return prompts_.Agrees(QLatin1String(kFinishQuestion));
    prompts_.Message(QLatin1String(kNotReadyMessage));
    return false;
}

void HeaderExchange::FinishBrokenUpload() {
    const std::string fill(kHeaderMemoryWidth, kEmptySlotFill);
    link_.SendPaced(fill, EchoesOf(fill), kRestPatience, [this](std::size_t, bool echoed) {
        if (!echoed) link_.EndWait();
    });
    broken_ = false;
}

std::optional<HeaderSlots> HeaderExchange::Fetch() {
    return CutSlots(link_.SendCommand("Fr", kLineEnd, patience_.reply));
}

bool HeaderExchange::EraseAndSend(const std::string& upload) {
    const QScopedValueRollback unfinished(unfinished_, true);
    if (!Erase()) return false;
    if (leaving_) {
        SendRest(upload, 0);
    } else {
        Send(upload);
    }
    return true;
}

bool HeaderExchange::Erase() {
    OnStatus(QStringLiteral("The DAVO is erasing its headers..."));
    const std::string erasing = link_.SendCommand("Fh", kErasing, patience_.reply);
    const std::size_t at = erasing.find(kErasing);
    if (at == std::string::npos) return false;
    broken_ = true;
    const std::string_view rest = RestOfPrompt(Middle(erasing, at));
    return rest.empty() || Contains(link_.ReadOn(rest, patience_.erasing), rest);
}

void HeaderExchange::Send(const std::string& upload) {
    const QScopedValueRollback sending(sending_, true);
    OnStatus(SlotText(0));
    const std::size_t done =
        link_.SendPaced(upload, EchoesOf(upload), patience_.echo,
                        [this](std::size_t sent, bool echoed) { SentUpTo(sent, echoed); });
    broken_ = done < upload.size();
    if (leaving_) SendRest(upload, done);
}

void HeaderExchange::SentUpTo(std::size_t done, bool echoed) {
    if (!echoed) ++notEchoed_;
    OnProgress(done);
    if (leaving_) {
        link_.EndWait();
    } else if (done < kHeaderMemoryWidth && (!echoed || done % kHeaderSlotWidth == 0)) {
        OnStatus(SlotText(done));
    }
}

QString HeaderExchange::SlotText(std::size_t done) const {
    QString slot =
        QStringLiteral("slot %1 of %2").arg(done / kHeaderSlotWidth + 1).arg(kHeaderSlotCount);
    if (notEchoed_ == 1) slot += QStringLiteral(", 1 character not answered");
    if (notEchoed_ > 1) slot += QStringLiteral(", %1 characters not answered").arg(notEchoed_);
    return slot;
}

void HeaderExchange::SendRest(const std::string& upload, std::size_t done) {
    if (atOnce_ || notEchoed_ > 0) return;
    OnStatus(QStringLiteral("Ending the upload..."));
    // An instrument in the middle of an upload takes every command for a header.
    const std::size_t whole = (done + kHeaderSlotWidth - 1) / kHeaderSlotWidth * kHeaderSlotWidth;
    const std::string ended =
        upload.substr(0, whole) + std::string(upload.size() - whole, kEmptySlotFill);
    const std::string echoes = EchoesOf(ended);
    const std::string_view rest = Middle(ended, done);
    broken_ = link_.SendPaced(rest, Middle(echoes, done), patience_.echo,
                              [this](std::size_t, bool echoed) {
                                  if (!echoed) link_.EndWait();
                              }) < rest.size();
}

UploadResult HeaderExchange::Compare(const std::string& upload) {
    OnStatus(QStringLiteral("Reading the headers back..."));
    std::optional<HeaderSlots> stored;
    if (!link_.SendCommand(kReadyCommand, kReadyReply).empty()) stored = Fetch();
    if (link_.LastWaitEnded()) return {UploadEnd::Ended, {}};
    if (!stored) return {UploadEnd::NotReadBack, {}};
    UploadResult result;
    const std::string back = JoinSlots(*stored);
    for (int slot = 1; slot <= kHeaderSlotCount; ++slot) {
        const std::size_t at = static_cast<std::size_t>(slot - 1) * kHeaderSlotWidth;
        if (back.compare(at, kHeaderSlotWidth, upload, at, kHeaderSlotWidth) != 0) {
            result.differing.push_back(slot);
        }
    }
    if (!result.differing.empty()) result.end = UploadEnd::Differs;
    return result;
}

}  // namespace davo
