// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QStringList>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "reports/excel/automation.h"

// An Excel that answers every member with an object and writes down what it is asked.
namespace davo::test {

// The conversation of one recorded Excel.
struct ExcelRecording {
    QStringList lines;
    std::function<void(const QString&)> written;  // gets every line
    // The number, from 1, of the call that fails; 0: none does. Reads and writes count too.
    int failAt = 0;
    int calls = 0;
    int sheetsMade = 0;
    QStringList templateSheets{QStringLiteral("HEADER")};
    QString version = QStringLiteral("16.0");
    int window = 0;
    bool takesFirstQuotes = false;
};

class RecordedObject : public excel::AutomationObject {
  public:
    RecordedObject(ExcelRecording& recording, QString path)
        : recording_(recording), path_(std::move(path)) {}

    const QString& Path() const { return path_; }

    excel::Value Call(std::string_view member, const excel::Values& arguments) override {
        QStringList texts;
        for (const excel::Value& argument : arguments)
            texts += TextOf(argument);
        const QString name = QString::fromStdString(std::string(member));
        QString called = path_ + QLatin1Char('.') + name;
        if (!texts.isEmpty())
            called += QLatin1Char('(') + texts.join(QStringLiteral(", ")) + QLatin1Char(')');
        Note(called);
        if (name == QLatin1String("Copy") || called.startsWith(QLatin1String("Book.Sheets.Add")))
            ++recording_.sheetsMade;
        if (name == QLatin1String("SaveAs")) Save(std::get<QString>(arguments.at(0)));
        if (const excel::Value known = Known(name); !Is<excel::Missing>(known)) return known;
        return std::make_shared<RecordedObject>(recording_, NameOf(name, called));
    }

    void Set(std::string_view member, const excel::Value& value) override {
        Note(path_ + QLatin1Char('.') + QString::fromStdString(std::string(member)) +
             QStringLiteral(" = ") + TextOf(value));
    }

    // A value as it is in the conversation.
    static QString TextOf(const excel::Value& value) {
        if (Is<excel::Missing>(value)) return QStringLiteral("missing");
        if (const bool* flag = std::get_if<bool>(&value))
            return *flag ? QStringLiteral("true") : QStringLiteral("false");
        if (const int* whole = std::get_if<int>(&value)) return QString::number(*whole);
        if (const double* number = std::get_if<double>(&value)) return QString::number(*number);
        if (const QString* text = std::get_if<QString>(&value)) return Quoted(*text);
        if (const auto* table = std::get_if<excel::Table>(&value)) return TextOf(*table);
        return static_cast<const RecordedObject&>(*std::get<excel::ObjectReference>(value)).Path();
    }

  private:
    template <typename T>
    static bool Is(const excel::Value& value) {
        return std::holds_alternative<T>(value);
    }

    static QString Quoted(QString text) {
        return QLatin1Char('"') + text.replace(QLatin1Char('\n'), QStringLiteral("\\n")) +
               QLatin1Char('"');
    }

    static QString TextOf(const excel::Table& table) {
        QStringList rows;
        for (int row = 0; row < table.rows; ++row) {
            QStringList cells;
            for (int column = 0; column < table.columns; ++column) {
                const auto& cell =
                    table.cells.at(static_cast<std::size_t>(row * table.columns + column));
                cells +=
                    std::visit([](const auto& only) { return TextOf(excel::Value(only)); }, cell);
            }
            rows += cells.join(QStringLiteral(", "));
        }
        return QLatin1Char('{') + rows.join(QStringLiteral("; ")) + QLatin1Char('}');
    }

    void Note(const QString& line) {
        ++recording_.calls;
        recording_.lines += line;
        if (recording_.written) recording_.written(line);
        if (recording_.calls == recording_.failAt) {
            throw RunTimeError(ErrorNumber::Automation,
                               "call " + std::to_string(recording_.calls) + " fails");
        }
    }

    // Short names for the objects that everything else hangs on.
    QString NameOf(const QString& member, const QString& called) const {
        if (path_ == QLatin1String("Application.Workbooks") && member == QLatin1String("Open"))
            return QStringLiteral("Book");
        if (path_ == QLatin1String("Book.Charts")) return QStringLiteral("Chart");
        // What is looked up after the model was copied are the sheets that were made.
        const bool isMade = recording_.sheetsMade > 0 && path_ == QLatin1String("Book.Sheets") &&
                            member == QLatin1String("Item") && !called.contains(QLatin1Char('"'));
        return isMade ? QStringLiteral("Sheet%1").arg(recording_.sheetsMade) : called;
    }

    // What Excel would say of a book with the template's sheets.
    excel::Value Known(const QString& member) const {
        if (member == QLatin1String("Version")) return recording_.version;
        if (member == QLatin1String("Hwnd")) return recording_.window;
        if (member == QLatin1String("Left")) return 484.5;
        if (member == QLatin1String("PaperSize")) return 9;  // A4
        if (member == QLatin1String("Top")) return 522.75;
        if (member == QLatin1String("Index"))
            return static_cast<int>(recording_.templateSheets.size());
        if (member == QLatin1String("Name")) return NameOfSheet();
        if (member == QLatin1String("Value2"))
            return recording_.takesFirstQuotes ? QStringLiteral("without") : QStringLiteral("'70s");
        if (member != QLatin1String("Count")) return excel::Missing{};
        if (path_ == QLatin1String("Book.Sheets"))
            return static_cast<int>(recording_.templateSheets.size());
        return path_.endsWith(QLatin1String("SeriesCollection")) ? 2 : 1;
    }

    // Of "Book.Sheets.Item(1)".
    QString NameOfSheet() const {
        const QString number = path_.section(QLatin1Char('('), 1).chopped(1);
        return recording_.templateSheets.value(number.toInt() - 1);
    }

    static void Save(const QString& path) {
        QString here = path;
        QFile file(here.replace(QLatin1Char('\\'), QLatin1Char('/')));
        if (!file.open(QIODevice::WriteOnly) || file.write("a workbook") < 0)
            throw std::runtime_error("cannot write " + path.toStdString());
    }

    ExcelRecording& recording_;
    const QString path_;
};

}  // namespace davo::test
