// SPDX-License-Identifier: GPL-3.0-or-later
// Loaded with LD_PRELOAD into a program: counts the calls that change regular files under the
// folders DAVO_KILL_FOLDERS (separated by ':') and kills the program at call number DAVO_KILL_AT,
// before it is made (DAVO_KILL_WHEN=before), after it (after), or, of a write, after the first
// half of its bytes (half). So a test can end a program at every single point at which the disk
// changes. DAVO_KILL_LOG names a file that receives each counted call.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

template <typename F>
F Real(const char* name) {
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

const char* Environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::string FileOf(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        return {};
    }
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    std::string path(4096, '\0');
    const ssize_t length = readlink(link.c_str(), path.data(), path.size());
    path.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return path;
}

bool Counts(std::string_view path) {
    std::string_view folders = Environment("DAVO_KILL_FOLDERS");
    while (!folders.empty()) {
        const std::size_t end = folders.find(':');
        const std::string_view folder = folders.substr(0, end);
        if (!folder.empty() && path.starts_with(folder)) {
            return true;
        }
        folders = end == std::string_view::npos ? std::string_view() : folders.substr(end + 1);
    }
    return false;
}

void Log(long number, const char* call, const std::string& path) {
    const char* log = Environment("DAVO_KILL_LOG");
    if (*log == '\0') {
        return;
    }
    static const auto open = Real<int (*)(const char*, int, ...)>("open");
    static const auto write = Real<ssize_t (*)(int, const void*, std::size_t)>("write");
    const int file = open(log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    const std::string line = std::to_string(number) + ' ' + call + ' ' + path + '\n';
    if (write(file, line.data(), line.size()) < 0) {
        std::perror("kill_at");
    }
    close(file);
}

[[noreturn]] void Die() {
    kill(getpid(), SIGKILL);
    for (;;) {
        pause();
    }
}

enum class When { Never, Before, Half, After };

// Counts a call on path and tells when in it the program is to die.
When Count(const char* call, const std::string& path) {
    static long calls = 0;
    if (!Counts(path)) {
        return When::Never;
    }
    Log(++calls, call, path);
    if (calls != std::atol(Environment("DAVO_KILL_AT"))) {
        return When::Never;
    }
    const std::string_view when = Environment("DAVO_KILL_WHEN");
    return when == "after" ? When::After : when == "half" ? When::Half : When::Before;
}

// Makes a call, or not, around the program's end. half is what a write does instead when it is
// to be torn.
template <typename Call, typename HalfCall>
auto Around(When when, Call call, HalfCall half) {
    if (when == When::Before) {
        Die();
    }
    if (when == When::Half) {
        half();
        Die();
    }
    const auto result = call();
    if (when == When::After) {
        Die();
    }
    return result;
}

template <typename Call>
auto Around(When when, Call call) {
    return Around(when == When::Half ? When::Before : when, call, [] {});
}

std::string FullPath(const char* path) {
    if (path[0] == '/') {
        return path;
    }
    char here[4096];
    return getcwd(here, sizeof here) == nullptr ? path : std::string(here) + '/' + path;
}

mode_t ModeOf(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? static_cast<mode_t>(va_arg(arguments, int)) : 0;
}

template <typename Call>
int Open(const char* path, int flags, Call call) {
    const bool changes = (flags & (O_CREAT | O_TRUNC)) != 0;
    return Around(changes ? Count("open", FullPath(path)) : When::Never, call);
}

}  // namespace

extern "C" {

ssize_t write(int file, const void* bytes, std::size_t count) {
    static const auto real = Real<ssize_t (*)(int, const void*, std::size_t)>("write");
    return Around(
        Count("write", FileOf(file)), [&] { return real(file, bytes, count); },
        [&] { return real(file, bytes, count / 2); });
}

ssize_t pwrite64(int file, const void* bytes, std::size_t count, off64_t offset) {
    static const auto real = Real<ssize_t (*)(int, const void*, std::size_t, off64_t)>("pwrite64");
    return Around(
        Count("pwrite", FileOf(file)), [&] { return real(file, bytes, count, offset); },
        [&] { return real(file, bytes, count / 2, offset); });
}

ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t offset) {
    return pwrite64(file, bytes, count, offset);
}

ssize_t writev(int file, const iovec* parts, int count) {
    static const auto real = Real<ssize_t (*)(int, const iovec*, int)>("writev");
    return Around(
        Count("writev", FileOf(file)), [&] { return real(file, parts, count); },
        [&] { return real(file, parts, count / 2); });
}

int fsync(int file) {
    static const auto real = Real<int (*)(int)>("fsync");
    return Around(Count("fsync", FileOf(file)), [&] { return real(file); });
}

int fdatasync(int file) {
    static const auto real = Real<int (*)(int)>("fdatasync");
    return Around(Count("fdatasync", FileOf(file)), [&] { return real(file); });
}

int ftruncate64(int file, off64_t length) noexcept {
    static const auto real = Real<int (*)(int, off64_t)>("ftruncate64");
    return Around(Count("ftruncate", FileOf(file)), [&] { return real(file, length); });
}

int ftruncate(int file, off_t length) noexcept {
    return ftruncate64(file, length);
}

int rename(const char* from, const char* to) noexcept {
    static const auto real = Real<int (*)(const char*, const char*)>("rename");
    return Around(Count("rename", FullPath(to)), [&] { return real(from, to); });
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    static const auto real = Real<int (*)(int, const char*, int, const char*)>("renameat");
    return Around(Count("renameat", FullPath(to)),
                  [&] { return real(fromFolder, from, toFolder, to); });
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept {
    static const auto real =
        Real<int (*)(int, const char*, int, const char*, unsigned)>("renameat2");
    return Around(Count("renameat2", FullPath(to)),
                  [&] { return real(fromFolder, from, toFolder, to, flags); });
}

int link(const char* from, const char* to) noexcept {
    static const auto real = Real<int (*)(const char*, const char*)>("link");
    return Around(Count("link", FullPath(to)), [&] { return real(from, to); });
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    static const auto real = Real<int (*)(int, const char*, int, const char*, int)>("linkat");
    return Around(Count("linkat", FullPath(to)),
                  [&] { return real(fromFolder, from, toFolder, to, flags); });
}

int unlink(const char* path) noexcept {
    static const auto real = Real<int (*)(const char*)>("unlink");
    return Around(Count("unlink", FullPath(path)), [&] { return real(path); });
}

int unlinkat(int folder, const char* path, int flags) noexcept {
    static const auto real = Real<int (*)(int, const char*, int)>("unlinkat");
    return Around(Count("unlinkat", FullPath(path)), [&] { return real(folder, path, flags); });
}

int remove(const char* path) noexcept {
    static const auto real = Real<int (*)(const char*)>("remove");
    return Around(Count("remove", FullPath(path)), [&] { return real(path); });
}

int open64(const char* path, int flags, ...) {
    static const auto real = Real<int (*)(const char*, int, ...)>("open64");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Open(path, flags, [&] { return real(path, flags, mode); });
}

int open(const char* path, int flags, ...) {
    static const auto real = Real<int (*)(const char*, int, ...)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Open(path, flags, [&] { return real(path, flags, mode); });
}

int openat64(int folder, const char* path, int flags, ...) {
    static const auto real = Real<int (*)(int, const char*, int, ...)>("openat64");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Open(path, flags, [&] { return real(folder, path, flags, mode); });
}

int openat(int folder, const char* path, int flags, ...) {
    static const auto real = Real<int (*)(int, const char*, int, ...)>("openat");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Open(path, flags, [&] { return real(folder, path, flags, mode); });
}

}  // extern "C"
