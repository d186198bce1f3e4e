// SPDX-License-Identifier: GPL-3.0-or-later
#include <QLineEdit>
#include <QTimer>

#include "tests/retrieval/record_download_rig.h"
#include "tests/retrieval/test_list_window.h"
#include "tests/support/instrument_link.h"
#include "tests/support/pause.h"
#include "tools/pictures/pictures.h"

namespace davo::test {
namespace {

class ListPictures : public TestListWindow {
  public:
    explicit ListPictures(const Album& album) : album_(album) {}

    void Take() {
        for (const int count : {0, 5, 250})
            TakeFolder(count, u"folder-%1"_s.arg(count));
        for (const int count : {5, 135}) {
            const auto memory = instrument::MakeMemory(count, 4);
            Show(ListMode::Instrument, line_.link, instrument::DirectoryReply(memory));
            Grab(u"memory-%1"_s.arg(count));
        }
        TakeDownload();
    }
    // A list that cannot be saved, and a folder that is gone.
    void TakeTroubles(const QString& colours) {
        QDir().mkpath(settings.dataPath + u"DIRDNLD.DNL/inside"_s);
        TakeFolder(5, u"not-saved-"_s + colours);
        QDir(settings.dataPath).removeRecursively();
        Click("cmdRefresh");
        album_.Grab(*window, u"folder-gone-"_s + colours);
    }

  private:
    void TakeFolder(int count, const QString& name) {
        for (int i = 0; i < count; ++i) {
            HeaderParts header{"T", "0" + std::to_string(1 + i % 9) + "/12/24", "10:15", "03", {}};
            header.texts = {"C",
                            "North Substation  ",
                            "Feeder " + std::to_string(i) + "           ",
                            "Transformers Limited",
                            "CT 2000:5 Class C",
                            "3",
                            "4",
                            "5"};
            ReplaceFile(DataFile(u"BREAKER%1"_s.arg(1000 + i)), HeaderText(header));
        }
        ListRecords();
        Show(ListMode::Folder, line_.link);
        if (count > 0) ClickRow(1);
        Grab(name);
    }
    // The folder has another name each time.
    void Grab(const QString& name) {
        test::Pause(20);
        FindIn<QLineEdit>(*window, "txtFolder")
            ->setText(u"/home/technician/Documents/DAVO/Shots_Data/"_s);
        album_.Grab(*window, name);
    }

    void TakeDownload() {
        const std::vector memory{MemoryRecordOf(1, 1), MemoryRecordOf(2, 100)};
        line_.PlugIn(QuickWithMemory(memory, true));
        if (!line_.link.OpenComPort(1)) throw std::runtime_error("no port");
        settings.dataPath = folder.Path("Fresh/");
        QDir().mkpath(settings.dataPath);
        Show(ListMode::Instrument, line_.link, instrument::DirectoryReply(memory));
        List()->selectAll();
        QTimer::singleShot(2800, window.get(), [this] {
            album_.Grab(*window, u"download"_s);
            Click("cmdExit");
        });
        Click("cmdSave");
    }

    const Album& album_;
    InstrumentLink line_{prompts};
};

}  // namespace

void TakeTestList(const Album& album) {
    ListPictures(album).Take();
    ListPictures(album).TakeTroubles(u"light"_s);
    const Colours colours(DarkPalette({30, 30, 30}, {38, 38, 40}));
    ListPictures(album).TakeTroubles(u"dark"_s);
}

}  // namespace davo::test
