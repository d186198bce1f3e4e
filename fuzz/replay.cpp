// SPDX-License-Identifier: GPL-3.0-or-later
// What libFuzzer is to a fuzzer, without clang: hands it the files of the folders that are given,
// and the empty input. A fuzzer that finds something ends the program.

#include <QDir>
#include <QFile>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        const QDir folder(QString::fromLocal8Bit(argv[i]));
        for (const QString& name : folder.entryList(QDir::Files, QDir::Name)) {
            QFile file(folder.filePath(name));
            if (!file.open(QIODevice::ReadOnly)) return 2;
            const QByteArray bytes = file.readAll();
            std::printf("%s\n", file.fileName().toLocal8Bit().constData());
            std::fflush(stdout);
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                   static_cast<std::size_t>(bytes.size()));
            ++inputs;
        }
    }
    LLVMFuzzerTestOneInput(nullptr, 0);
    std::printf("%d inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}
