// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/home_panel.h"

#include <QAction>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPalette>
#include <QPushButton>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QStackedLayout>
#include <QStringList>
#include <QVBoxLayout>
#include <algorithm>

#include "analysis/kneepoint.h"
#include "app/program_icon.h"
#include "app/session_cards.h"
#include "common/places.h"
#include "common/text.h"
#include "curves/curve_chart.h"
#include "reports/record_facts.h"
#include "reports/record_texts.h"
#include "ui/contrast.h"
#include "ui/form_parts.h"
#include "ui/record_list.h"

namespace davo {

namespace {

constexpr int kPanelMargin = 16;
constexpr int kPanelSpacing = 10;
constexpr int kPanelPicture = 56;
constexpr int kLeastButtonHeight = 48;
constexpr int kMostButtonHeight = 140;
constexpr int kSecondButtonHeight = 44;
constexpr int kCertificateHeight = 36;
// Of a panel that has room for the preview; more, in lines, with sessions that were not saved.
constexpr int kPreviewHeight = 500;
constexpr int kSessionsLines = 8;
constexpr double kPortGrowth = 1.8;
constexpr double kHeadingGrowth = 1.4;
constexpr double kButtonGrowth = 1.3;  // of a large button
constexpr int kButtonShare = 2;
constexpr int kRecordShare = 3;
constexpr int kLeastRows = 4;  // of a line's height, headings included

constexpr std::size_t kMostPreviewTests = 3;
constexpr QSize kChartSize(270, 190);
constexpr int kChartWidth = 620;  // of a preview with a chart
constexpr int kLeastPreviewHeight = 100;
constexpr double kPreviewGrowth = 1.1;

// What is wrong with the port, and what can be done about it.
QString WayOut(const LinkGlance& link) {
    const QString wrong = DeviceState(link);
    const QString advice = QStringLiteral("Choose a port with File, Configure System.");
    return wrong.isEmpty() ? advice : QStringLiteral("%1. %2").arg(wrong, advice);
}

// item and the items of the menus above it.
std::vector<QAction*> WithMenusAbove(QAction* item) {
    std::vector<QAction*> chain{item};
    for (QObject* object : item->associatedObjects()) {
        auto* menu = qobject_cast<QMenu*>(object);
        if (menu == nullptr || menu->menuAction() == item) continue;
        for (QAction* above : WithMenusAbove(menu->menuAction()))
            chain.push_back(above);
    }
    return chain;
}

// A menu's caption without its mnemonic, as a button shows it.
QString ButtonCaption(const QAction& item) {
    return item.iconText().replace(QLatin1Char('&'), QStringLiteral("&&"));
}

QString ButtonName(const QAction& item) {
    return QStringLiteral("cmd") + item.objectName().mid(3);
}

BigButton* MakeButton(QAction* item, QWidget* parent) {
    auto* button = new BigButton(parent, ButtonName(*item));
    const std::vector<QAction*> chain = WithMenusAbove(item);
    const auto follow = [button, item, chain] {
        button->setEnabled(std::ranges::all_of(chain, &QAction::isEnabled));
    };
    for (QAction* one : chain)
        QObject::connect(one, &QAction::changed, button, follow);
    QObject::connect(button, &QPushButton::clicked, item, [item] { item->trigger(); });
    follow();
    return button;
}

BigButton* MakeLargeButton(QAction* item, QWidget* parent) {
    BigButton* button = MakeButton(item, parent);
    button->setText(ButtonCaption(*item));
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    button->setMinimumHeight(kLeastButtonHeight);
    button->setMaximumHeight(kMostButtonHeight);
    Enlarge(button, kButtonGrowth);
    MakeBold(button);
    return button;
}

QPushButton* MakeCertificateButton(QWidget* parent) {
    auto* button = new BigButton(parent, "cmdCertificate", "&Certificate...");
    button->setFont(parent->font());
    Enlarge(button, kPreviewGrowth);
    button->setMinimumHeight(kCertificateHeight);
    button->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    button->setEnabled(false);
    return button;
}

// A filled dot, a ring or a cross, each in a colour of its own: who sees no colours sees the shape.
void ShowDot(QLabel& dot, const LinkGlance& link) {
    const bool missing = NeedsHelp(link) || link.comPort == kNoPortChosen;
    const auto [shape, colour] = missing         ? std::pair(u"\u2716", QColor(200, 30, 30))
                                 : link.portOpen ? std::pair(u"\u25CF", QColor(20, 140, 60))
                                                 : std::pair(u"\u25CB", QColor(110, 110, 110));
    QPalette palette = dot.parentWidget()->palette();
    palette.setColor(QPalette::WindowText, Readable(colour, palette.color(QPalette::Window),
                                                    palette.color(QPalette::WindowText), 4.5));
    dot.setPalette(palette);
    dot.setText(QString::fromUtf16(shape));
}

// Only a folder that was read and is empty has no records yet.
QString WhyNoRecords(const ShellFacts& facts) {
    const QString folder = ShownPath(facts.dataPath);
    if (!facts.listing.unread.isEmpty()) return UnreadText(facts.listing, facts.dataPath);
    if (!facts.listing.skipped.empty())
        return QStringLiteral("No file in %1 can be listed as a test record.").arg(folder);
    return QStringLiteral("No test records yet in %1").arg(folder);
}

QString TestLine(const RecordTest& test, KneeRule rule) {
    QStringList parts;
    const auto add = [&parts](const char* caption, const std::string& text) {
        if (!text.empty()) parts << QLatin1String(caption) + FromPage(text).toHtmlEscaped();
    };
    add("ratio ", test.measuredRatio);
    add("error ", test.percentError);
    add("", test.polarity);
    if (!test.points.empty())
        parts << QStringLiteral("kneepoint ") + JudgedText(FactOf(test, rule)).toHtmlEscaped();
    return QStringLiteral("<b>Test %1</b>: %2")
        .arg(FromPage(test.testNumber).toHtmlEscaped(), parts.join(QStringLiteral(", ")));
}

// With the results of so many tests at most.
QString RecordText(const RecordFacts& record, KneeRule rule, std::size_t most) {
    QStringList lines{QStringLiteral("<b>%1</b>").arg(FromPage(record.name).toHtmlEscaped()),
                      HeaderFields(record).join(QStringLiteral("&nbsp; "))};
    const std::size_t shown = std::min(record.tests.size(), most);
    for (std::size_t i = 0; i < shown; ++i)
        lines << TestLine(record.tests.at(i), rule);
    const std::size_t left = record.tests.size() + record.testsLeft - shown;
    if (left > 0) lines << QStringLiteral("and %1 more").arg(left);
    lines.removeAll(QString());
    return lines.join(QStringLiteral("<br>"));
}

std::vector<ChartCurve> CurvesOf(const RecordFacts& record) {
    std::vector<ChartCurve> curves;
    for (const RecordTest& test : record.tests) {
        if (test.points.empty() || curves.size() == kMostPreviewTests) continue;
        curves.push_back({FromPage(test.testNumber), test.points, {}, CurveLook::Normal});
    }
    return curves;
}

}  // namespace

// A record at a glance: its curves, its header and the results of its first tests.
class HomePanel::RecordPreview : public QWidget {
  public:
    explicit RecordPreview(QWidget* parent)
        : QWidget(parent),
          chart_(Named(new CurveChart(this), "chtPreview")),
          lblRecord_(MakeParagraph(this, "lblPreview", {}, kPreviewGrowth)) {
        chart_->SetInteractive(false);
        chart_->setFixedSize(kChartSize);
        lblRecord_->setTextFormat(Qt::RichText);
        lblRecord_->setAlignment(Qt::AlignTop);
        lblRecord_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Ignored);
        setMinimumHeight(kLeastPreviewHeight);
        auto* row = WithMargin(new QHBoxLayout(this), 0);
        row->setSpacing(kFormSpacing);
        row->addWidget(chart_, 0, Qt::AlignTop);
        row->addWidget(lblRecord_, 1);
    }

    // Reads and shows the record file at path; says why it cannot be read. kneepointType is the
    // marker whose kneepoints are shown. Whether there is a test in it.
    bool ShowRecord(const QString& path, const QString& kneepointType) {
        bool any = false;
        try {
            const RecordFacts record = ReadRecordFacts(path, kMostPreviewTests);
            const auto rule = KneeRuleOf(kneepointType.toStdString()).value_or(KneeRule::Asa1050);
            texts_.clear();
            for (std::size_t tests = kMostPreviewTests + 1; tests > 0; --tests)
                texts_ << RecordText(record, rule, tests - 1);
            texts_ << texts_.back().section(QStringLiteral("<br>"), 0, 0);
            chart_->SetCurves(CurvesOf(record));
            any = !record.tests.empty();
        } catch (const RunTimeError& error) {
            texts_ = {TroubleText(QFileInfo(path).completeBaseName(), error).toHtmlEscaped()};
            chart_->SetCurves({});
        }
        FitText();
        return any;
    }

  protected:
    void resizeEvent(QResizeEvent* event) override {
        QWidget::resizeEvent(event);
        chart_->setVisible(width() >= kChartWidth);
        layout()->activate();
        FitText();
    }

  private:
    // As many tests as there is room for.
    void FitText() {
        for (const QString& text : texts_) {
            lblRecord_->setText(text);
            if (lblRecord_->heightForWidth(lblRecord_->width()) <= height()) return;
        }
    }

    CurveChart* chart_;
    QLabel* lblRecord_;
    QStringList texts_;  // of the record, the longest first
};

HomePanel::HomePanel(const std::vector<QAction*>& items, const std::vector<SecondItem>& second,
                     QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("homePanel"));
    auto* grid = WithMargin(new QGridLayout(this), kPanelMargin);
    grid->setSpacing(kPanelSpacing);
    grid->addWidget(BuildLink(), 0, 0, 1, 2);
    auto* column = new QVBoxLayout;
    column->setSpacing(kPanelSpacing);
    for (QAction* item : items) {
        buttons_.push_back(MakeLargeButton(item, this));
        column->addWidget(buttons_.back(), 1);
    }
    column->addStretch();
    grid->addLayout(column, 1, 0);
    grid->addWidget(BuildRecords(items.empty() ? this : static_cast<QWidget*>(buttons_.back())), 1,
                    1);
    grid->addLayout(BuildSecondRow(second), 2, 0, 1, 2);
    grid->setColumnStretch(0, kButtonShare);
    grid->setColumnStretch(1, kRecordShare);
    grid->setRowStretch(1, 1);
}

QLayout* HomePanel::BuildSecondRow(const std::vector<SecondItem>& second) {
    auto* row = new QHBoxLayout;
    row->setSpacing(kPanelSpacing);
    const auto add = [this, row](BigButton* button, const char* caption) {
        button->setText(QLatin1String(caption));
        button->setMinimumHeight(kSecondButtonHeight);
        row->addWidget(button);
        buttons_.push_back(button);
    };
    for (const auto& [item, caption] : second)
        add(MakeButton(item, this), caption);
    auto* guide = new BigButton(this, "cmdGuide");
    connect(guide, &QPushButton::clicked, guide, [guide] { PressF1(*guide); });
    add(guide, "Guide (F1)");
    return row;
}

QWidget* HomePanel::BuildLink() {
    auto* frame = Named(new QWidget(this), "link");
    auto* row = WithMargin(new QHBoxLayout(frame), 0);
    row->setSpacing(kPanelSpacing);
    row->addWidget(MakePicture(frame, kPanelPicture), 0, Qt::AlignTop);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    lblDot_ = MakeLabel(frame, "lblDot", {}, kPortGrowth);
    lblPort_ = MakeParagraph(frame, "lblPort", {}, kPortGrowth);
    MakeBold(lblPort_);
    lblDevice_ = MakeParagraph(frame, "lblDevice");
    auto* port = new QHBoxLayout;
    port->addWidget(lblDot_);
    port->addWidget(lblPort_, 1);
    texts->addLayout(port);
    texts->addWidget(lblDevice_);
    texts->addStretch(1);
    row->addLayout(texts, 1);
    lblModel_ = MakeLabel(frame, "lblModel", {}, kHeadingGrowth);
    row->addWidget(lblModel_, 0, Qt::AlignTop);
    return frame;
}

QWidget* HomePanel::BuildRecords(QWidget* lastButton) {
    auto* frame = Named(new QWidget(this), "records");
    auto* column = WithMargin(new QVBoxLayout(frame), 0);
    sessions_ = new SessionCards(lastButton, frame);
    column->addWidget(sessions_);
    QLabel* heading = MakeParagraph(frame, "lblNewest", QStringLiteral("Newest test records"));
    MakeBold(heading);
    auto* top = new QHBoxLayout;
    top->addWidget(heading, 1);
    cmdCertificate_ = MakeCertificateButton(frame);
    top->addWidget(cmdCertificate_);
    column->addLayout(top);
    lblSaved_ = MakeParagraph(frame, "lblSaved", {}, kPreviewGrowth);
    lblSaved_->hide();
    column->addWidget(lblSaved_);
    recordPages_ = new QStackedLayout;
    column->addLayout(recordPages_, 1);
    lvNewest_ = Named(new RecordList(RecordColumns::UpToStation, frame), "lvNewest");
    lvNewest_->setAccessibleName(heading->text());
    lvNewest_->setSelectionMode(QAbstractItemView::SingleSelection);
    lvNewest_->setTabKeyNavigation(false);
    const auto view = [this] {
        if (const QString file = SelectedFile(); OnView && !file.isEmpty()) OnView(file);
    };
    connect(lvNewest_, &QTreeWidget::itemDoubleClicked, this, view);
    OnKey(lvNewest_, Qt::Key_Return, view);
    OnKey(lvNewest_, Qt::Key_Enter, view);
    connect(cmdCertificate_, &QPushButton::clicked, this, [this] {
        if (OnCertificate) OnCertificate(SelectedFile());
    });
    connect(lvNewest_, &QTreeWidget::itemSelectionChanged, this, [this] {
        Say({});
        Preview();
    });
    // The cards of many sessions leave room for some of them.
    lvNewest_->setMinimumHeight(kLeastRows * lvNewest_->fontMetrics().lineSpacing());
    recordPages_->addWidget(lvNewest_);
    lblNoRecords_ = MakeParagraph(frame, "lblNoRecords");
    lblNoRecords_->setAlignment(Qt::AlignTop);
    recordPages_->addWidget(lblNoRecords_);
    preview_ = Named(new RecordPreview(frame), "preview");
    preview_->hide();
    column->addWidget(preview_);
    return frame;
}

void HomePanel::ShowFacts(const ShellFacts& facts) {
    ShowDot(*lblDot_, facts.link);
    lblPort_->setText(PortState(facts.link));
    lblDevice_->setText(NeedsHelp(facts.link) ? WayOut(facts.link) : DeviceState(facts.link));
    lblModel_->setText(ModelWords(facts.link.instrumentModel));
    lblNoRecords_->setText(WhyNoRecords(facts));
    recordPages_->setCurrentWidget(facts.records.empty() ? static_cast<QWidget*>(lblNoRecords_)
                                                         : lvNewest_);
    ShowRecords(facts);
}

// The list is filled only where something has changed: what is selected stays so.
void HomePanel::ShowRecords(const ShellFacts& facts) {
    const QString selected = SelectedFile();
    const ShellFacts before = std::exchange(facts_, facts);
    facts_.records.resize(std::min(facts.records.size(), kNewestRecords));
    if (facts_.records != before.records || facts_.files != before.files) {
        const QSignalBlocker quiet(lvNewest_);
        lvNewest_->Fill(facts_.records, facts_.files);
        lvNewest_->SelectFiles({selected});
        if (SelectedFile().isEmpty()) {
            lvNewest_->setCurrentItem(lvNewest_->topLevelItem(0));
            Say({});
        }
    } else if (facts_.dataPath == before.dataPath && facts_.kneepointType == before.kneepointType &&
               preview_->isHidden() != HasRoom()) {
        return;
    }
    Preview();
}

QString HomePanel::SelectedFile() const {
    const std::vector<QString> files = lvNewest_->SelectedFiles();
    return files.empty() ? QString() : files.front();
}

bool HomePanel::HasRoom() const {
    const int sessions = sessions_->isHidden() ? 0 : kSessionsLines * fontMetrics().height();
    return height() >= kPreviewHeight + sessions;
}

void HomePanel::Preview() {
    const QString file = SelectedFile();
    preview_->setVisible(HasRoom() && !file.isEmpty());
    // Also where there is no room to show it: a certificate can be made of what can be read.
    readable_ = isVisible() && !file.isEmpty() &&
                preview_->ShowRecord(facts_.dataPath + file, facts_.kneepointType);
    EnableCertificate();
}

void HomePanel::EnableCertificate() {
    cmdCertificate_->setEnabled(working_ && readable_);
}

void HomePanel::EnableWorking(bool enabled) {
    working_ = enabled;
    sessions_->setEnabled(enabled);
    EnableCertificate();
}

void HomePanel::Say(const QStringList& lines) {
    lblSaved_->setText(lines.join(QLatin1Char('\n')));
    lblSaved_->setVisible(!lines.isEmpty());
}

void HomePanel::ShowSavedSession(const QString& file) {
    lvNewest_->SelectFiles({file});
    if (SelectedFile() != file) return;
    Say({QStringLiteral("%1 is saved. With Certificate... you make a page of it for the customer.")
             .arg(QFileInfo(file).completeBaseName())});
}

void HomePanel::FocusButtonOf(const QAction* item) {
    auto* button = item == nullptr ? nullptr : findChild<QPushButton*>(ButtonName(*item));
    // Enter must not start a test after a window that has no button here.
    if (item != nullptr && button == nullptr && lvNewest_->topLevelItemCount() > 0) {
        lvNewest_->setFocus();
        return;
    }
    if (button == nullptr || !button->isEnabled())
        button = *std::ranges::find_if(buttons_, &QPushButton::isEnabled);
    button->setFocus();
}

void HomePanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // That was before another window.
    if (!event->spontaneous()) Say({});
    // It may have been written anew under another window.
    Preview();
}

void HomePanel::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (preview_->isHidden() == HasRoom()) Preview();
}

}  // namespace davo
