// SPDX-License-Identifier: GPL-3.0-or-later
#include <QLabel>
#include <QTimer>

#include "common/text.h"
#include "retrieval/frmHeader.h"
#include "retrieval/frmHeaderOptn.h"
#include "tests/support/controls.h"
#include "tests/support/scripted_link.h"
#include "tools/pictures/pictures.h"

namespace davo::test {

// The instrument echoes what it is told, and keeps the slots.
void TakeHeaders(const Album& album) {
    const char* texts[] = {"CENTRAL POWER", "NORTH SUBSTATION", "BAY 3",      "ACME",
                           "CT-1200/5",     "SN 48213-7",       "SPARE CORE", "J. DOE"};
    HeaderTable header;
    HeaderSlots slots;
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        header.Field(i) = PadRight(texts[i], kHeaderFieldWidth);
        slots[0] += header.Field(i);
    }
    ScriptedLine line;
    for (int c = 0; c < 256; ++c) {
        const std::string one(1, static_cast<char>(c));
        if (one == "B") continue;
        line.port.Always(one, one == "\xFF" ? " " : one);
    }
    line.port.Always("B", "RDY\r\nB");
    line.port.Always("Fr", JoinSlots(slots) + "\r\n");
    line.port.Always("Fh", "ERASING...H:\r\n");

    const auto grab = [&](QWidget& window, const char* name) {
        window.setAttribute(Qt::WA_DeleteOnClose, false);
        album.ShowAndGrab(window, QLatin1String(name));
    };
    frmHeaderOptn chooser(nullptr);
    grab(chooser, "chooser");
    std::string notes;
    frmHeader session(header, notes, line.prompts, nullptr);
    grab(session, "mode-0");
    const HeaderTargets targets{
        header, {}, slots, line.link, [&] { return line.link.OpenComPort(1); }};
    frmHeader pc(HeaderMode::Pc, targets, line.prompts, nullptr);
    grab(pc, "mode-1");
    frmHeader davo(HeaderMode::Davo, targets, line.prompts, nullptr);
    grab(davo, "mode-2");
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &davo, [&] {
        if (FindIn<QLabel>(davo, "lblUsed")->text() != u"slot 7 of 10"_s) return;
        timer.stop();
        album.Save(davo, u"mode-2-upload"_s);
    });
    timer.start(0);
    ClickIn(davo, "cmdSave");
    album.Save(davo, u"mode-2-stored"_s);
}

}  // namespace davo::test
