// SPDX-License-Identifier: GPL-3.0-or-later
// The card in the place of the prompt: the steps to a shot and what a shot gave.

#include "testing/card_texts.h"

#include <QDialog>
#include <QSettings>
#include <QTextDocument>
#include <map>

#include "common/files.h"
#include "curves/chart_look.h"
#include "reports/record_texts.h"
#include "tests/records/captures.h"
#include "tests/support/pause.h"
#include "tests/testing/test_window.h"
#include "ui/fit_label.h"

namespace davo::test {
namespace {

const QColor kAmber(0xFF, 0xB3, 0x00);
constexpr double kLeastContrast = 4.5;
constexpr double kLeastPoints = 24;
constexpr double kMostPoints = 32.5;

class ResultCard : public TestWindow {
  protected:
    ResultCard() { settings.kneepointType = QString::fromLatin1(kKneeAsa); }

    FitLabel& Fit(const char* name) { return dynamic_cast<FitLabel&>(*Label(name)); }
    QString Card() {
        QTextDocument document;
        document.setHtml(Label("lblCard")->text());
        return document.toPlainText();
    }
    bool CardHas(const QString& text) {
        if (Label("lblCard")->isVisible() && Card().contains(text)) return true;
        ADD_FAILURE() << text.toStdString() << " is not in: " << Card().toStdString();
        return false;
    }
    double CardPoints() {
        return Fit("lblCard").FittedPixelSize() * 72 / main.screen()->physicalDotsPerInchY();
    }
    int AmberPoints() {
        const QImage image = Label("lblCard")->grab().toImage();
        int points = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                points += image.pixelColor(x, y) == kAmber ? 1 : 0;
        }
        return points;
    }
    void EndShotWith(const RecordImage& image, const char* polarity = "+",
                     const char* ratio = "241.2") {
        Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
        Say(std::string("RATIO=") + ratio);
        Say(std::string("POLARITY=") + polarity);
        Say(RecordOf(EncodeRecordImage(image)));
    }
    QString JournalPath() const { return places.scratchFolder + QLatin1String(kJournalFileName); }
    void BlockJournal() {
        DeleteFile(JournalPath());
        ASSERT_TRUE(QDir().mkpath(JournalPath() + u"/in the way"_s));
    }
    void TypeNameplate() {
        Type("txtHVolt", "1200");
        Type("txtXVolt", "5");
        Button("cmdStart")->setFocus();
    }
};

TEST_F(ResultCard, BeforeTheFirstShotItHasThreeStepsWithTheirState) {
    Open();
    for (const QString& text :
         {u"1 Header: open"_s, u"PRESS HEADER INFO"_s, u"2 Nameplate: open"_s,
          u"TYPE H AND X CURRENT"_s, u"3 Start: open"_s, u"PRESS START TEST"_s}) {
        CardHas(text);
    }
    EXPECT_GE(CardPoints(), kLeastPoints);
    EXPECT_EQ(Text("lblMessage"), "");
    TypeNameplate();
    CardHas(u"2 Nameplate: done"_s);
    CardHas(u"1200 : 5 A"_s);
    CardHas(u"1 Header: open"_s);
    Click("cmdHeader");
    auto* headerWindow = Find<QDialog>("frmHeader");
    QTest::keyClicks(Box("txtHeader2"), u"T1 <&> 2"_s);
    Click("cmdSave");
    headerWindow->close();
    EXPECT_TRUE(Until([this] { return Card().contains(u"1 Header: done"_s); }));
    CardHas(u"T1 <&> 2"_s);
}

TEST_F(ResultCard, ItSaysThatTheInstrumentIsBeingAsked) {
    port.always.clear();
    port.takesTime = true;
    QString during;
    QTimer::singleShot(500, &main, [&] { during = Card(); });
    Open();
    EXPECT_TRUE(during.contains(u"THE DAVO IS ASKED"_s)) << during.toStdString();
    CardHas(u"PRESS START TEST"_s);
}

TEST_F(ResultCard, ItGoesWithTheFirstPromptAndComesWithTheCompleteShot) {
    Open();
    EXPECT_TRUE(Label("lblCard")->isVisible());
    StartFullShot();
    EXPECT_FALSE(Label("lblCard")->isVisible());
    EXPECT_FALSE(Box("txtErrorLimit")->isVisible());
    EndShotWith(SaturatedImage());
    EXPECT_TRUE(Label("lblCard")->isVisible());
}

TEST_F(ResultCard, ACompleteShotIsToBeReadFromTwoMetres) {
    Open();
    TypeNameplate();
    StartFullShot();
    EndShotWith(SaturatedImage());
    std::vector<CurvePoint> points;
    for (const DataPoint& point : SaturatedImage().Points())
        points.insert(points.begin(), {point.current, point.voltage});
    const auto facts = KneesOf(points);
    for (const QString& text : {u"241.2"_s, u"0.50 %"_s, u"IN PHASE"_s, u"Knee ASA 10/50"_s}) {
        CardHas(text);
    }
    for (const KneeFact& fact : facts) {
        ASSERT_TRUE(fact.At());
        EXPECT_EQ(fact.doubt, "");
        CardHas(PrintedText(fact));
    }
    EXPECT_GE(CardPoints(), kLeastPoints);
    EXPECT_LE(CardPoints(), kMostPoints);
    EXPECT_EQ(AmberPoints(), 0);
    EXPECT_FALSE(Card().contains(u"CHECK"_s));
    EXPECT_EQ(Text("lblDisk"), "Shot 1 is on the disk. Press Next Test, or Exit to save.");
}

TEST_F(ResultCard, TheMarkerInUseIsTheLargeOne) {
    settings.kneepointType = QString::fromLatin1(kKneeIeee30);
    OpenAndStart();
    EndShotWith(SaturatedImage());
    CardHas(u"Knee IEEE 30"_s);
    EXPECT_FALSE(Card().contains(u"Knee ASA 10/50"_s));
    CardHas(u"ASA 10/50"_s);
}

TEST_F(ResultCard, ARatioTestHasNoKneepoint) {
    modes = {false, true, true};
    Open();
    StartToZero();
    EndShotWith(SaturatedImage());
    CardHas(u"241.2"_s);
    EXPECT_FALSE(Card().contains(u"Knee"_s));
}

TEST_F(ResultCard, AnotherPolarityIsAmberWithAWord) {
    OpenAndStart();
    RecordImage reversed = SaturatedImage();
    reversed.phaseAngle = 1800;
    EndShotWith(reversed, "-");
    CardHas(u"Polarity: CHECK"_s);
    CardHas(u"OUT OF PHASE"_s);
    EXPECT_GT(AmberPoints(), 1000);
}

TEST_F(ResultCard, AKneepointThatIsDoubtfulOrMissingIsAmberWithAWord) {
    OpenAndStart();
    RecordImage doubtful = SaturatedImage();
    doubtful.slots[1].voltage = 3500;  // it falls from 400 V
    EndShotWith(doubtful);
    CardHas(u"Knee ASA 10/50: DOUBTFUL"_s);
    EXPECT_GT(AmberPoints(), 1000);
    prompts.answers = {Answer::No};
    StartFullShot();
    EndShotWith(ImageWithPoints(2));
    CardHas(u"Knee ASA 10/50: CHECK"_s);
    CardHas(u"N/A"_s);
    EXPECT_FALSE(Card().contains(u"NONE"_s)) << "the report has no such word";
    EXPECT_GT(AmberPoints(), 1000);
}

TEST_F(ResultCard, ARecordThatCannotBeJudgedHasNoKneepointAndSaysSo) {
    OpenAndStart();
    EndShot(Digits('Z'));
    CardHas(u"Knee ASA 10/50: CHECK"_s);
    CardHas(u"N/A"_s);
}

TEST_F(ResultCard, APolarityThatIsNotTheRecordsIsAmberWithAWord) {
    modes = {false, true, true};
    Open();
    StartToZero();
    RecordImage reversed = SaturatedImage();
    reversed.phaseAngle = 1800;
    EndShotWith(reversed, "+");
    CardHas(u"Polarity: RECORD OUT OF PHASE"_s);
    CardHas(u"\nIN PHASE"_s);
    EXPECT_GT(AmberPoints(), 1000);
}

// A record without a phase angle reads as in phase.
TEST_F(ResultCard, APolarityThatWasNotSaidIsAmberAndTheRecordsIsNamed) {
    OpenAndStart();
    Say("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
    Say("RATIO=241.2");
    Say(RecordOf(EncodeRecordImage(SaturatedImage())));
    CardHas(u"Polarity: RECORD IN PHASE\nNONE"_s);
    EXPECT_GT(AmberPoints(), 1000);
    prompts.answers = {Answer::No, Answer::No};
    StartFullShot();
    EndShotWith(SaturatedImage(), " ");
    CardHas(u"Polarity: CHECK\nUNDETERMINED"_s);
    EXPECT_GT(AmberPoints(), 1000);
    StartFullShot();
    EndShotWith(SaturatedImage());
    CardHas(u"Polarity\nIN PHASE"_s);
    EXPECT_EQ(AmberPoints(), 0);
}

TEST_F(ResultCard, ALongWordIsBrokenAndShrinksNoLetters) {
    header.Field(1) = std::string(20, 'W');
    header.Field(2) = std::string(20, 'M');
    Open();
    Type("txtHVolt", "1200.0000000000000000");
    Type("txtXVolt", "5");
    Button("cmdStart")->setFocus();
    EXPECT_GE(CardPoints(), kLeastPoints);
    StartFullShot();
    EndShotWith(SaturatedImage(), "+", "241.2000000000000000000000000");
    EXPECT_GE(CardPoints(), kLeastPoints);
}

TEST_F(ResultCard, AnErrorAboveTheLimitIsAmberWithAWord) {
    Open();
    TypeNameplate();
    StartFullShot();
    EndShotWith(SaturatedImage());
    EXPECT_EQ(Text("txtErrorLimit"), "") << "off at first";
    const std::pair<const char*, bool> limits[] = {{"0.5", false}, {"0.49", true}, {"0,4", true},
                                                   {"0", false},   {".", false},   {"12", false}};
    for (const auto& [typed, above] : limits) {
        Type("txtErrorLimit", typed);
        EXPECT_EQ(Card().contains(u"Percent error: ABOVE LIMIT"_s), above) << typed;
        EXPECT_EQ(AmberPoints() > 1000, above) << typed;
    }
}

TEST_F(ResultCard, TheLimitIsKeptAndTakesNumbersOnly) {
    OpenAndRun();
    Type("txtErrorLimit", "x-0.3");
    EXPECT_EQ(Text("txtErrorLimit"), "0.3");
    const auto kept = [this] {
        const QSettings file(WindowFile(places), QSettings::IniFormat);
        return file.value(u"frmCControl/errorLimit"_s).toString();
    };
    EXPECT_EQ(kept(), QString()) << "it is not finished";
    Key(Qt::Key_Tab);
    EXPECT_EQ(kept(), u"0.3"_s);
    Type("txtErrorLimit", "0.4");
    Key(Qt::Key_Escape);
    ASSERT_TRUE(Closed());
    link.OpenComPort(1);
    OpenAndRun();
    EXPECT_EQ(Text("txtErrorLimit"), "0.4");
}

TEST_F(ResultCard, WithoutNameplateCurrentsThereIsNoErrorUntilTheyAreTyped) {
    OpenAndRun();
    CardHas(u"N/A"_s);
    TypeNameplate();
    CardHas(u"0.50 %"_s);
}

TEST_F(ResultCard, ADroppedShotIsNotShown) {
    OpenAndRun();
    Click("cmdContinue");  // "&Repeat Test"
    EXPECT_FALSE(Card().contains(u"241.2"_s));
    CardHas(u"PRESS NEXT TEST"_s);
    EXPECT_EQ(Text("lblDisk"), "The last shot was dropped.");
}

TEST_F(ResultCard, ACancelledShotIsNotTheOneThatWasDropped) {
    OpenAndRun();
    Click("cmdContinue");  // "&Repeat Test"
    prompts.answers = {Answer::Yes};
    Click("cmdStart");
    Click("cmdCancel");
    EXPECT_EQ(Text("lblDisk"), "");
}

TEST_F(ResultCard, AfterACancelTheWayOutIsNamed) {
    OpenAndRun();
    prompts.answers = {Answer::Yes};  // a ratio test, which disables its button at once
    Click("cmdStart");
    Click("cmdCancel");
    EXPECT_FALSE(Button("cmdStart")->isEnabled());
    CardHas(u"PRESS EXIT"_s);
    EXPECT_FALSE(Card().contains(u"THE DAVO IS ASKED"_s));
}

TEST_F(ResultCard, WhatIsBeingTypedIsNotSaidToBeOnTheDisk) {
    OpenAndRun();
    Type("txtHVolt", "1200");
    EXPECT_EQ(Text("lblDisk"), "Shot 1 is on the disk, but not yet what you type.");
    test::Pause(1200);  // the window has looked around
    EXPECT_EQ(Text("lblDisk"), "Shot 1 is on the disk, but not yet what you type.");
    Type("txtXVolt", "5");
    Button("cmdStart")->setFocus();
    EXPECT_EQ(Text("lblDisk"), "Shot 1 is on the disk. Press Next Test, or Exit to save.");
    EXPECT_THAT(SessionJournal::Read(JournalPath()).pendingShot, HasSubstr("(1200:5)"));
}

TEST_F(ResultCard, ADiskThatTakesNoJournalKeepsNobodyFromTheNextShot) {
    OpenAndRun();
    BlockJournal();
    prompts.answers = {Answer::No};
    port.sent.clear();
    Click("cmdStart");
    EXPECT_THAT(port.sent, ElementsAre("T"));
    EXPECT_THAT(ReadWholeFile(places.scratchFolder + QLatin1String(kCaptureFileName)),
                HasSubstr("MEASURED RATIO: 241.2"));
}

TEST_F(ResultCard, ADiskThatTakesNoJournalKeepsNobodyFromDroppingAShot) {
    OpenAndRun();
    BlockJournal();
    Click("cmdContinue");  // "&Repeat Test"
    EXPECT_EQ(Text("cmdContinue"), "&Continue");
    EXPECT_EQ(Text("lblRatioCount"), "Ratio - 0");
    EXPECT_THAT(prompts.Texts(), ElementsAre(HasSubstr("Run-time error")));
}

TEST_F(ResultCard, AShotThatIsNotOnTheDiskSaysSoUntilItIs) {
    OpenAndStart();
    const QString journal = JournalPath();
    BlockJournal();
    EndShot();
    EXPECT_EQ(Text("lblTest"), "TEST COMPLETE.");
    EXPECT_EQ(Text("lblDisk"), "Shot 1 is NOT on the disk. Stay here: the program tries again.");
    ASSERT_TRUE(QDir(journal).removeRecursively());
    EXPECT_TRUE(Until([this] {
        return Text("lblDisk") == "Shot 1 is on the disk. Press Next Test, or Exit to save.";
    }));
    EXPECT_FALSE(SessionJournal::Read(journal).pendingShot.empty());
}

TEST_F(ResultCard, OfADamagedShotTheDamageSaysWhatComesNext) {
    OpenAndStart();
    EndShot(Digits().substr(6));
    EXPECT_THAT(Text("lblDamage"), HasSubstr("Press Repeat Test"));
    EXPECT_EQ(Text("lblDisk"), "Shot 1 is on the disk.");
}

TEST_F(ResultCard, UnitsStandAtTheReadings) {
    OpenAndStart();
    Say("I=0.0123 V=152.4");
    const std::tuple<const char*, const char*, const char*> units[] = {
        {"txtCur", "lblAmperes", "A"}, {"txtVolt", "lblVolts", "V"}};
    for (const auto& [box, unit, text] : units) {
        EXPECT_EQ(Text(unit), text);
        EXPECT_EQ(Label(unit)->geometry().center().y(), Box(box)->geometry().center().y());
        const int gap = Label(unit)->x() - Box(box)->geometry().right();
        EXPECT_TRUE(gap > 0 && gap < 12) << gap;
    }
}

TEST_F(ResultCard, NothingMovesWhenAShotEnds) {
    OpenAndStart();
    Say("I=0.0123 V=152.4");
    const auto whereAll = [this] {
        std::vector<QRect> rects;
        for (const char* name :
             {"frmeMessage", "chtLive", "Frame1", "Frame3", "Frame4", "Frame5", "lblTest"})
            rects.push_back(Find<QWidget>(name)->geometry());
        return rects;
    };
    ASSERT_TRUE(Find<QWidget>("chtLive")->isVisible());
    const auto before = whereAll();
    EndShotWith(SaturatedImage(), "-");
    test::Pause(50);
    EXPECT_EQ(whereAll(), before);
    Click("cmdContinue");  // "&Repeat Test"
    test::Pause(50);
    auto frames = whereAll();
    frames[0] = before[0];  // the chart goes with the shot
    frames[1] = before[1];
    EXPECT_EQ(frames, before);
}

TEST_F(ResultCard, ItKeepsItsSizeOnASmallScreen) {
    main.resize(1024, 600);
    OpenAndStart();
    EndShotWith(SaturatedImage(), " ");
    EXPECT_EQ(main.size(), QSize(1024, 600));
    EXPECT_TRUE(Until([this] { return Find<QWidget>("chtLive")->isVisible(); }));
    test::Pause(50);
    EXPECT_GE(CardPoints(), kLeastPoints);
    EXPECT_GE(Fit("lblDisk").FittedPixelSize(), Fit("lblDisk").LeastPixelSize());
    CardHas(u"UNDETERMINED"_s);
}

TEST_F(ResultCard, AWordIsNotBroken) {
    Open();
    TypeNameplate();
    StartFullShot();
    RecordImage doubtful = SaturatedImage();
    doubtful.slots[1].voltage = 3500;
    EndShotWith(doubtful, " ", "236.4");
    Type("txtErrorLimit", "0.3");
    CardHas(u"Percent error: ABOVE LIMIT"_s);
    EXPECT_GE(CardPoints(), kLeastPoints);
    // Nothing is written beyond the amber of the last column.
    const QImage image = Label("lblCard")->grab().toImage();
    int right = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = right; x < image.width(); ++x)
            if (image.pixelColor(x, y) == kAmber) right = x;
    }
    const QColor ground = main.palette().color(QPalette::Window);
    for (int y = 0; y < image.height() / 2; ++y) {
        for (int x = right + 1; x < image.width(); ++x)
            ASSERT_EQ(Contrast(image.pixelColor(x, y), ground) > 2, false) << x << ' ' << y;
    }
    const int high = Fit("lblCard").height() * 10;
    EXPECT_TRUE(Fit("lblCard").HasRoomFor(u"UNDETERMINED"_s, {400, high}));
    EXPECT_FALSE(Fit("lblCard").HasRoomFor(u"UNDETERMINED"_s, {150, high}));
}

// Of a palette: whatever is written on amber, and on the window's ground, can be read.
class CardColours : public ResultCard, public ::testing::WithParamInterface<bool> {
  protected:
    CardColours() : usual_(QApplication::palette()) {
        const QColor ground = GetParam() ? QColor(45, 45, 48) : QColor(239, 239, 239);
        QApplication::setPalette(QPalette(ground, ground));
    }
    ~CardColours() override { QApplication::setPalette(usual_); }

    // The colours of the card's points, and how many there are of each.
    std::map<QRgb, int> PointsOf(const QRect& part) {
        const QImage image = Label("lblCard")->grab(part).toImage();
        std::map<QRgb, int> points;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                ++points[image.pixel(x, y)];
        }
        return points;
    }

  private:
    QPalette usual_;
};

TEST_P(CardColours, AmberAndItsWordStandOut) {
    Open();
    TypeNameplate();
    StartFullShot();
    RecordImage reversed = ImageWithPoints(2);
    reversed.phaseAngle = 1800;
    EndShotWith(reversed, "-");
    Type("txtErrorLimit", "0.1");
    for (const QString& word :
         {u"Polarity: CHECK"_s, u"Percent error: ABOVE LIMIT"_s, u"Knee ASA 10/50: CHECK"_s}) {
        CardHas(word);
    }
    const QRect all = Label("lblCard")->rect();
    // The lower cells are both amber: nothing else is in them.
    const QRect lower(all.width() / 8, all.height() / 2, all.width() / 4, all.height() / 8);
    const auto points = PointsOf(lower);
    ASSERT_TRUE(points.contains(kAmber.rgb()));
    double most = 1;
    for (const auto& [colour, count] : points) {
        if (count > 10) most = std::max(most, Contrast(kAmber, QColor(colour)));
    }
    EXPECT_GE(most, kLeastContrast);
    const QColor ground = main.palette().color(QPalette::Window);
    EXPECT_TRUE(PointsOf(all).contains(ground.rgb()));
    double text = 1;
    for (const auto& [colour, count] : PointsOf({0, 0, all.width() / 2 - 8, all.height() / 3}))
        if (count > 10) text = std::max(text, Contrast(ground, QColor(colour)));
    EXPECT_GE(text, kLeastContrast);
}

INSTANTIATE_TEST_SUITE_P(LightAndDark, CardColours, ::testing::Bool());

}  // namespace
}  // namespace davo::test
