// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/shown_records.h"

#include <QFileInfo>
#include <algorithm>
#include <utility>

#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "reports/record_texts.h"

namespace davo {

void ShownRecords::Read(std::span<const ShownRecord> wanted) {
    std::map<QString, File> before = std::exchange(files_, {});
    records_.clear();
    tests_.clear();
    for (const ShownRecord& record : wanted)
        ReadFile(record.file, before);
    const auto readable = std::count_if(files_.begin(), files_.end(), [](const auto& file) {
        return file.second.facts.has_value();
    });
    // More columns and curves would keep the window from answering.
    for (const ShownRecord& record : wanted)
        AddTests(record, ShareOfTests(static_cast<std::size_t>(readable)), wanted.size() > 1);
}

void ShownRecords::ReadFile(const QString& path, std::map<QString, File>& before) {
    if (files_.contains(path)) return;
    const QFileInfo info(path);
    File& file = files_[path];
    const auto known = before.find(path);
    if (known != before.end() && known->second.changed == info.lastModified() &&
        known->second.size == info.size() && known->second.facts) {
        file = std::move(known->second);
        file.trouble.clear();
        return;
    }
    file.changed = info.lastModified();
    file.size = info.size();
    try {
        file.facts = ReadRecordFacts(path, 0);
    } catch (const RunTimeError& error) {
        file.trouble = TroubleText(info.completeBaseName(), error);
    }
}

void ShownRecords::AddTests(const ShownRecord& record, std::size_t share, bool named) {
    File& file = files_.at(record.file);
    if (!file.facts) return;
    RecordFacts& facts = *file.facts;
    std::size_t first = 0;
    std::size_t end = std::min(share, facts.tests.size());
    if (record.test) {
        const auto found = std::find_if(
            facts.tests.begin(), facts.tests.end(),
            [&](const RecordTest& test) { return NumericValue(test.testNumber) == record.test; });
        first = static_cast<std::size_t>(found - facts.tests.begin());
        end = std::min(first + 1, facts.tests.size());
    }
    try {
        JudgeTests(facts, first, end);
    } catch (const RunTimeError& error) {
        file.trouble = TroubleText(QFileInfo(record.file).completeBaseName(), error);
        return;
    }
    for (std::size_t i = first; i < end; ++i) {
        const RecordTest& test = facts.tests.at(i);
        QString name = QStringLiteral("Test ") + FromPage(test.testNumber);
        if (named) name.prepend(FromPage(facts.name) + QLatin1Char(' '));
        if (!record.label.isEmpty()) name.prepend(record.label + QStringLiteral(": "));
        tests_.push_back({records_.size(), &test, name});
    }
    records_.push_back(&facts);
}

QString CurveName(const ShownTest& shown) {
    const QString record = FromPage(shown.test->recordName) + QLatin1Char(' ');
    return shown.name.contains(record) ? shown.name : record + shown.name;
}

QStringList ShownRecords::Troubles() const {
    QStringList troubles;
    for (const auto& [path, file] : files_) {
        if (!file.trouble.isEmpty()) troubles += file.trouble;
    }
    return troubles;
}

}  // namespace davo
