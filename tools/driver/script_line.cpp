// SPDX-License-Identifier: GPL-3.0-or-later
#include "script_line.h"

namespace davo::test {

QStringList ScriptWords(const QString& line) {
    QStringList words;
    QString word;
    bool quoted = false;
    bool inWord = false;
    const QString text = line.trimmed();
    if (text.startsWith(QLatin1Char('#'))) {
        return words;
    }
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (quoted && c == QLatin1Char('\\') && i + 1 < text.size()) {
            const QChar next = text.at(++i);
            word += next == QLatin1Char('n') ? QLatin1Char('\n') : next;
        } else if (c == QLatin1Char('"')) {
            quoted = !quoted;
            inWord = true;
        } else if (c == QLatin1Char(' ') && !quoted) {
            if (inWord) {
                words += word;
            }
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord) {
        words += word;
    }
    return words;
}

}  // namespace davo::test
