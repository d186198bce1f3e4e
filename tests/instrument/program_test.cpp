// SPDX-License-Identifier: GPL-3.0-or-later
// The program: its command line, and the process from its ready line to its end.

#include <QProcess>
#include <iterator>
#include <sstream>

#include "instrument/command_line.h"
#include "tests/instrument/device_client.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

using namespace instrument;

constexpr int kPatienceMs = 60000;

CommandLine Parse(const std::vector<std::string>& arguments) {
    return ParseCommandLine(arguments, 99);
}

TEST(CommandLine, Presets) {
    const CommandLine line = Parse({"--link", "/tmp/x"});
    EXPECT_EQ(line.error, "");
    EXPECT_EQ(line.options.linkPath, "/tmp/x");
    EXPECT_TRUE(line.options.paced);
    EXPECT_EQ(line.options.conversation.seed, 99U);
    EXPECT_EQ(line.options.conversation.model, "DAVO-E R3.15");
    EXPECT_EQ(line.options.conversation.memory.size(), 12U);
    EXPECT_EQ(line.options.conversation.pauseScale, 1);
    EXPECT_FALSE(line.dieWithParent);
}

TEST(CommandLine, EveryOption) {
    std::istringstream words(
        "--link p --unpaced --quick --seed 7 --log l --model DAVO --memory 0 --die-with-parent "
        "--scenario over-voltage,full --fault silent --fault flip:3,1 --readings-per-second 2.5");
    const CommandLine line = Parse({std::istream_iterator<std::string>(words), {}});
    EXPECT_EQ(line.error, "");
    EXPECT_FALSE(line.options.paced);
    EXPECT_EQ(line.options.conversation.pauseScale, kQuickScale);
    EXPECT_EQ(line.options.conversation.seed, 7U);
    EXPECT_EQ(line.options.logPath, "l");
    EXPECT_EQ(line.options.conversation.model, "DAVO");
    EXPECT_TRUE(line.options.conversation.memory.empty());
    EXPECT_TRUE(line.dieWithParent);
    EXPECT_THAT(line.options.conversation.scenarios,
                ElementsAre(Scenario::OverVoltage, Scenario::Full));
    ASSERT_EQ(line.options.faults.size(), 2U);
    EXPECT_EQ(line.options.faults[1].kind, FaultKind::Flip);
    EXPECT_EQ(line.options.conversation.readingsPerSecond, 2.5);
}

TEST(CommandLine, SaysWhatIsWrong) {
    EXPECT_EQ(Parse({}).error, "--link is missing");
    EXPECT_EQ(Parse({"--link"}).error, "bad or missing value of --link");
    EXPECT_EQ(Parse({"--lnik", "x"}).error, "unknown option: --lnik");
    for (const char* option :
         {"--seed", "--memory", "--scenario", "--fault", "--readings-per-second"}) {
        EXPECT_EQ(Parse({"--link", "x", option, "?"}).error,
                  std::string("bad or missing value of ") + option);
    }
    EXPECT_EQ(Parse({"--link", "x", "--scenario", "full,"}).error,
              "bad or missing value of --scenario");
    EXPECT_EQ(Parse({"--link", "x", "--memory", "1000"}).error, "bad or missing value of --memory");
    EXPECT_EQ(Parse({"--help"}).error, "");
}

// Starts the program and waits for its ready line.
std::string Start(QProcess& process, const QStringList& arguments) {
    process.start(QStringLiteral(DAVO_INSTRUMENT_PROGRAM), arguments);
    EXPECT_TRUE(process.waitForReadyRead(kPatienceMs));
    return process.readLine().toStdString();
}

TEST(Program, SaysWhenItIsReadyAndEndsCleanlyOnTerm) {
    const TemporaryFolder folder;
    const std::string link = folder.Path("davo").toStdString();
    QProcess process;
    EXPECT_EQ(Start(process, {u"--link"_s, folder.Path("davo"), u"--seed"_s, u"42"_s}),
              "ready " + link + " seed 42\n");
    {
        DeviceClient pc(link);
        pc.Send("B");
        EXPECT_EQ(pc.Until("\r\n"), "RDY\r\n");
    }
    process.terminate();
    ASSERT_TRUE(process.waitForFinished(kPatienceMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_FALSE(LinkExists(link));
}

TEST(Program, RefusesABadCommandLine) {
    QProcess process;
    process.start(QStringLiteral(DAVO_INSTRUMENT_PROGRAM), {u"--nonsense"_s});
    ASSERT_TRUE(process.waitForFinished(kPatienceMs));
    EXPECT_EQ(process.exitCode(), 2);
    EXPECT_THAT(process.readAllStandardError().toStdString(),
                HasSubstr("unknown option: --nonsense"));
}

TEST(Program, TellsThatTheLinkCannotBeMade) {
    QProcess process;
    process.start(QStringLiteral(DAVO_INSTRUMENT_PROGRAM), {u"--link"_s, u"/nowhere/davo"_s});
    ASSERT_TRUE(process.waitForFinished(kPatienceMs));
    EXPECT_EQ(process.exitCode(), 1);
}

TEST(Program, EndsWithItsParent) {
    const TemporaryFolder folder;
    const std::string link = folder.Path("davo").toStdString();
    // A shell in between, that is killed so that it cannot clean up.
    QProcess shell;
    shell.start(u"/bin/sh"_s, {u"-c"_s, u"\"$0\" --link \"$1\" --die-with-parent & wait"_s,
                               QStringLiteral(DAVO_INSTRUMENT_PROGRAM), folder.Path("davo")});
    ASSERT_TRUE(shell.waitForReadyRead(kPatienceMs));
    const DeviceClient pc(link);
    shell.kill();
    ASSERT_TRUE(shell.waitForFinished(kPatienceMs));
    EXPECT_TRUE(pc.HungUp());
}

}  // namespace
}  // namespace davo::test
