#include "app/wait_notice.h"

#include <QLabel>
#include <QPushButton>
#include <QStatusBar>

#include "link/link.h"

namespace davo {

namespace {

// A wait shorter than this is over before anyone has read a notice.
constexpr int kDelay = 1000;  // ms

}  // namespace

WaitNotice::WaitNotice(Link& link, QStatusBar& bar)
    : link_(link),
      bar_(bar),
      lblWait_(new QLabel(QStringLiteral("Waiting for the instrument..."), &bar)),
      cmdStopWait_(new QPushButton(QStringLiteral("Stop &Waiting"), &bar)) {
    lblWait_->setObjectName(QStringLiteral("lblWait"));
    cmdStopWait_->setObjectName(QStringLiteral("cmdStopWait"));
    bar.setSizeGripEnabled(false);
    bar.addWidget(lblWait_);
    bar.addWidget(cmdStopWait_);
    Show(false);
    delay_.setSingleShot(true);
    delay_.setInterval(kDelay);
    QObject::connect(&delay_, &QTimer::timeout, &bar, [this] { Show(true); });
    QObject::connect(cmdStopWait_, &QPushButton::clicked, &bar, [this] { link_.EndWait(); });
}

void WaitNotice::WaitChanged() {
    if (link_.CurrentWait()) {
        delay_.start();
    } else {
        delay_.stop();
        Show(false);
    }
}

void WaitNotice::Show(bool show) {
    bar_.setVisible(show);
}

}  // namespace davo
