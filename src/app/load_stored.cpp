// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/load_stored.h"

#include <algorithm>
#include <exception>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "common/files.h"
#include "common/text.h"
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

// The first count entries, which are in the order of their days, with the latest time of a day
// first: what was just saved is among the first ones also on a day of many.
std::vector<std::size_t> NewestFirst(const std::vector<std::string>& entries, int count) {
    const auto textAt = [&](std::size_t entry, std::size_t begin, std::size_t length) {
        return Middle(entries[entry], entries[entry].find('!') + begin, length);
    };
    std::vector<std::size_t> order(
        std::min(entries.size(), static_cast<std::size_t>(std::max(count, 0))));
    std::iota(order.begin(), order.end(), std::size_t{0});
    for (auto day = order.begin(); day != order.end();) {
        const auto next = std::find_if(day, order.end(), [&](std::size_t entry) {
            return textAt(entry, 1, 8) != textAt(*day, 1, 8);
        });
        std::stable_sort(day, next, [&](std::size_t one, std::size_t other) {
            return textAt(one, 10, 5) > textAt(other, 10, 5);
        });
        day = next;
    }
    return order;
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
        troubles.push_back({notUsable, QStringLiteral("%1 cannot be read. The program uses the "
                                                      "other lines.")
                                           .arg(line)});
    });
    state.settings = read.settings;
    for (const RunTimeError& error : read.errors) {
        troubles.push_back(
            {notUsable, QStringLiteral("A stored setting or its folder cannot be used. The "
                                       "program uses the defaults.\r\n") +
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
    const std::vector<std::string>& entries = state.directory.dirEntries;
    std::vector<std::string> newest;
    for (const std::size_t entry : NewestFirst(entries, listedRecords)) {
        newest.push_back(entries[entry]);
        facts.files.push_back(RecordFileOf(state.directory, entry));
    }
    facts.records = RowsOfEntries(newest, listedRecords);
    facts.files.resize(std::min(facts.records.size(), kNewestRecords));
    return facts;
}

}  // namespace davo
