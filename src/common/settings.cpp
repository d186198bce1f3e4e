// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/settings.h"

#include "common/files.h"
#include "common/numbers.h"

namespace davo {

namespace {

// Where a value is in the store. Three of the five have an application name of their own:
// settings that exist are found only so.
struct Key {
    const char* application;
    const char* section;
    const char* value;
};

constexpr Key kKneepointType = {"DAVO", "KPTYPE", "KPTYPEVAL"};
constexpr Key kComPort = {"DAVO", "COMPORT", "COMPORTVAL"};
constexpr Key kImpedance = {"IMPEDANCE", "IMP", "IMPVAL"};
constexpr Key kSortValues = {"SORTVALUES", "SORT", "SORTVAL"};
constexpr Key kDataPath = {"DATAPATH", "PATH", "PATHVAL"};
constexpr Key kCurveLimit = {"COMPARE", "VOLTAGE", "LIMIT"};
constexpr Key kRatioLimit = {"COMPARE", "RATIO", "LIMIT"};

constexpr const char* kDataRule = R"(\Shots_Data\)";
constexpr const char* kExcelRule = R"(\Shots_Excel\)";

QString ReadText(const SettingsStore& store, const Key& key) {
    return store.Read(QLatin1String(key.application), QLatin1String(key.section),
                      QLatin1String(key.value));
}

void WriteText(SettingsStore& store, const Key& key, const QString& text) {
    store.Write(QLatin1String(key.application), QLatin1String(key.section),
                QLatin1String(key.value), text);
}

// The spellings that end in "Mode" are older ones: read, never written.
QString KneepointTypeOf(const QString& text) {
    if (text.isEmpty() || text == QLatin1String("ASA 10% V -->50% I Degree Mode"))
        return QString::fromLatin1(kKneeAsa);
    if (text == QLatin1String("IEEE 30 Degree Mode")) return QString::fromLatin1(kKneeIeee30);
    if (text == QLatin1String("IEEE 45 Degree Mode")) return QString::fromLatin1(kKneeIeee45);
    return text;
}

std::int16_t ComPortOf(const QString& text) {
    if (text.isEmpty()) return 1;
    const auto value = WholeNumericValue(text.toStdString());
    if (!value) throw RunTimeError(ErrorNumber::TypeMismatch, text.toStdString());
    return ToInteger16(*value);
}

// One character only is read: a minus sign gives 0.
std::int16_t SortValueOf(QChar character) {
    return ToInteger16(NumericValue(QString(character).toStdString()));
}

QString Below(QString folder, const char* rule) {
    const QString text = FolderText(rule);
    if (folder.endsWith(text.front())) folder.chop(1);
    return folder + text;
}

// Runs step; what stops it is kept.
template <class Step>
void Attempt(std::vector<RunTimeError>& errors, const Step& step) {
    try {
        step();
    } catch (const RunTimeError& error) {
        errors.push_back(error);
    }
}

void SetPaths(SettingsRead& read, const QString& stored, const Places& places) {
    Settings& settings = read.settings;
    if (!stored.isEmpty()) {
        settings.dataPath = stored;
        if (FileExists(stored) || !ShownPath(stored).endsWith(FolderText(kDataRule))) {
            read.errors.emplace_back(ErrorNumber::PathFileAccess, stored.toStdString());
        }
        // Without it the names of records would be joined to that of the folder.
        const QChar separator = FolderText(kDataRule).front();
        if (!ShownPath(stored).endsWith(separator)) settings.dataPath += separator;
        settings.excelPath = ExcelPathOf(settings.dataPath);
        return;
    }
    settings.dataPath = Below(places.applicationFolder, kDataRule);
    settings.excelPath = Below(places.applicationFolder, kExcelRule);
    for (const QString& folder : {settings.dataPath, settings.excelPath}) {
        Attempt(read.errors, [&] {
            if (!FolderExists(folder)) CreateFolder(folder);
        });
    }
}

}  // namespace

SettingsRead ReadSettings(const SettingsStore& store, const Places& places) {
    SettingsRead read;
    Settings& settings = read.settings;
    settings.kneepointType = KneepointTypeOf(ReadText(store, kKneepointType));
    Attempt(read.errors, [&] { settings.comPort = ComPortOf(ReadText(store, kComPort)); });
    settings.showImpedance = ReadText(store, kImpedance) == QLatin1String("Y");
    const QString sort = ReadText(store, kSortValues);
    if (!sort.isEmpty()) {
        settings.sortOrder = SortValueOf(sort.front());
        settings.sortDisplay = SortValueOf(sort.back());
    }
    SetPaths(read, ReadText(store, kDataPath), places);
    settings.curveLimit = ReadText(store, kCurveLimit);
    settings.ratioLimit = ReadText(store, kRatioLimit);
    return read;
}

void WriteSettings(SettingsStore& store, const Settings& settings) {
    std::vector<RunTimeError> errors;
    const auto write = [&](const Key& key, const QString& text) {
        Attempt(errors, [&] { WriteText(store, key, text); });
    };
    write(kKneepointType, settings.kneepointType);
    write(kComPort, QString::fromStdString(SignedText(settings.comPort)));
    write(kImpedance, QLatin1String(settings.showImpedance ? "Y" : "N"));
    write(kSortValues, QStringLiteral("%1 %2").arg(settings.sortOrder).arg(settings.sortDisplay));
    write(kDataPath, settings.dataPath);
    // Who never compares has no limits in the store.
    for (const auto& [key, text] : {std::pair(kCurveLimit, settings.curveLimit),
                                    std::pair(kRatioLimit, settings.ratioLimit)}) {
        if (text != ReadText(store, key)) write(key, text);
    }
    if (!errors.empty()) throw errors.front();
}

QString ExcelPathOf(const QString& dataPath) {
    const auto marker = dataPath.indexOf(FolderText(kDataRule));
    return Below(marker < 0 ? dataPath : dataPath.left(marker), kExcelRule);
}

}  // namespace davo
