// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/given_port.h"
#include "instrument/pc_end.h"

namespace davo::instrument {

namespace {

class PortEnd : public PcEnd {
  public:
    explicit PortEnd(const QString& device) : port_(device) {
        port_->OnTextWaiting = [this] { OnBytes(port_->Input()); };
        port_->OnLost = [this](const QString& /*reason*/) { OnStop(); };
    }
    void Write(std::string_view bytes) override { port_->Output(bytes); }

  private:
    GivenPort port_;
};

}  // namespace

std::unique_ptr<PcEnd> MakePcEnd(const QString& name) {
    return std::make_unique<PortEnd>(name);
}

}  // namespace davo::instrument
