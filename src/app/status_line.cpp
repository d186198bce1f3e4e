// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/status_line.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStackedLayout>
#include <QStringList>
#include <QStyle>
#include <algorithm>
#include <string_view>

#include "common/places.h"
#include "common/text.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

// A wait shorter than this is over before anyone has read a notice.
constexpr std::chrono::milliseconds kDelay{2000};
constexpr int kSpacing = 18;
constexpr int kButtonHeight = 30;
constexpr std::size_t kMostNames = 20;  // of a message that fits a small screen
constexpr int kLeastElided = 8;         // characters
constexpr int kFolderShare = 2;
constexpr int kDeviceShare = 1;

QLabel* MakeFact(QWidget* parent, const char* name, const char* purpose) {
    QLabel* label = MakeLabel(parent, name, {}, 1);
    label->setToolTip(QLatin1String(purpose));
    return label;
}

QString Files(std::size_t count) {
    return count == 1 ? QStringLiteral("1 file") : QStringLiteral("%1 files").arg(count);
}

QString SkippedDetail(const std::vector<SkippedFile>& skipped) {
    QStringList lines{
        QStringLiteral("%1 in the data folder cannot be listed:").arg(Files(skipped.size()))};
    for (std::size_t i = 0; i < std::min(skipped.size(), kMostNames); ++i) {
        lines << QStringLiteral("%1 %2").arg(skipped[i].name, SkipReasonText(skipped[i].reason));
    }
    if (skipped.size() > kMostNames) {
        lines << QStringLiteral("and %1 more").arg(skipped.size() - kMostNames);
    }
    return lines.join(QStringLiteral("\r\n"));
}

QString NotListedDetail(int notListed) {
    return QStringLiteral(
               "The list holds %1 records; %2 more in the data folder %3 not listed. "
               "Move older ones to another folder.")
        .arg(kMostListedRecords)
        .arg(Files(static_cast<std::size_t>(notListed)),
             notListed == 1 ? QStringLiteral("is") : QStringLiteral("are"));
}

// All that have a caption as one, each caption once.
Notice Joined(const std::vector<Notice>& notices) {
    QStringList captions;
    QStringList details;
    for (const Notice& notice : notices) {
        if (notice.caption.isEmpty()) continue;
        captions << notice.caption;
        details << notice.detail;
    }
    captions.removeDuplicates();
    return {captions.join(QStringLiteral(", ")), details.join(QStringLiteral("\r\n\r\n"))};
}

QString AnswerWords(std::string_view command) {
    if (command == "B") return QStringLiteral("the question whether it is ready");
    if (command == "W") return QStringLiteral("the question for its model");
    if (command == "d") return QStringLiteral("the request for its list of test records");
    if (command.starts_with("L")) {
        return QStringLiteral("the request to find test record %1")
            .arg(FromPage(TrimBlanks(command.substr(1))));
    }
    if (command == "R") return QStringLiteral("the request for a test record");
    if (command == "Fr") return QStringLiteral("the request for its headers");
    if (command == "Fh") return QStringLiteral("the request to erase its headers");
    return {};
}

}  // namespace

Notice NoticeOf(const std::vector<SkippedFile>& skipped, int notListed) {
    std::vector<Notice> notices;
    if (!skipped.empty()) {
        notices.push_back(
            {QStringLiteral("%1 skipped").arg(Files(skipped.size())), SkippedDetail(skipped)});
    }
    if (notListed > 0) {
        notices.push_back(
            {QStringLiteral("%1 not listed").arg(Files(static_cast<std::size_t>(notListed))),
             NotListedDetail(notListed)});
    }
    return Joined(notices);
}

std::vector<Notice> NoticesOf(const RebuildResult& listing, const QString& dataPath) {
    std::vector<Notice> notices;
    const auto add = [&notices](const QString& caption, const QString& detail) {
        if (!detail.isEmpty()) notices.push_back({caption, detail});
    };
    add(QStringLiteral("Records not listed"), UnreadText(listing, dataPath));
    add(QStringLiteral("List not saved"), NotSavedText(listing));
    add(QStringLiteral("Control characters"), CleanedText(listing));
    const Notice files = NoticeOf(listing.skipped, listing.notListed);
    add(files.caption, files.detail);
    return notices;
}

QString WaitWords(const WaitUnderWay& wait) {
    const QString answer = AnswerWords(wait.command);
    if (answer.isEmpty()) return QStringLiteral("Waiting for the DAVO's answer...");
    return QStringLiteral("Waiting for the DAVO's answer to %1...").arg(answer);
}

// A label that gives up a part of its text when there is no room; the tool tip has the whole.
class StatusLine::ElidedLabel : public QLabel {
  public:
    ElidedLabel(QWidget* parent, const char* name, Qt::TextElideMode mode)
        : QLabel(parent), mode_(mode) {
        setObjectName(QLatin1String(name));
        setTextFormat(Qt::PlainText);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    }

    void SetWhole(const QString& text) {
        setText(text);
        setToolTip(text);
    }

    QSize minimumSizeHint() const override {
        const int least = fontMetrics().averageCharWidth() * kLeastElided;
        return {std::min(least, sizeHint().width()), QLabel::minimumSizeHint().height()};
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        style()->drawItemText(
            &painter, contentsRect(), Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(),
            fontMetrics().elidedText(text(), mode_, contentsRect().width()), foregroundRole());
    }

  private:
    Qt::TextElideMode mode_;
};

StatusLine::StatusLine(Link& link, Prompts& prompts, QWidget* parent)
    : QWidget(parent), link_(link), prompts_(prompts) {
    setObjectName(QStringLiteral("statusLine"));
    pages_ = new QStackedLayout(this);
    pages_->addWidget(BuildFacts());
    pages_->addWidget(BuildWait());
    delay_.setSingleShot(true);
    delay_.setInterval(kDelay);
    connect(&delay_, &QTimer::timeout, this, [this] { ShowWait(); });
}

QWidget* StatusLine::BuildFacts() {
    auto* page = Named(new QWidget(this), "facts");
    auto* row = new QHBoxLayout(page);
    row->setContentsMargins(6, 0, 6, 0);
    row->setSpacing(kSpacing);
    lblPort_ = MakeFact(page, "lblPort", "Serial port");
    MakeBold(lblPort_);
    lblDevice_ = new ElidedLabel(page, "lblDevice", Qt::ElideRight);
    lblModel_ = MakeFact(page, "lblModel", "Instrument");
    lblDataPath_ = new ElidedLabel(page, "lblDataPath", Qt::ElideMiddle);
    lblKneepoint_ = MakeFact(page, "lblKneepoint", "Kneepoint marker");
    cmdNotice_ = Named(new QPushButton(page), "cmdNotice");
    cmdNotice_->setIcon(style()->standardIcon(QStyle::SP_MessageBoxWarning));
    cmdNotice_->setFlat(true);
    cmdNotice_->hide();
    connect(cmdNotice_, &QPushButton::clicked, this, [this] { prompts_.Message(noticeDetail_); });
    row->addWidget(lblPort_);
    row->addWidget(lblDevice_, kDeviceShare);
    row->addWidget(lblModel_);
    row->addWidget(lblDataPath_, kFolderShare);
    row->addWidget(lblKneepoint_);
    row->addWidget(cmdNotice_);
    auto* lblHelp = MakeFact(page, "lblHelp", "Opens the guide at the window in front");
    lblHelp->setText(QStringLiteral("F1 Help"));
    row->addWidget(lblHelp);
    return page;
}

QWidget* StatusLine::BuildWait() {
    auto* page = Named(new QWidget(this), "wait");
    auto* row = new QHBoxLayout(page);
    row->setContentsMargins(6, 0, 6, 0);
    row->setSpacing(kSpacing);
    lblWait_ = MakeLabel(page, "lblWait", {}, 1);
    auto* cmdStopWait =
        Named(new QPushButton(QStringLiteral("Stop &waiting"), page), "cmdStopWait");
    cmdStopWait->setMinimumHeight(kButtonHeight);
    connect(cmdStopWait, &QPushButton::clicked, this, [this] { link_.EndWait(); });
    row->addWidget(lblWait_);
    row->addWidget(cmdStopWait);
    row->addStretch();
    return page;
}

void StatusLine::ShowFacts(const ShellFacts& facts) {
    lblPort_->setText(PortState(facts.link));
    lblDevice_->SetWhole(DeviceState(facts.link));
    lblModel_->setText(ModelWords(facts.link.instrumentModel));
    lblDataPath_->SetWhole(ShownPath(facts.dataPath));
    lblKneepoint_->setText(facts.kneepointType);
    // The troubles first: they are rarer.
    std::vector<Notice> notices = facts.troubles;
    for (const Notice& notice : NoticesOf(facts.listing, facts.dataPath))
        notices.push_back(notice);
    const Notice notice = Joined(notices);
    noticeDetail_ = notice.detail;
    cmdNotice_->setText(notice.caption);
    cmdNotice_->setToolTip(notice.detail);
    cmdNotice_->setVisible(!notice.caption.isEmpty());
    FitLetters();
}

void StatusLine::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    FitLetters();
}

void StatusLine::FitLetters() {
    constexpr double kSmaller = 0.95;
    constexpr double kLeastPoints = 8;
    std::pair now(
        QStringList{lblPort_->text(), lblModel_->text(), lblKneepoint_->text(), cmdNotice_->text()},
        width());
    if (now == fitted_) return;
    fitted_ = std::move(now);
    QWidget* page = pages_->widget(0);
    const auto use = [page](double points) {
        for (auto* fact : page->findChildren<QWidget*>()) {
            QFont letters = fact->font();
            letters.setPointSizeF(points);
            fact->setFont(letters);
        }
    };
    double points = font().pointSizeF();
    use(points);
    while (page->minimumSizeHint().width() > width() && points > kLeastPoints)
        use(points *= kSmaller);
}

void StatusLine::WaitChanged() {
    if (link_.CurrentWait()) {
        delay_.start();
    } else {
        delay_.stop();
        pages_->setCurrentIndex(0);
    }
}

void StatusLine::ShowWait() {
    const auto wait = link_.CurrentWait();
    if (!wait) return;
    lblWait_->setText(WaitWords(*wait));
    pages_->setCurrentIndex(1);
}

}  // namespace davo
