// SPDX-License-Identifier: GPL-3.0-or-later
// The file utilities over a full folder of records, against the bare operations on the same files.

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "bench/record_text.h"
#include "common/files.h"
#include "common/settings.h"
#include "files/frmCopyFile.h"
#include "files/record_names.h"
#include "records/directory_file.h"

namespace davo {
namespace {

constexpr int kRuns = 9;

// Says yes to everything and enters one name.
class YesPrompts : public Prompts {
  public:
    void Message(const QString& text, const QString&) override {
        if (text.startsWith(QLatin1String("250 of 250 copied to "))) return;
        std::printf("%s\n", text.toStdString().c_str());
        std::exit(1);
    }
    Answer YesNo(const QString&, Answer, const QString&) override { return Answer::Yes; }
    Answer YesNoCancel(const QString&, Answer, const QString&) override { return Answer::Yes; }
    std::optional<QString> Input(const QString&, const QString&, const QString&) override {
        return QStringLiteral("renamed");
    }
    QString SaveFile(const QString&, const QString&, const QString&) override { return {}; }
    QString OpenFile(const QString&, const QString&) override { return {}; }
    QString ChooseFolder(const QString&, const QString&) override { return {}; }
};

class Bench {
  public:
    Bench() {
        settings_.dataPath = Folder("data");
        for (int i = 0; i < kMostListedRecords; ++i) {
            files_.push_back(QStringLiteral("T%1.txt").arg(i));
            texts_.push_back(bench::RecordText(i));
        }
        Fill();
    }

    void Run() {
        const QString target = Folder("disk");
        Compare(
            "copy 250, window and progress, to cp", [&] { Copy(target); },
            [&] { BareCopy(target, ""); }, [&] { Clear(target); });
        // What waiting for the disk takes of it: cp does not, and loses what it copied to a stick
        // that is pulled out too soon.
        Compare(
            "copy 250, window and progress, to cp and sync", [&] { Copy(target); },
            [&] { BareCopy(target, " && sync " + target.toStdString() + "*.txt"); },
            [&] { Clear(target); });
        Compare(
            "delete 250, with the list made anew, to unlink", [&] { Delete(); },
            [&] { BareDelete(); }, [&] { Fill(); });
        Compare(
            "rename 1, to write, flush, rename and unlink", [&] { Rename(); },
            [&] { BareRename(); }, [&] { Fill(); });
    }

  private:
    QString Folder(const char* name) {
        const QString path = folder_.filePath(QLatin1String(name)) + QLatin1Char('/');
        QDir().mkpath(path);
        return path;
    }
    void Fill() {
        Clear(settings_.dataPath);
        for (std::size_t i = 0; i < files_.size(); ++i) {
            QFile file(PathOf(files_[i]));
            if (!file.open(QIODevice::WriteOnly)) std::exit(1);
            file.write(texts_[i].data(), static_cast<qint64>(texts_[i].size()));
        }
    }
    static void Clear(const QString& path) {
        QDir(path).removeRecursively();
        QDir().mkpath(path);
    }
    QString PathOf(const QString& file) const { return settings_.dataPath + file; }

    void Copy(const QString& target) {
        frmCopyFile window(files_, settings_, prompts_);
        window.Form_Load();
        window.resize(900, 500);
        window.show();
        window.findChild<QLineEdit*>(QStringLiteral("txtPath"))->setText(target);
        window.findChild<QPushButton*>(QStringLiteral("cmdOK"))->click();
    }
    void BareCopy(const QString& target, const std::string& after) const {
        const std::string command =
            "cp -p " + settings_.dataPath.toStdString() + "*.txt " + target.toStdString() + after;
        if (std::system(command.c_str()) != 0) std::exit(1);
    }
    void Delete() {
        DeleteRecords(settings_.dataPath, files_, prompts_);
        RebuildDirectory(settings_.dataPath, tables_);
    }
    void BareDelete() const {
        for (const QString& file : files_)
            QFile::remove(PathOf(file));
    }
    void Rename() { RenameRecords(settings_.dataPath, {files_.front()}, prompts_); }
    void BareRename() const {
        const std::string text = ReadWholeFile(PathOf(files_.front()));
        ReplaceFile(PathOf(QStringLiteral("renamed.txt")), text);
        QFile::remove(PathOf(files_.front()));
    }

    static double Milliseconds(const std::function<void()>& operation) {
        const auto began = std::chrono::steady_clock::now();
        operation();
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - began)
            .count();
    }
    // Both by turns, so that what disturbs one disturbs the other.
    static void Compare(const char* what, const std::function<void()>& ours,
                        const std::function<void()>& bare, const std::function<void()>& restore) {
        std::vector<double> taken;
        std::vector<double> reference;
        for (int run = 0; run < kRuns; ++run) {
            taken.push_back(Milliseconds(ours));
            restore();
            reference.push_back(Milliseconds(bare));
            restore();
        }
        std::sort(taken.begin(), taken.end());
        std::sort(reference.begin(), reference.end());
        const double ratio = taken.at(kRuns / 2) / reference.at(kRuns / 2);
        std::printf("%-48s %8.2f ms, bare %8.2f ms, ratio %.2f (medians of %d)\n", what,
                    taken.at(kRuns / 2), reference.at(kRuns / 2), ratio, kRuns);
    }

    QTemporaryDir folder_;
    Settings settings_;
    YesPrompts prompts_;
    DirectoryTables tables_;
    std::vector<QString> files_;
    std::vector<std::string> texts_;
};

}  // namespace
}  // namespace davo

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    davo::Bench().Run();
}
