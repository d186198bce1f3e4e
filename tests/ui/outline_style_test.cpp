// SPDX-License-Identifier: GPL-3.0-or-later

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGroupBox>
#include <QImage>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QStyleOption>
#include <QTest>
#include <QTreeWidget>
#include <memory>

#include "tests/support/testing.h"
#include "ui/contrast.h"
#include "ui/form_parts.h"

namespace davo {
namespace {

constexpr int kRoom = 10;  // around a control

struct Colours {
    const char* name;
    QColor window, ink, base, highlight;
};

const Colours kColours[] = {
    {"light", {239, 239, 239}, Qt::black, Qt::white, {48, 140, 198}},
    {"dark", {45, 45, 48}, Qt::white, {30, 30, 30}, {42, 130, 218}},
    {"high contrast", Qt::black, Qt::yellow, Qt::black, {0, 0, 128}},
    {"high contrast, white", Qt::white, Qt::black, Qt::white, {55, 0, 110}}};

QPalette PaletteOf(const Colours& colours) {
    QPalette palette(colours.window, colours.window);
    palette.setColor(QPalette::Base, colours.base);
    palette.setColor(QPalette::Highlight, colours.highlight);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, colours.ink);
    return palette;
}

struct Kind {
    const char* name;
    std::function<QWidget*(QWidget*)> make;
    // Where its outline is, of the control's rectangle.
    std::function<QRect(const QWidget&)> outline;
};

QRect Whole(const QWidget& control) {
    return control.rect();
}

QRect Indicator(const QWidget& control) {
    QStyleOptionButton option;
    option.initFrom(&control);
    const bool round = qobject_cast<const QRadioButton*>(&control) != nullptr;
    return control.style()->subElementRect(
        round ? QStyle::SE_RadioButtonIndicator : QStyle::SE_CheckBoxIndicator, &option, &control);
}

QRect BelowTitle(const QWidget& control) {
    const int title = control.fontMetrics().height();
    return control.rect().adjusted(0, title + 3, 0, 0);
}

QRect BelowNoTitle(const QWidget& control) {
    return control.rect().adjusted(0, 3, 0, 0);
}

QFrame* Panel(QWidget* parent) {
    auto* frame = new QFrame(parent);
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setMinimumSize(60, 40);
    return frame;
}

const Kind kKinds[] = {
    {"field", [](QWidget* in) { return new QLineEdit(in); }, Whole},
    {"text", [](QWidget* in) { return new QPlainTextEdit(in); }, Whole},
    {"list", [](QWidget* in) { return new QTreeWidget(in); }, Whole},
    {"choice", [](QWidget* in) { return new QComboBox(in); }, Whole},
    {"frame", [](QWidget* in) { return Panel(in); }, Whole},
    {"button", [](QWidget* in) { return new QPushButton(in); }, Whole},
    {"large_button", [](QWidget* in) { return new BigButton(in); }, Whole},
    {"group", [](QWidget* in) { return new QGroupBox(QStringLiteral("Title"), in); }, BelowTitle},
    {"group_without_title", [](QWidget* in) { return new QGroupBox(in); }, BelowNoTitle},
    {"radio", [](QWidget* in) { return new QRadioButton(in); }, Indicator},
    {"check", [](QWidget* in) { return new QCheckBox(in); }, Indicator},
};

// The least, over the four sides of the outline, of the strongest contrast with the window that is
// crossed on the way in.
double LeastOutline(const QImage& image, const QRect& outline, const QColor& window) {
    constexpr int kOut = 3;
    constexpr int kIn = 3;
    const auto most = [&](QPoint edge, QPoint inwards) {
        double found = 0;
        for (int step = -kOut; step <= kIn; ++step)
            found = std::max(found, Contrast(image.pixelColor(edge + step * inwards), window));
        return found;
    };
    const QPoint middle = outline.center();
    return std::min(
        {most({outline.left(), middle.y()}, {1, 0}), most({outline.right(), middle.y()}, {-1, 0}),
         most({middle.x(), outline.top()}, {0, 1}), most({middle.x(), outline.bottom()}, {0, -1})});
}

class Outlines : public ::testing::TestWithParam<std::tuple<Colours, Kind>> {
  protected:
    void SetUp() override {
        QApplication::setStyle(MakeOutlineStyle());
        QApplication::setPalette(PaletteOf(std::get<0>(GetParam())));
    }
    void TearDown() override {
        QApplication::setStyle(QStringLiteral("fusion"));
        QApplication::setPalette(usual_);
    }

    double Least(bool focused) {
        const auto& [colours, kind] = GetParam();
        QWidget window;
        QWidget* control = kind.make(&window);
        const QSize size =
            control->sizeHint().expandedTo(control->minimumSize()).expandedTo({60, 40});
        control->setGeometry(QRect(QPoint(kRoom, kRoom), size));
        window.resize(size + QSize(2 * kRoom, 2 * kRoom));
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        if (focused) {
            control->setFocus(Qt::TabFocusReason);
        } else if (QWidget* has = QApplication::focusWidget()) {
            has->clearFocus();
        }
        const QRect outline = kind.outline(*control).translated(control->pos());
        const QImage image = window.grab().toImage();
        EXPECT_EQ(image.pixelColor(2, 2), colours.window);
        return LeastOutline(image, outline, colours.window);
    }

  private:
    QPalette usual_ = QApplication::palette();
};

TEST_P(Outlines, StandOutFromTheWindow) {
    EXPECT_GE(Least(false), 3);
}

TEST_P(Outlines, StandOutFromTheWindowWithTheFocus) {
    EXPECT_GE(Least(true), 3);
}

INSTANTIATE_TEST_SUITE_P(EveryPalette, Outlines,
                         ::testing::Combine(::testing::ValuesIn(kColours),
                                            ::testing::ValuesIn(kKinds)),
                         [](const auto& one) {
                             std::string name = std::string(std::get<0>(one.param).name) + "_" +
                                                std::get<1>(one.param).name;
                             std::erase_if(name, [](char c) { return c == ' ' || c == ','; });
                             return name;
                         });

TEST(Inks, StandOutFromEveryWindow) {
    for (const Colours& colours : kColours) {
        const QPalette palette = PaletteOf(colours);
        EXPECT_GE(Contrast(QuietInk(palette), colours.window), 4.5) << colours.name;
        EXPECT_LT(Contrast(QuietInk(palette), colours.window),
                  Contrast(colours.ink, colours.window))
            << colours.name;
        EXPECT_GE(Contrast(OutlineInk(palette), colours.window), 3) << colours.name;
    }
}

// As Qt makes it for Windows.
TEST(Selections, AreTheSameInAListWithoutTheFocus) {
    const std::unique_ptr<QStyle> style(MakeOutlineStyle());
    QPalette palette = PaletteOf(kColours[0]);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Inactive, QPalette::Highlight, kColours[0].window);
    palette.setColor(QPalette::Inactive, QPalette::HighlightedText, kColours[0].ink);
    style->polish(palette);
    EXPECT_EQ(palette.color(QPalette::Inactive, QPalette::Highlight), kColours[0].highlight);
    EXPECT_EQ(palette.color(QPalette::Inactive, QPalette::HighlightedText), QColor(Qt::white));
}

// As Qt 6.4 makes it for the dark mode of Windows.
TEST(Buttons, HaveATextThatCanBeReadOnADarkWindow) {
    const std::unique_ptr<QStyle> style(MakeOutlineStyle());
    QPalette dark(QColor(0x5e, 0x5e, 0x5e), QColor(0x1e, 0x1e, 0x1e));
    dark.setColor(QPalette::ButtonText, Qt::white);
    QPushButton button;
    button.setStyle(style.get());
    button.setPalette(dark);
    button.resize(200, 60);
    QFont large = button.font();
    large.setPixelSize(40);
    large.setBold(true);
    button.setFont(large);
    for (const auto& [isEnabled, least] : {std::pair(true, 4.5), std::pair(false, 2.0)}) {
        button.setText(QString());
        button.setEnabled(isEnabled);
        const QImage face = button.grab().toImage();
        button.setText(u"HHH"_s);
        const QImage text = button.grab().toImage();
        QColor ink = face.pixelColor(100, 30);
        for (int x = 60; x < 140; ++x)
            if (Contrast(face.pixelColor(x, 30), text.pixelColor(x, 30)) >
                Contrast(face.pixelColor(x, 30), ink))
                ink = text.pixelColor(x, 30);
        for (int y = 5; y < 55; ++y)
            EXPECT_GE(Contrast(face.pixelColor(100, y), ink), least) << isEnabled << ' ' << y;
    }
}

TEST(Buttons, OfAChoiceHaveTheirAccentOnlyInThePalette) {
    const std::unique_ptr<QStyle> style(MakeOutlineStyle());
    QRadioButton choice;
    choice.setStyle(style.get());
    choice.resize(40, 40);
    const QImage usual = choice.grab().toImage();
    QPalette accented = choice.palette();
    accented.setColor(QPalette::Base, Qt::blue);
    choice.setPalette(accented);
    EXPECT_EQ(choice.grab().toImage(), usual);
}

}  // namespace
}  // namespace davo
