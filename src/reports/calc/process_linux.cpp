// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QUrl>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace davo {

namespace {

using namespace std::chrono_literals;

// What LibreOffice ends with when it wants to be started anew with the profile that it has made.
constexpr int kExitForRestart = 81;
constexpr const char* kFolderPrefix = "calc-";

QString CacheFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/davo/");
}

bool IsAlive(pid_t pid) {
    return ::kill(pid, 0) == 0 || errno == EPERM;
}

QString ProfileUrl(const QString& folder) {
    return QUrl::fromLocalFile(folder + QStringLiteral("profile")).toString(QUrl::FullyEncoded);
}

// The pipe by which LibreOffice knows that a profile is in use: the MD5 of the profile's URL in
// UTF-16, each byte in hexadecimal without a leading zero.
QString GuardPipeName(const QString& profileUrl) {
    const QByteArray text(reinterpret_cast<const char*>(profileUrl.utf16()),
                          profileUrl.size() * static_cast<qsizetype>(sizeof(char16_t)));
    QString name = QStringLiteral("SingleOfficeIPC_");
    for (const char byte : QCryptographicHash::hash(text, QCryptographicHash::Md5))
        name += QString::number(static_cast<unsigned char>(byte), 16);
    return name;
}

QString PipeNameOf(const QString& folder) {
    return QStringLiteral("davo-") + QDir(folder).dirName();
}

// A process that was killed leaves its folder and its pipes.
void RemoveTracesOf(const QString& folder) {
    for (const QString& name : {PipeNameOf(folder), GuardPipeName(ProfileUrl(folder))}) {
        QFile::remove(QStringLiteral("/tmp/OSL_PIPE_") + QString::number(::getuid()) +
                      QLatin1Char('_') + name);
    }
    QDir(folder).removeRecursively();
}

// The folders of programs that were killed: they have the number of a process that is no more.
void RemoveOldFolders() {
    const QDir cache(CacheFolder());
    const QString prefix = QLatin1String(kFolderPrefix);
    for (const QString& name : cache.entryList({prefix + QLatin1Char('*')}, QDir::Dirs)) {
        const int owner = name.mid(prefix.size()).section(QLatin1Char('-'), 0, 0).toInt();
        if (owner > 0 && !IsAlive(owner)) RemoveTracesOf(cache.filePath(name) + QLatin1Char('/'));
    }
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Ours, but with a language of its own, so that number formats do not depend on the user's, and
// with its temporary files in folder.
std::vector<std::string> Environment(const QString& folder) {
    std::vector<std::string> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const bool isOurs = text.starts_with("LC_") || text.starts_with("LANG") ||
                            text.starts_with("TMPDIR=") || text.starts_with("URE_") ||
                            text.starts_with("LD_PRELOAD=") || text.starts_with("SAL_");
        if (!isOurs) environment.emplace_back(text);
    }
    environment.emplace_back("LC_ALL=C.UTF-8");
    environment.emplace_back("GSETTINGS_BACKEND=memory");
    environment.emplace_back("SAL_USE_VCLPLUGIN=svp");
    environment.push_back("TMPDIR=" + QFile::encodeName(folder).toStdString());
    return environment;
}

// In the new process, between fork and exec: only calls that are safe there.
[[noreturn]] void BecomeCalc(const char* program, char** arguments, char** environment,
                             pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(1);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    ::setpgid(0, 0);  // Ctrl+C in a terminal is for the program alone
    const int null = ::open("/dev/null", O_RDWR);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(null, standard);
    ::close_range(STDERR_FILENO + 1, ~0U, 0);  // the serial port is not its business
    ::execve(program, arguments, environment);
    ::_exit(127);
}

}  // namespace

CalcProcess::CalcProcess(const QString& programFolder)
    : programFolder_(programFolder),
      keeper_([this](const std::stop_token& stop) { LookAfter(stop); }) {}

CalcProcess::~CalcProcess() {
    keeper_.request_stop();
    keeper_.join();
}

void CalcProcess::Start() {
    const std::scoped_lock lock(mutex_);
    if (isWanted_) return;
    isWanted_ = isNews_ = true;
    changed_.notify_all();
}

bool CalcProcess::IsRunning() const {
    const std::scoped_lock lock(mutex_);
    return isWanted_;
}

void CalcProcess::EndAt(std::optional<std::chrono::steady_clock::time_point> moment) {
    const std::scoped_lock lock(mutex_);
    endAt_ = moment;
}

void CalcProcess::Kill() {
    std::unique_lock lock(mutex_);
    if (!isWanted_) return;
    mustEnd_ = isNews_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !isWanted_ || !mustEnd_; });
}

bool CalcProcess::WaitForEnd(std::chrono::milliseconds patience) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [this] { return !isWanted_; });
}

QString CalcProcess::PipeName() const {
    const std::scoped_lock lock(mutex_);
    return pipeName_;
}

QString CalcProcess::ScratchFolder() const {
    const std::scoped_lock lock(mutex_);
    return folder_ + QStringLiteral("files/");
}

void CalcProcess::LookAfter(const std::stop_token& stop) {
    constexpr auto kLook = 20ms;
    std::unique_lock lock(mutex_);
    while (!stop.stop_requested()) {
        if (isWanted_ && pid_ == 0) {
            mayRelaunch_ = true;
            MakeFolder();
            Launch();
        }
        const bool isLate = endAt_ && std::chrono::steady_clock::now() >= *endAt_;
        if (pid_ > 0 && (mustEnd_ || isLate)) {
            ::kill(pid_, SIGKILL);
            SeeWhetherItEnded(true);
        } else {
            SeeWhetherItEnded(false);
        }
        isNews_ = false;
        const auto isNews = [this] { return isNews_; };
        if (pid_ > 0) {
            changed_.wait_for(lock, stop, kLook, isNews);
        } else {
            changed_.wait(lock, stop, isNews);
        }
    }
    if (pid_ > 0) {
        mayRelaunch_ = false;
        ::kill(pid_, SIGKILL);
        SeeWhetherItEnded(true);
    }
}

void CalcProcess::MakeFolder() {
    RemoveOldFolders();
    ++launches_;
    const QString name = QString::number(::getpid()) + QLatin1Char('-') +
                         QString::number(launches_) + QLatin1Char('-') +
                         QString::number(reinterpret_cast<quintptr>(this) >> 4U, 16);
    folder_ = CacheFolder() + QLatin1String(kFolderPrefix) + name + QLatin1Char('/');
    pipeName_ = PipeNameOf(folder_);
    // Without the folder the process does not come up, and that is told where it is waited for.
    QDir().mkpath(folder_ + QStringLiteral("files"));
    QDir().mkpath(folder_ + QStringLiteral("temporary"));
}

void CalcProcess::Launch() {
    std::vector<std::string> arguments = {
        QFile::encodeName(programFolder_ + QStringLiteral("/soffice.bin")).toStdString(),
        "--headless",
        "--invisible",
        "--norestore",
        "--nologo",
        "--nodefault",
        "--nofirststartwizard",
        "--nolockcheck",
        "-env:UserInstallation=" + ProfileUrl(folder_).toStdString(),
        "--accept=pipe,name=" + pipeName_.toStdString() + ";urp;"};
    std::vector<std::string> environment = Environment(folder_ + QStringLiteral("temporary"));
    const std::vector<char*> argumentPointers = Pointers(arguments);
    const std::vector<char*> environmentPointers = Pointers(environment);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0) {
        BecomeCalc(arguments.front().c_str(), const_cast<char**>(argumentPointers.data()),
                   const_cast<char**>(environmentPointers.data()), parent);
    }
    if (child > 0) {
        pid_ = child;
    } else {
        isWanted_ = false;
        changed_.notify_all();
    }
}

void CalcProcess::SeeWhetherItEnded(bool wait) {
    if (pid_ == 0) return;
    int status = 0;
    pid_t ended = 0;
    do {
        ended = ::waitpid(pid_, &status, wait ? 0 : WNOHANG);
    } while (ended < 0 && errno == EINTR);
    if (ended == 0) return;
    pid_ = 0;
    const bool wantsRestart =
        ended > 0 && WIFEXITED(status) && WEXITSTATUS(status) == kExitForRestart;
    if (wantsRestart && mayRelaunch_ && !mustEnd_) {
        mayRelaunch_ = false;
        return Launch();
    }
    RemoveTracesOf(folder_);
    isWanted_ = mustEnd_ = false;
    endAt_.reset();
    changed_.notify_all();
}

}  // namespace davo
