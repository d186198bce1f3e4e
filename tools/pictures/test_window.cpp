// SPDX-License-Identifier: GPL-3.0-or-later
// The test window while the line is silent or lost, and at its limits.

#include <chrono>

#include "tests/records/captures.h"
#include "tests/support/pause.h"
#include "tests/testing/test_window.h"
#include "tools/pictures/pictures.h"

namespace davo::test {
namespace {

using namespace std::chrono_literals;

class TestWindowPictures : public TestWindow {
  public:
    TestWindowPictures(const Album& album, QString colours, QSize size)
        : album_(album), colours_(std::move(colours)), size_(size) {
        main.resize(size);
        pluggedIn = false;
        Open();
    }

    void Take() {
        Grab("ready");
        Type("txtHVolt", "1200");
        Type("txtXVolt", "5");
        header.Field(1) = "NORTH SUBSTATION";
        header.Field(2) = "T1 BUSHING X";
        Button("cmdStart")->setFocus();
        Grab("steps");
        StartFullShot();
        SayReadings();
        Grab("readings");
        clock.Advance(12s);
        Grab("aged");
        Say("MESSAGE=VOLTAGE TOO HIGH!");
        Grab("aged-over-voltage");
        Unplug();
        Grab("lost");
        pluggedIn = true;
        test::Pause(1100);
        Grab("port-back");

        StartFullShot();
        SayReadings();
        Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
        Say("I=0.0011 V=50.0\r\nDATA0000");
        clock.Advance(5s);
        Grab("record-stopped");
        Say(EncodeRecordImage(ImageWithPoints(12)).substr(4) + "\r\nDONE");
        Grab("complete");
        ShowResults();
        Click("cmdContinue");
        Click("cmdExit");
        Grab("dropped");

        RunFullShot();
        session.shotCount = kShotRefusal;
        prompts.answers = {Answer::No};
        RunFullShot();
        Grab("refused");
        QDir(places.scratchFolder).removeRecursively();
        test::Pause(1100);
        Grab("folder-deleted");
    }

  private:
    void TestBody() override {}
    void ShowResults() {
        prompts.answers = {Answer::No, Answer::No};
        StartFullShot();
        SayReadings();
        EndShot(EncodeRecordImage(SaturatedImage()));
        Grab("result");
        StartFullShot();
        Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
        Say("RATIO=236.4");
        Say("POLARITY= ");
        RecordImage doubtful = SaturatedImage();
        doubtful.slots[1].voltage = 3500;
        Type("txtErrorLimit", "0.3");
        Say(RecordOf(EncodeRecordImage(doubtful)));
        Type("txtErrorLimit", "0.3");
        Grab("result-amber");
        Type("txtErrorLimit", "");
        prompts.answers = {Answer::No};
        StartFullShot();
        EndShot(Digits().substr(6));
        Grab("result-damaged");
    }
    void SayReadings() {
        for (int i = 1; i <= 25; ++i)
            Say("I=" + std::to_string(0.002 * i * i) +
                " V=" + std::to_string(491.2 * i / (i + 3.0)));
        Say("I=1.2513 V=491.2");
    }
    void Grab(const char* moment) {
        album_.Grab(main, u"%1-%2-%3"_s.arg(QLatin1String(moment), colours_).arg(size_.width()));
    }

    const Album& album_;
    QString colours_;
    QSize size_;
};

}  // namespace

void TakeTestWindow(const Album& album) {
    const auto take = [&album](const char* colours) {
        for (const QSize size : {QSize(1024, 600), QSize(1366, 728), QSize(1920, 1040)}) {
            const QSize screen = QApplication::primaryScreen()->availableSize();
            const bool fits = size.width() <= screen.width() || size.width() <= 1366;
            const int width = std::min(size.width(), screen.width());
            if (fits && album.Wants(u"%1-%2"_s.arg(QLatin1String(colours)).arg(width)))
                TestWindowPictures(album, QLatin1String(colours), size.boundedTo(screen)).Take();
        }
    };
    take("light");
    QPalette dark = DarkPalette({30, 30, 30}, {38, 38, 40});
    dark.setColor(QPalette::Highlight, QColor(42, 130, 218));
    const Colours colours(dark);
    take("dark");
}

}  // namespace davo::test
