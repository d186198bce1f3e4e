// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/open_forms.h"
#include "retrieval/frmHeader.h"
#include "retrieval/frmHeaderOptn.h"
#include "tests/app/main_window.h"

namespace davo::test {
namespace {

// The windows behind the main window's header menu.
class HeaderSetup : public MainWindow {
  protected:
    void Start() {
        Make(OpenForms(state, {store, places, clock, prompts, link, devices, shortDate, [] {}}));
        window->Form_Load();
        window->show();
        port.sent.clear();
        Choose("mnuSetHeaderFile");
    }
    void Click(QWidget* in, const char* name) {
        ClickIn(*in, name);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QWidget* Chooser() { return window->findChild<QWidget*>(u"frmHeaderOptn"_s); }
    QWidget* Header() { return window->findChild<QWidget*>(u"frmHeader"_s); }
    bool FileMenuEnabled() { return Find<QMenu>("mnuFile")->menuAction()->isEnabled(); }
};

TEST_F(HeaderSetup, TheChooserGivesTheMenuBackWhenItIsLeft) {
    Start();
    ASSERT_NE(Chooser(), nullptr);
    EXPECT_FALSE(FileMenuEnabled());
    QTest::keyClick(Chooser(), Qt::Key_Escape);
    EXPECT_TRUE(FileMenuEnabled());
    EXPECT_EQ(Header(), nullptr);
}

TEST_F(HeaderSetup, PcTestHeaderEditsTheHeaderFile) {
    Start();
    Click(Chooser(), "cmdHeader0");
    EXPECT_EQ(Chooser(), nullptr);
    ASSERT_NE(Header(), nullptr);
    EXPECT_FALSE(FileMenuEnabled()) << "the header window is still open";
    QTest::keyClicks(Header()->findChild<QLineEdit*>(u"txtHeader0"_s), u"ACME"_s);
    Click(Header(), "cmdSave");
    EXPECT_EQ(state.header.Field(0), "ACME                ");
    EXPECT_EQ(ReadLines(state.settings.dataPath + u"Davo.ini"_s).front(),
              "COMPANY:ACME                ");
    Click(Header(), "cmdExit");
    EXPECT_TRUE(FileMenuEnabled());
    EXPECT_TRUE(port.sent.empty());
}

TEST_F(HeaderSetup, DavoTestHeaderReadsTheSlotsOverTheConfiguredPort) {
    const std::string slot = "FROM THE DAVO" + std::string(147, ' ');
    port.Always("Fr", slot + std::string(1440, '\xFF') + "\r\n");
    Start();
    link.CloseComPort();
    port.properties.clear();
    Click(Chooser(), "cmdHeader1");
    ASSERT_NE(Header(), nullptr);
    const auto* company = Header()->findChild<QLineEdit*>(u"txtHeader0"_s);
    EXPECT_TRUE(Until([&] { return company->text() == u"FROM THE DAVO"_s; }));
    EXPECT_THAT(port.properties, Contains("CommPort=" + std::to_string(state.settings.comPort)));
    Click(Header(), "cmdExit");
    EXPECT_TRUE(FileMenuEnabled());
}

}  // namespace
}  // namespace davo::test
