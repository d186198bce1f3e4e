// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/frmHeaderOptn.h"

#include <optional>

#include "tests/support/controls.h"

namespace davo::test {
namespace {

class HeaderChooser : public ::testing::Test {
  protected:
    HeaderChooser() {
        chooser->OnChosen = [this](HeaderMode mode) {
            chosen = mode;
            unloadsBefore = unloads;
        };
        chooser->OnUnload = [this] { ++unloads; };
        chooser->open();
    }
    ~HeaderChooser() override { delete chooser; }

    QPointer<frmHeaderOptn> chooser = new frmHeaderOptn(nullptr);
    std::optional<HeaderMode> chosen;
    int unloads = 0;
    int unloadsBefore = -1;
};

TEST_F(HeaderChooser, ShowsTwoButtonsInTheMiddleOfTheScreen) {
    EXPECT_EQ(chooser->windowTitle(), u"Choose Test Header"_s);
    EXPECT_EQ(FindIn<QPushButton>(*chooser, "cmdHeader1")->text(), u"DAVO Test Header"_s);
    EXPECT_EQ(FindIn<QPushButton>(*chooser, "cmdHeader0")->text(), u"PC Test Header"_s);
    const QPoint off = chooser->frameGeometry().center() - chooser->screen()->geometry().center();
    EXPECT_LE(off.manhattanLength(), 2);
    EXPECT_THAT(TabOrderOf(*chooser), ElementsAre("cmdHeader1", "cmdHeader0"));
    EXPECT_THAT(CutTextsOf(*chooser), IsEmpty());
}

TEST_F(HeaderChooser, PcTestHeaderIsMode1) {
    QTest::mouseClick(FindIn<QPushButton>(*chooser, "cmdHeader0"), Qt::LeftButton);
    EXPECT_EQ(chosen, HeaderMode::Pc);
    EXPECT_EQ(static_cast<int>(*chosen), 1);
    EXPECT_EQ(unloadsBefore, 0) << "the header window comes first";
    EXPECT_EQ(unloads, 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(chooser.isNull());
}

TEST_F(HeaderChooser, DavoTestHeaderIsMode2) {
    QTest::keyClick(FindIn<QPushButton>(*chooser, "cmdHeader1"), Qt::Key_Return);
    EXPECT_EQ(chosen, HeaderMode::Davo);
    EXPECT_EQ(static_cast<int>(*chosen), 2);
    EXPECT_EQ(unloads, 1);
}

TEST_F(HeaderChooser, EscapeUnloadsItWithoutAChoice) {
    QTest::keyClick(chooser, Qt::Key_Escape);
    EXPECT_FALSE(chosen);
    EXPECT_EQ(unloads, 1);
}

}  // namespace
}  // namespace davo::test
