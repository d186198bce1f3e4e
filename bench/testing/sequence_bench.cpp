// One pass of the test sequence over a full block of session text, against copying the same text
// and looking through it once.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "testing/test_sequence.h"

namespace davo {
namespace {

// Nothing arrives and nothing is sent.
class QuietPort : public SerialPort {
  public:
    void SetCommPort(std::int16_t) override {}
    void SetSettings(std::string_view) override {}
    void SetInputLen(int) override {}
    void SetInBufferSize(int) override {}
    void SetRThreshold(int) override {}
    bool PortOpen() const override { return true; }
    void SetPortOpen(bool) override {}
    void Output(std::string_view) override {}
    std::string Input() override { return {}; }
    bool WaitForText(Time) override { return false; }
};

class QuietPrompts : public Prompts {
  public:
    void Message(const QString&, const QString&) override {}
    Answer YesNo(const QString&, Answer preset, const QString&) override { return preset; }
    Answer YesNoCancel(const QString&, Answer preset, const QString&) override { return preset; }
    std::optional<QString> Input(const QString&, const QString&, const QString&) override {
        return std::nullopt;
    }
    QString SaveFile(const QString&, const QString&) override { return {}; }
    QString ChooseFolder(const QString&, const QString&) override { return {}; }
};

// Just below a block: readings, the results, and a record that has not ended.
std::string SessionText() {
    std::string text;
    while (text.size() < 650)
        text += "I=0.0123 V=152.4\r\n";
    text += "RATIO=241.2\r\nPOLARITY=+\r\nDATA";
    while (text.size() < kSessionBlock - 1)
        text += '0';
    return text;
}

class Sequence {
  public:
    void Pass(const std::string& text) {
        sequence_.Reply().sessionPending = text;
        sequence_.Reply().sessionWindow = text;
        sequence_.RunTestStep();
    }

  private:
    QuietPort port_;
    LinkState state_;
    QuietPrompts prompts_;
    BusyPointer pointer_;
    Link link_{port_, state_, prompts_, pointer_};
    Clock clock_;
    Places places_;
    TestModes modes_;
    SessionState session_;
    HeaderTable header_;
    TestSequence sequence_{
        {link_, prompts_, clock_, places_, modes_, session_, header_, [] {}, {}}};
};

void Bare(const std::string& text) {
    std::string copy = text;
    benchmark::DoNotOptimize(copy.data());
    benchmark::DoNotOptimize(copy.find("TURN VOLTAGE DRIVE TO ZERO..."));
}

void BM_RunTestStep(benchmark::State& state) {
    const std::string text = SessionText();
    Sequence sequence;
    for ([[maybe_unused]] auto _ : state)
        sequence.Pass(text);
}

void BM_CopyAndFind(benchmark::State& state) {
    const std::string text = SessionText();
    for ([[maybe_unused]] auto _ : state)
        Bare(text);
}

BENCHMARK(BM_RunTestStep);
BENCHMARK(BM_CopyAndFind);

template <class Work>
double Microseconds(const Work& work) {
    constexpr int kTimes = 20000;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kTimes; ++i)
        work();
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - start;
    return taken.count() / kTimes;
}

}  // namespace
}  // namespace davo

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    const std::string text = davo::SessionText();
    davo::Sequence sequence;
    const double pass = davo::Microseconds([&] { sequence.Pass(text); });
    const double bare = davo::Microseconds([&] { davo::Bare(text); });
    std::printf("RunTestStep over %zu bytes: %.2f us, copy and find: %.3f us, ratio %.1f\n",
                text.size(), pass, bare, pass / bare);
    return 0;
}
