// SPDX-License-Identifier: GPL-3.0-or-later

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QTimer>
#include <algorithm>

#include "app/frmAbout.h"
#include "app/frmSplash.h"
#include "app/port_labels.h"
#include "app/program.h"
#include "app/program_icon.h"
#include "tests/support/controls.h"
#include "ui/contrast.h"
#include "ui/form_parts.h"

namespace davo::test {
namespace {

// Notes what happens to it.
class NotingPointer : public BusyPointer {
  public:
    explicit NotingPointer(std::vector<std::string>& events) : events_(events) {}
    void ShowBusyPointer() override { events_.emplace_back("hourglass"); }
    void RestoreMousePointer() override { events_.emplace_back("default pointer"); }

  private:
    std::vector<std::string>& events_;
};

// A window without a title of its own has the application's name, and the caption of one that has
// a title is left alone: the toolkit would add a display name to it.
TEST(Application, HasTheNameOfTheProgram) {
    const QString name = QCoreApplication::applicationName();
    DressApplication();
    EXPECT_EQ(QCoreApplication::applicationName(), u"DAVO PC-Interface"_s);
    EXPECT_EQ(QApplication::applicationDisplayName(), u"DAVO PC-Interface"_s);
    EXPECT_FALSE(QApplication::windowIcon().isNull());
    QCoreApplication::setApplicationName(name);
    QApplication::setStyle(u"fusion"_s);
}

// Whatever style the system has.
TEST(Application, FieldsHaveOutlinesThatCanBeSeen) {
    const QString name = QCoreApplication::applicationName();
    const QPalette usual = QApplication::palette();
    DressApplication();
    for (const QColor& ground : {QColor(239, 239, 239), QColor(45, 45, 48), QColor(Qt::black)}) {
        QApplication::setPalette(QPalette(ground, ground));
        QWidget window;
        QLineEdit field(&window);
        field.setGeometry(10, 10, 60, 30);
        field.setFocusPolicy(Qt::NoFocus);
        window.resize(80, 50);
        const QImage image = window.grab().toImage();
        double most = 1;
        for (int x = 8; x < 14; ++x)
            most = std::max(most, Contrast(image.pixelColor(x, 25), ground));
        EXPECT_GE(most, 3) << ground.name().toStdString();
    }
    QCoreApplication::setApplicationName(name);
    QApplication::setStyle(u"fusion"_s);
    QApplication::setPalette(usual);
}

// The checks of the other tests can fail.
TEST(WindowChecks, SeeACutText) {
    QWidget window;
    QWidget* const controls[] = {new QLabel(u"a long text"_s, &window),
                                 new QLabel(u"a long text to be wrapped"_s, &window),
                                 new QPushButton(u"a long caption"_s, &window)};
    static_cast<QLabel*>(controls[1])->setWordWrap(true);
    int y = 0;
    for (QWidget* control : controls) {
        control->setObjectName(u"control%1"_s.arg(y));
        control->setGeometry(0, y++ * 100, 200, 90);
    }
    window.resize(300, 300);
    window.show();
    EXPECT_THAT(CutTextsOf(window), IsEmpty());
    controls[0]->resize(30, 90);
    controls[1]->resize(80, 20);
    controls[2]->resize(30, 90);
    EXPECT_THAT(CutTextsOf(window), ElementsAre("control0", "control1", "control2"));
}

// Half of what the screen has more than the window, rounded towards zero.
QPoint MiddleFor(const QWidget& window, const QRect& screen) {
    return {screen.x() + (screen.width() - window.frameGeometry().width()) / 2,
            screen.y() + (screen.height() - window.frameGeometry().height()) / 2};
}

TEST(CentreForm, PutsAWindowInTheMiddleOfTheScreen) {
    QWidget window;
    window.resize(301, 200);
    CentreForm(window, nullptr);
    EXPECT_EQ(window.pos(), MiddleFor(window, QGuiApplication::primaryScreen()->geometry()));
    EXPECT_EQ(window.size(), QSize(301, 200)) << "a size that was given is kept";
}

TEST(CentreForm, TakesTheScreenThatTheOtherWindowIsOn) {
    for (const QScreen* screen : QGuiApplication::screens()) {
        QWidget other;
        other.setGeometry(screen->geometry().adjusted(50, 50, -50, -50));
        other.show();
        QWidget window;
        window.resize(100, 80);
        CentreForm(window, &other);
        EXPECT_EQ(window.pos(), MiddleFor(window, screen->geometry()))
            << screen->name().toStdString();
    }
}

TEST(About, ShowsModelAndVersionUntilItsButtonIsPressed) {
    const QPointer<frmAbout> about = new frmAbout(nullptr);
    EXPECT_EQ(FindIn<QLabel>(*about, "lblDavoVer")->text(), u"DAVO-E Rx.xx"_s);
    about->Form_Load("DAVO N/A");
    about->show();
    EXPECT_EQ(about->windowTitle(), u"About DAVO"_s);
    EXPECT_FALSE(about->isModal());
    EXPECT_EQ(FindIn<QLabel>(*about, "lblDavoVer")->text(), u"DAVO N/A"_s);
    EXPECT_EQ(FindIn<QLabel>(*about, "lblDavoPcVer")->text(), u"DAVO-PC V.3.15"_s);
    EXPECT_EQ(FindIn<QGroupBox>(*about, "Frame1")->title(), u"Software Rev."_s);
    EXPECT_EQ(about->pos(), MiddleFor(*about, about->screen()->geometry()));
    QTest::mouseClick(FindIn<QPushButton>(*about, "Command1"), Qt::LeftButton);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(about.isNull()) << "unloaded";
}

TEST(About, IsNoWiderForALongModel) {
    frmAbout usual(nullptr);
    usual.Form_Load("DAVO-E R3.10");
    usual.show();
    frmAbout noisy(nullptr);
    const std::string model = "DAVO-E " + std::string(293, 'x');
    noisy.Form_Load(model);
    noisy.show();
    EXPECT_LT(noisy.width(), 2 * usual.width());
    EXPECT_THAT(CutTextsOf(noisy), IsEmpty());
    EXPECT_EQ(FindIn<QLabel>(noisy, "lblDavoVer")->text(), ModelText(model));
}

TEST(About, EscapeAndEnterUnloadIt) {
    for (const auto key : {Qt::Key_Escape, Qt::Key_Return}) {
        const QPointer<frmAbout> about = new frmAbout(nullptr);
        about->Form_Load("DAVO-E R3.10");
        about->show();
        QTest::keyClick(about, key);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(about.isNull()) << key;
    }
}

TEST(About, NoTextIsCutAndItFitsTheScreen) {
    frmAbout about(nullptr);
    about.setAttribute(Qt::WA_DeleteOnClose, false);
    about.Form_Load("DAVO-E R3.10 WITH A REVISION THAT TAKES MORE THAN A LINE OF THE WINDOW");
    about.show();
    EXPECT_THAT(CutTextsOf(about), IsEmpty());
    EXPECT_TRUE(FitsItsScreen(about));
}

TEST(Splash, WaitsAndThenShowsTheMainWindowUnderTheHourglass) {
    std::vector<std::string> events;
    NotingPointer pointer(events);
    frmSplash* window = nullptr;
    frmSplash splash(pointer, [&] {
        events.emplace_back(window->isVisible() ? "main over splash" : "main after splash");
    });
    window = &splash;
    splash.Form_Load();
    splash.show();
    EXPECT_EQ(splash.windowTitle(), u"DAVO PC-Interface"_s);
    EXPECT_EQ(splash.pos(), MiddleFor(splash, splash.screen()->geometry()));
    const auto* timer = splash.findChild<QTimer*>(u"Timer1"_s);
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(timer->interval(), 1270);
    EXPECT_TRUE(timer->isActive());
    QElapsedTimer elapsed;
    elapsed.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !splash.isVisible(); }, 5000));
    EXPECT_GE(elapsed.elapsed(), 1200);
    EXPECT_THAT(events, ElementsAre("hourglass", "main over splash", "default pointer"));
    EXPECT_FALSE(timer->isActive());
}

TEST(Splash, NoTextIsCutAndItFitsTheScreen) {
    BusyPointer pointer;
    frmSplash splash(pointer, [] {});
    splash.Form_Load();
    splash.show();
    EXPECT_THAT(CutTextsOf(splash), IsEmpty());
    EXPECT_TRUE(FitsItsScreen(splash));
}

TEST(ProgramIcon, HasAPictureOfItsOwnForEverySize) {
    const QIcon icon = ProgramIcon();
    for (const int size : {16, 20, 24, 32, 40, 48, 64, 80, 128, 256}) {
        const QImage picture = icon.pixmap(QSize(size, size), 1.0).toImage();
        EXPECT_EQ(picture.size(), QSize(size, size));
        const QImage file(u":/davo/icon/davo-%1.png"_s.arg(size));
        ASSERT_FALSE(file.isNull()) << size;
        EXPECT_EQ(picture.convertToFormat(QImage::Format_ARGB32_Premultiplied),
                  file.convertToFormat(QImage::Format_ARGB32_Premultiplied))
            << size;
        EXPECT_EQ(qAlpha(file.pixel(0, 0)), 0) << "a tile with round corners, size " << size;
        EXPECT_EQ(qAlpha(file.pixel(size / 2, size / 2)), 255) << size;
    }
}

}  // namespace
}  // namespace davo::test
