// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/load_stored.h"

#include <algorithm>
#include <exception>
#include <string>

#include "common/files.h"
#include "reports/template_file.h"

namespace davo {

namespace {

// Runs step; what stops it is added to troubles under caption.
template <class Step>
void Attempt(std::vector<Notice>& troubles, const QString& caption, const Step& step) {
    try {
        step();
    } catch (const std::exception& error) {
        troubles.push_back({caption, QString::fromUtf8(error.what())});
    }
}

}  // namespace

std::vector<Notice> LoadStored(ProgramState& state, const ProgramServices& services) {
    std::vector<Notice> troubles;
    Attempt(troubles, QStringLiteral("Folder missing"), [&] {
        const QString& scratch = services.places.scratchFolder;
        if (!FolderExists(scratch)) CreateFolder(scratch);
    });
    const SettingsRead read = ReadSettings(services.store, services.places);
    const QString notUsable = QStringLiteral("Setting not usable");
    Attempt(troubles, notUsable, [&] {
        const QString line = services.store.UnreadableLine();
        if (line.isEmpty()) return;
        troubles.push_back({notUsable, QStringLiteral("%1 cannot be read. The program goes on "
                                                      "with the lines that it can read.")
                                           .arg(line)});
    });
    state.settings = read.settings;
    for (const RunTimeError& error : read.errors) {
        troubles.push_back(
            {notUsable, QStringLiteral("A stored setting or its folder cannot be used. The "
                                       "program goes on with what is usual.\r\n") +
                            QString::fromUtf8(error.what())});
    }
    if (services.reports != nullptr && FolderExists(state.settings.excelPath)) {
        Attempt(troubles, QStringLiteral("Report template missing"),
                [&] { PutTemplate(state.settings.excelPath); });
    }
    for (int i = 0; i < kHeaderFieldCount; ++i)
        state.header.Field(i) = std::string(kHeaderFieldWidth, ' ');
    Attempt(troubles, QStringLiteral("Header not read"),
            [&] { LoadHeaderFile(state.header, state.settings.dataPath); });
    return troubles;
}

std::vector<UnsavedSession> UnsavedSessionsIn(const QString& folder,
                                              std::vector<Notice>& troubles) {
    const QString caption = QStringLiteral("Sessions not listed");
    std::vector<RunTimeError> unreadable;
    std::vector<UnsavedSession> sessions = SetAsideUnsavedSessions(folder, &unreadable);
    std::erase_if(troubles, [&](const Notice& notice) { return notice.caption == caption; });
    for (const RunTimeError& error : unreadable)
        troubles.push_back({caption, QString::fromUtf8(error.what())});
    return sessions;
}

ShellFacts FactsOf(const ProgramState& state, const PortDevices& devices, int listedRecords) {
    ShellFacts facts{GlanceAtLink(state.settings, state.linkState, devices),
                     state.settings.dataPath, state.settings.kneepointType,
                     state.directory.listing};
    facts.records = RowsOfEntries(state.directory.dirEntries, listedRecords);
    for (std::size_t i = 0; i < std::min(facts.records.size(), kNewestRecords); ++i)
        facts.files.push_back(RecordFileOf(state.directory, i));
    return facts;
}

}  // namespace davo
