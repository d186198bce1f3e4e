// SPDX-License-Identifier: GPL-3.0-or-later
#include <unistd.h>

#include <QSocketNotifier>

#include "instrument/pc_end.h"
#include "instrument/pty.h"
#include "instrument/stop_signals.h"

namespace davo::instrument {

namespace {

class PtyEnd : public PcEnd {
  public:
    explicit PtyEnd(const std::string& link)
        : stop_(StopDescriptor()),
          pty_(link),
          readable_(pty_.Descriptor(), QSocketNotifier::Read),
          writable_(pty_.Descriptor(), QSocketNotifier::Write),
          stopped_(stop_, QSocketNotifier::Read) {
        writable_.setEnabled(false);
        QObject::connect(&readable_, &QSocketNotifier::activated, [this] { OnBytes(pty_.Read()); });
        QObject::connect(&writable_, &QSocketNotifier::activated, [this] { Write({}); });
        QObject::connect(&stopped_, &QSocketNotifier::activated, [this] { OnStop(); });
    }
    ~PtyEnd() override { close(stop_); }
    Q_DISABLE_COPY_MOVE(PtyEnd)

    void Write(std::string_view bytes) override {
        pty_.Write(bytes);
        writable_.setEnabled(pty_.WriteWaits());
    }

  private:
    int stop_;
    Pty pty_;
    QSocketNotifier readable_;
    QSocketNotifier writable_;
    QSocketNotifier stopped_;
};

}  // namespace

std::unique_ptr<PcEnd> MakePcEnd(const QString& name) {
    return std::make_unique<PtyEnd>(name.toStdString());
}

}  // namespace davo::instrument
