// SPDX-License-Identifier: GPL-3.0-or-later
#include "driver.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QThread>
#include <QTimer>
#include <QWidget>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "look.h"
#include "script_line.h"
#include "widgets.h"

namespace davo::test {
namespace {

constexpr int kPollMs = 5;
constexpr int kFailed = 3;
constexpr int kInputEnded = 4;

void Say(const QString& text) {
    std::fprintf(stdout, "driver: %s\n", text.toUtf8().constData());
    std::fflush(stdout);
}

}  // namespace

Driver::Driver(const QString& script) {
    // A platform's own dialogs have no widgets that could be driven.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    if (script == QLatin1String("-")) {
        input_ = ReadCommands(
            [this](const QString& line) {
                AddLine(line);
                Schedule(0);
            },
            [this] { EndWithInput(); });
        return;
    }
    QFile file(script);
    if (!file.open(QIODevice::ReadOnly)) {
        Fail(QStringLiteral("cannot read ") + script);
    }
    for (const QByteArray& line : file.readAll().split('\n')) {
        AddLine(QString::fromUtf8(line));
    }
    Schedule(0);
}

// Who gave the commands has gone: nobody would ever end the program.
void Driver::EndWithInput() {
    Step end;
    end.line = QStringLiteral("end, since the input has ended");
    end.missing = [] { return QString(); };
    end.act = [] { std::_Exit(kInputEnded); };
    steps_.push_back(std::move(end));
    Schedule(0);
}

void Driver::AddLine(const QString& line) {
    const QStringList words = ScriptWords(line);
    if (!words.isEmpty()) {
        steps_.push_back(Build(line.trimmed(), words));
    }
}

// Without anything to do no timer runs, so that the program's own use of the processor can be
// measured.
void Driver::Schedule(int ms) {
    if (!scheduled_ && !steps_.empty()) {
        scheduled_ = true;
        QTimer::singleShot(ms, this, &Driver::Tick);
    }
}

// What is done in parts is not interrupted by the next act, but in a loop that it has opened, as a
// modal dialog does. After an act the loop that it may have ended is left first.
bool Driver::MayGoOn() {
    if (QThread::currentThread()->loopLevel() <= actingIn_) {
        return false;
    }
    return !std::exchange(acted_, false);
}

void Driver::Tick() {
    scheduled_ = false;
    if (steps_.empty()) {
        return;
    }
    if (!MayGoOn()) {
        Schedule(kPollMs);
        return;
    }
    if (!timing_) {
        timing_ = true;
        sinceStep_.start();
    }
    ActivateSomeWindow();
    const QString missing = steps_.front().missing();
    if (!missing.isEmpty()) {
        if (sinceStep_.elapsed() >= steps_.front().limitMs) {
            GiveUp(missing);
        }
        Schedule(kPollMs);
        return;
    }
    const Step step = std::move(steps_.front());
    steps_.pop_front();
    timing_ = false;
    if (step.logged) {
        Say(QStringLiteral("do ") + step.line);
    }
    Schedule(kPollMs);
    if (step.act) {
        const int level = step.inParts ? QThread::currentThread()->loopLevel() : actingIn_;
        const int outer = std::exchange(actingIn_, level);
        step.act();
        actingIn_ = outer;
        acted_ = true;
    }
}

void Driver::GiveUp(const QString& missing) {
    const Step& step = steps_.front();
    if (!lenient_) {
        Fail(step.line + QStringLiteral(": waited ") + QString::number(step.limitMs) +
             QStringLiteral(" ms, but ") + missing);
    }
    Say(QStringLiteral("left out ") + step.line + QStringLiteral(": ") + missing);
    steps_.pop_front();
    timing_ = false;
}

// A button may have another text than when it was chosen.
void Driver::SayPressed(const QWidget* pressed) {
    if (lenient_) {
        Say(QStringLiteral("pressed ") + pressed->objectName() + QLatin1Char(' ') +
            ShownText(pressed).simplified());
    }
}

void Driver::Fail(const QString& reason) {
    Say(QStringLiteral("FAILED ") + reason);
    Say(QStringLiteral("state ") +
        QString::fromUtf8(QJsonDocument(VisibleState()).toJson(QJsonDocument::Compact)));
    const QString pictures = qEnvironmentVariable("DAVO_DRIVER_PICTURES");
    QWidget* front = FrontWindow();
    if (!pictures.isEmpty() && front != nullptr) {
        const QString path = QDir(pictures).filePath(QStringLiteral("failed.png"));
        front->grab().save(path);
        Say(QStringLiteral("picture ") + path);
    }
    std::_Exit(kFailed);
}

Step Driver::Build(const QString& line, const QStringList& words) {
    // Commands whose last word may be a limit, with the words they need before it.
    static const QHash<QString, int> kWithLimit{
        {QStringLiteral("wait"), 1},        {QStringLiteral("waitGone"), 1},
        {QStringLiteral("waitText"), 2},    {QStringLiteral("waitContains"), 2},
        {QStringLiteral("waitEnabled"), 1}, {QStringLiteral("waitDisabled"), 1},
        {QStringLiteral("click"), 1},       {QStringLiteral("menu"), 1},
        {QStringLiteral("type"), 2},        {QStringLiteral("answer"), 1},
        {QStringLiteral("chooseFile"), 1},  {QStringLiteral("key"), 1},
        {QStringLiteral("close"), 1},       {QStringLiteral("row"), 2}};
    constexpr int kLimitMs = 60000;

    const QString& command = words.front();
    QStringList args = words.mid(1);
    const qsizetype needed = kWithLimit.value(command, 0);
    if (args.size() < needed) {
        Fail(QStringLiteral("too few words: ") + line);
    }
    int limitMs = kLimitMs;
    if (kWithLimit.contains(command) && args.size() > needed) {
        bool isNumber = false;
        const int number = args.back().toInt(&isNumber);
        if (isNumber) {
            limitMs = number;
            args.removeLast();
        }
    }
    Step step = command.startsWith(QLatin1String("wait")) ? BuildWait(command, args)
                                                          : BuildAct(command, args);
    if (!step.missing) {
        Fail(QStringLiteral("unknown command: ") + line);
    }
    step.line = line;
    step.limitMs = limitMs;
    return step;
}

Step Driver::BuildAct(const QString& command, const QStringList& args) {
    const auto at = [&](qsizetype i) { return args.value(i); };
    if (command == QLatin1String("click")) {
        return BuildClick(at(0));
    }
    if (command == QLatin1String("menu")) {
        return BuildMenu(at(0));
    }
    if (command == QLatin1String("type")) {
        return BuildType(at(0), at(1));
    }
    if (command == QLatin1String("focusOut") || command == QLatin1String("key")) {
        return BuildKey(command == QLatin1String("key") ? at(0) : QStringLiteral("Tab"));
    }
    if (command == QLatin1String("answer")) {
        return BuildAnswer(args);
    }
    if (command == QLatin1String("chooseFile")) {
        return BuildChooseFile(at(0));
    }
    if (command == QLatin1String("grab")) {
        return BuildGrab(args);
    }
    if (command == QLatin1String("row")) {
        return BuildRow(args);
    }
    if (command == QLatin1String("colours")) {
        return BuildColours(at(0));
    }
    if (command == QLatin1String("close")) {
        return BuildClose(at(0));
    }
    return BuildSaying(command, at(0));
}

Step Driver::BuildSaying(const QString& command, const QString& word) {
    const auto atOnce = [](std::function<void()> act) {
        return Step{{}, [] { return QString(); }, std::move(act)};
    };
    if (command == QLatin1String("state")) {
        return atOnce([] {
            Say(QStringLiteral("state ") +
                QString::fromUtf8(QJsonDocument(VisibleState()).toJson(QJsonDocument::Compact)));
        });
    }
    if (command == QLatin1String("look")) {
        return atOnce([] {
            Say(QStringLiteral("look ") +
                QString::fromUtf8(QJsonDocument(Look()).toJson(QJsonDocument::Compact)));
        });
    }
    if (command == QLatin1String("watch")) {
        return atOnce([this, name = word] {
            watches_.push_back(std::make_unique<Watch>(name));
            QCoreApplication::instance()->installEventFilter(watches_.back().get());
        });
    }
    if (command == QLatin1String("lenient")) {
        return atOnce([this] { lenient_ = true; });
    }
    if (command == QLatin1String("log")) {
        return atOnce([text = word] { Say(QStringLiteral("log ") + text); });
    }
    if (command == QLatin1String("quit")) {
        return atOnce([] { QCoreApplication::quit(); });
    }
    if (command == QLatin1String("sleep")) {
        Step step;
        step.missing = [this, ms = word.toInt()] {
            return sinceStep_.elapsed() < ms ? QStringLiteral("asleep") : QString();
        };
        return step;
    }
    return {};
}

}  // namespace davo::test
