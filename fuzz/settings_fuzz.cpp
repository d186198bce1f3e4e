// SPDX-License-Identifier: GPL-3.0-or-later
// The settings' file: any text leaves settings that the program can start with, and settings are
// read as they were written.
#include "common/settings_store.h"

#include "common/files.h"
#include "common/text.h"
#include "fuzz/fuzzing.h"

namespace {

using namespace davo;
using fuzz::Require;

SettingsRead ReadFrom(const Places& places) {
    return ReadSettings(*MakeSettingsStore(places), places);
}

// The store is a file, which QSettings keeps by its path: each has a folder of its own.
void CheckText(const std::string& text) {
    const fuzz::Folder folder;
    const Places places{folder.Path(), folder.Path(), folder.Path()};
    ReplaceFile(folder.Path("davo.ini"), text);
    const auto store = MakeSettingsStore(places);
    const auto [settings, errors] = ReadSettings(*store, places);
    store->UnreadableLine();
    Require(errors.size() <= 3, "an error for a value at most");
    Require(settings.dataPath.endsWith(QDir::separator()), "the data path is a folder's");
    Require(settings.excelPath.endsWith(FolderText(R"(\Shots_Excel\)")), "the reports' path, too");
    Require(settings.sortOrder >= 0 || settings.sortOrder == -1, "a digit, or none");
}

void CheckWritten(fuzz::Input& input) {
    const fuzz::Folder folder;
    const Places places{folder.Path(), folder.Path(), folder.Path()};
    Settings settings;
    settings.comPort = static_cast<std::int16_t>(256 * input.Below(256) + input.Below(256));
    settings.showImpedance = input.Flag();
    settings.sortOrder = static_cast<std::int16_t>(input.Below(2));
    settings.sortDisplay = static_cast<std::int16_t>(input.Below(4));
    settings.kneepointType = QString::fromUtf8(input.Text().c_str());
    settings.dataPath = QStringLiteral("/x") + QString::fromUtf8(input.Text().c_str()) +
                        FolderText(R"(\Shots_Data\)");
    settings.curveLimit = QString::fromUtf8(input.Text().c_str());
    settings.ratioLimit = QString::fromUtf8(input.Text().c_str());
    const auto store = MakeSettingsStore(places);
    WriteSettings(*store, settings);
    const auto [read, errors] = ReadFrom(places);
    Require(errors.empty(), "what was written is no error");
    Require(read.comPort == settings.comPort, "the port");
    Require(read.showImpedance == settings.showImpedance, "the impedance");
    Require(read.sortOrder == settings.sortOrder, "the order");
    Require(read.sortDisplay == settings.sortDisplay, "what it is sorted by");
    Require(read.dataPath == settings.dataPath, "the data path");
    Require(settings.kneepointType.isEmpty() || read.kneepointType == settings.kneepointType ||
                settings.kneepointType.endsWith(QLatin1String("Mode")),
            "the kneepoint");
    Require(read.curveLimit == settings.curveLimit, "the limit of curves");
    Require(read.ratioLimit == settings.ratioLimit, "the limit of ratios");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    CheckWritten(input);
    CheckText(input.Rest());
    return 0;
}
