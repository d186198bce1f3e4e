// SPDX-License-Identifier: GPL-3.0-or-later
// davo-line between the simulated instrument and a PC, and its log answered and checked.

#include <QProcess>

#include "common/files.h"
#include "instrument/conversation_log.h"
#include "tests/instrument/device_client.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using namespace instrument;

constexpr int kLinePatienceMs = 60000;

std::string StartProgram(QProcess& process, const char* program, const QStringList& arguments) {
    process.start(QString::fromUtf8(program), arguments);
    EXPECT_TRUE(process.waitForReadyRead(kLinePatienceMs)) << program;
    return process.readLine().toStdString();
}

struct Ended {
    int code = -1;
    std::string out;
    std::string err;
};

Ended EndOf(QProcess& process) {
    EXPECT_TRUE(process.state() == QProcess::NotRunning ||
                process.waitForFinished(kLinePatienceMs));
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

Ended RunToEnd(const char* program, const QStringList& arguments) {
    QProcess process;
    process.start(QString::fromUtf8(program), arguments);
    return EndOf(process);
}

std::string BytesOf(const std::vector<LoggedBytes>& log, bool toPc) {
    std::string bytes;
    for (const LoggedBytes& piece : log) {
        if (piece.toPc == toPc) bytes += piece.bytes;
    }
    return bytes;
}

class Line : public ::testing::Test {
  protected:
    std::string Log(const char* name) { return folder.Path(name).toStdString(); }

    // A shot and a directory over davo-line.
    void Record() {
        QProcess instrument;
        QProcess line;
        StartProgram(instrument, DAVO_INSTRUMENT_PROGRAM,
                     {u"--link"_s, folder.Path("port"), u"--unpaced"_s, u"--quick"_s, u"--seed"_s,
                      u"5"_s, u"--log"_s, folder.Path("far.log")});
        EXPECT_EQ(StartProgram(line, DAVO_LINE_PROGRAM,
                               {folder.Path("port"), folder.Path("pc"), folder.Path("near.log")}),
                  "ready " + Log("pc") + "\n");
        DeviceClient pc(Log("pc"));
        Talk(pc);
        line.terminate();
        EXPECT_EQ(EndOf(line).code, 0);
        EXPECT_FALSE(LinkExists(Log("pc")));
        instrument.terminate();
        EndOf(instrument);
    }

    static void Talk(DeviceClient& pc) {
        pc.Send("B");
        EXPECT_THAT(pc.Until("RDY\r\n"), EndsWith("RDY\r\n"));
        pc.Send("d");
        EXPECT_THAT(pc.Until("\r\nDONE"), HasSubstr("#012"));
        pc.Send("t");
        pc.Until("RATIO TEST");
        pc.Until("V=");
        pc.Send("\r");
        EXPECT_THAT(pc.Until("DONE"), HasSubstr("POLARITY="));
    }

    TemporaryFolder folder;
};

TEST_F(Line, PassesEveryByteOnAndWritesItDown) {
    Record();
    const std::vector<LoggedBytes> far = ReadConversationLog(Log("far.log"));
    const std::vector<LoggedBytes> near = ReadConversationLog(Log("near.log"));
    EXPECT_EQ(BytesOf(near, false), "Bdt\r");
    EXPECT_EQ(BytesOf(near, false), BytesOf(far, false));
    EXPECT_EQ(BytesOf(near, true), BytesOf(far, true));
    EXPECT_GT(BytesOf(near, true).size(), 3000U);
    for (std::size_t i = 1; i < near.size(); ++i)
        EXPECT_GE(near[i].at, near[i - 1].at);
}

// Text that comes between two looks of Qt's serial port at its device must not make it deaf.
TEST_F(Line, HearsEveryAnswerOfManyConversations) {
    QProcess instrument;
    QProcess line;
    StartProgram(instrument, DAVO_INSTRUMENT_PROGRAM,
                 {u"--link"_s, folder.Path("port"), u"--unpaced"_s, u"--quick"_s});
    StartProgram(line, DAVO_LINE_PROGRAM,
                 {folder.Path("port"), folder.Path("pc"), folder.Path("near.log")});
    DeviceClient pc(Log("pc"));
    constexpr int kConversations = 40;
    for (int i = 0; i < kConversations && !HasFailure(); ++i)
        Talk(pc);
    line.terminate();
    EXPECT_EQ(EndOf(line).code, 0);
    instrument.terminate();
    EndOf(instrument);
}

TEST_F(Line, IsCheckedByItsLog) {
    Record();
    const Ended checked =
        RunToEnd(DAVO_INSTRUMENT_PROGRAM, {u"--check"_s, folder.Path("near.log")});
    EXPECT_EQ(checked.code, 0) << checked.out;
    EXPECT_THAT(checked.out, HasSubstr("directory of 12 records"));
    EXPECT_THAT(checked.out, EndsWith("0 departures from what the program expects\n"));

    QFile log(folder.Path("near.log"));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    QByteArray text = log.readAll();
    log.close();
    ASSERT_TRUE(text.contains(" 52 44 59 "));
    ASSERT_TRUE(log.open(QIODevice::WriteOnly));
    log.write(text.replace(" 52 44 59 ", " 52 64 59 "));
    log.close();
    const Ended changed =
        RunToEnd(DAVO_INSTRUMENT_PROGRAM, {u"--check"_s, folder.Path("near.log")});
    EXPECT_EQ(changed.code, 1);
    EXPECT_THAT(changed.out, HasSubstr("B wants RDY and a line end: \"RdY\\x0D\\x0A\""));
}

TEST_F(Line, IsAnsweredAgain) {
    Record();
    QProcess replay;
    StartProgram(replay, DAVO_INSTRUMENT_PROGRAM,
                 {u"--link"_s, folder.Path("again"), u"--replay"_s, folder.Path("near.log")});
    {
        DeviceClient pc(Log("again"));
        Talk(pc);
        pc.During(std::chrono::milliseconds(200));
    }
    replay.terminate();
    const Ended ended = EndOf(replay);
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(ended.out, "whole: 4 bytes from the PC as recorded\n");
    EXPECT_FALSE(LinkExists(Log("again")));
}

TEST_F(Line, IsAnsweredUntilThePcDeparts) {
    Record();
    QProcess replay;
    StartProgram(replay, DAVO_INSTRUMENT_PROGRAM,
                 {u"--link"_s, folder.Path("again"), u"--replay"_s, folder.Path("near.log")});
    DeviceClient pc(Log("again"));
    pc.Send("B");
    EXPECT_EQ(pc.Until("\r\n"), "RDY\r\n");
    pc.Send("T");
    const Ended ended = EndOf(replay);
    EXPECT_EQ(ended.code, 1);
    EXPECT_THAT(ended.out, StartsWith("departed at byte 2 from the PC: expected 64 'd' (line "));
    EXPECT_THAT(ended.out, EndsWith("of the log), got 54 'T'\n"));
}

TEST_F(Line, EndsWithThePort) {
    QProcess instrument;
    QProcess line;
    StartProgram(instrument, DAVO_INSTRUMENT_PROGRAM, {u"--link"_s, folder.Path("port")});
    StartProgram(line, DAVO_LINE_PROGRAM,
                 {folder.Path("port"), folder.Path("pc"), folder.Path("near.log")});
    const DeviceClient pc(Log("pc"));
    instrument.terminate();
    EndOf(instrument);
    const Ended ended = EndOf(line);
    EXPECT_EQ(ended.code, 1);
    EXPECT_THAT(ended.err, StartsWith("davo-line: " + Log("port") + " is gone: "));
    EXPECT_TRUE(pc.HungUp());
}

TEST_F(Line, SaysThatItsLogIsCutAndGoesOn) {
    QProcess instrument;
    StartProgram(instrument, DAVO_INSTRUMENT_PROGRAM,
                 {u"--link"_s, folder.Path("port"), u"--unpaced"_s, u"--quick"_s});
    QProcess line;
    // A limit on its files is a full disk to it.
    StartProgram(line, "/bin/bash",
                 {u"-c"_s, u"trap '' XFSZ; ulimit -f 1; exec \"$@\""_s, u"line"_s,
                  QStringLiteral(DAVO_LINE_PROGRAM), folder.Path("port"), folder.Path("pc"),
                  folder.Path("near.log")});
    DeviceClient pc(Log("pc"));
    Talk(pc);
    line.terminate();
    const Ended ended = EndOf(line);
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.err, "davo-line: " + Log("near.log") +
                             " cannot be written any more; the line is still passed on.\n");
    instrument.terminate();
    EndOf(instrument);
    // What it could write is looked at.
    const Ended checked =
        RunToEnd(DAVO_INSTRUMENT_PROGRAM, {u"--check"_s, folder.Path("near.log")});
    EXPECT_THAT(checked.err, StartsWith("davo-instrument: line "));
    EXPECT_THAT(checked.err,
                EndsWith(" of " + Log("near.log") + " is cut off; what is before it counts.\n"));
    EXPECT_THAT(checked.out, HasSubstr("B: 1 times, answered 1"));
}

TEST_F(Line, TakesNotThePortsOwnName) {
    QProcess instrument;
    StartProgram(instrument, DAVO_INSTRUMENT_PROGRAM, {u"--link"_s, folder.Path("port")});
    const Ended ended =
        RunToEnd(DAVO_LINE_PROGRAM, {folder.Path("port"), folder.Path("port"), folder.Path("log")});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.err, "davo-line: " + Log("port") +
                             " is the instrument's port; give the program's another name.\n");
    EXPECT_TRUE(LinkExists(Log("port")));
    EXPECT_FALSE(QFile::exists(folder.Path("log")));
    instrument.terminate();
    EndOf(instrument);
}

TEST_F(Line, ReplacesNoLog) {
    Record();
    const QStringList names = {folder.Path("port"), folder.Path("pc"), folder.Path("near.log")};
    const std::string before = ReadWholeFile(folder.Path("near.log"));
    const Ended ended = RunToEnd(DAVO_LINE_PROGRAM, names);
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.err,
              "davo-line: " + Log("near.log") + " is there already; give another name.\n");
    EXPECT_EQ(ReadWholeFile(folder.Path("near.log")), before);
    EXPECT_FALSE(LinkExists(Log("pc")));
    ReplaceFile(folder.Path("near.log"), "");
    EXPECT_THAT(RunToEnd(DAVO_LINE_PROGRAM, names).err, Not(HasSubstr("is there already")));
}

TEST_F(Line, RefusesWhatItCannotDo) {
    EXPECT_EQ(RunToEnd(DAVO_LINE_PROGRAM, {}).code, 2);
    EXPECT_THAT(RunToEnd(DAVO_LINE_PROGRAM, {u"--help"_s}).out,
                StartsWith("davo-line PORT NAME LOG\n"));
    const Ended none = RunToEnd(DAVO_LINE_PROGRAM,
                                {folder.Path("none"), folder.Path("pc"), folder.Path("near.log")});
    EXPECT_EQ(none.code, 1);
    EXPECT_THAT(none.err, StartsWith("davo-line: "));
    EXPECT_EQ(RunToEnd(DAVO_INSTRUMENT_PROGRAM, {u"--check"_s, folder.Path("none")}).code, 1);
}

}  // namespace
}  // namespace davo::test
