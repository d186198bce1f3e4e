// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/pictures/golden.h"

#include <QFile>
#include <QImage>
#include <QSet>
#include <algorithm>
#include <stdexcept>

#include "tools/pictures/difference.h"

namespace davo::test {
namespace {

const QString kEnd = QStringLiteral(".png");

void SavePicture(const QImage& image, const QString& path) {
    // The smallest file there is.
    constexpr int kQuality = 0;
    if (!image.save(path, "PNG", kQuality)) throw std::runtime_error(path.toStdString());
}

// The picture with its colours in steps that no comparison sees, and with a byte a pixel where
// these are few enough: a quarter of the size.
QImage Packed(const QImage& picture) {
    constexpr int kStep = 8;
    constexpr int kMostColours = 256;
    const auto rounded = [](int value) {
        return std::min((value + kStep / 2) / kStep * kStep, 255);
    };
    QImage image = picture.convertToFormat(QImage::Format_RGB32);
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            line[x] =
                qRgb(rounded(qRed(line[x])), rounded(qGreen(line[x])), rounded(qBlue(line[x])));
            colours.insert(line[x]);
        }
    }
    if (colours.size() > kMostColours) return image;
    QList<QRgb> table(colours.begin(), colours.end());
    std::sort(table.begin(), table.end());
    return image.convertToFormat(QImage::Format_Indexed8, table, Qt::ThresholdDither);
}

QString PageOf(const QStringList& pictures) {
    QString page = QStringLiteral(
        "<!doctype html><meta charset=\"utf-8\"><title>Pictures that differ</title>"
        "<style>img{max-width:32%;border:1px solid}</style>"
        "<p>Kept, made, and what differs: %1 pictures.</p>\n");
    page = page.arg(pictures.size());
    for (const QString& name : pictures) {
        page += QStringLiteral("<h2>%1</h2>\n").arg(name);
        for (const char* which : {"-kept", "", "-difference"})
            page += QStringLiteral("<img src=\"%1%2.png\">\n").arg(name, QLatin1String(which));
    }
    return page;
}

void WritePage(const QString& path, const QString& page) {
    QFile file(path);
    const QByteArray bytes = page.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error(path.toStdString());
}

}  // namespace

QStringList KeptSets(const QDir& folder) {
    return folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
}

QStringList KeptPictures(const QDir& folder, const QString& set) {
    QStringList names = QDir(folder.filePath(set)).entryList({u'*' + kEnd}, QDir::Files);
    names.replaceInStrings(kEnd, QString());
    return names;
}

QStringList DifferentPictures(const QDir& kept, const QDir& made) {
    QStringList different;
    for (const QString& set : KeptSets(kept)) {
        for (const QString& name : KeptPictures(kept, set)) {
            const QString picture = set + u'/' + name;
            const QImage before(kept.filePath(picture + kEnd));
            const QImage now(made.filePath(picture + kEnd));
            if (!now.isNull() && DifferentPlaces(before, now).empty()) continue;
            different += picture;
            SavePicture(MarkedDifference(before, now),
                        made.filePath(picture + QStringLiteral("-difference") + kEnd));
            if (!before.isNull())
                SavePicture(before, made.filePath(picture + QStringLiteral("-kept") + kEnd));
        }
    }
    WritePage(made.filePath(QStringLiteral("index.html")), PageOf(different));
    return different;
}

void RenewPictures(const QDir& kept, const QDir& made, const QStringList& pictures) {
    for (const QString& picture : pictures) {
        const QImage image(made.filePath(picture + kEnd));
        if (image.isNull()) throw std::runtime_error("not made: " + picture.toStdString());
        const QImage packed = Packed(image);
        if (!DifferentPlaces(packed, image).empty())
            throw std::runtime_error("packed is not the same: " + picture.toStdString());
        SavePicture(packed, kept.filePath(picture + kEnd));
    }
}

}  // namespace davo::test
