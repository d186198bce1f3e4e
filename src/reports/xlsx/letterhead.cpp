// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/xlsx/letterhead.h"

#include <QFile>
#include <QtEndian>
#include <string>

#include "reports/xlsx/text.h"

namespace davo {

namespace {

constexpr lxw_color_t kBlue = 0x1A2F42;
constexpr lxw_color_t kSilver = 0xC0C0C0;
constexpr double kPictureWidth = 160;  // points

// A PNG's width in pixels is behind its signature and the head of its first part.
quint32 PngWidth(const QByteArray& png) {
    constexpr qsizetype kWidthAt = 16;
    return qFromBigEndian<quint32>(png.constData() + kWidthAt);
}

}  // namespace

std::vector<LetterheadLine> LetterheadLines(const Sheet& sheet) {
    const LetterheadLine head{RangeOf("A2:D2"), LXW_BORDER_MEDIUM, kBlue};
    if (!IsTestSheet(sheet)) return {head};
    return {head,
            {RangeOf("A4:D16"), LXW_BORDER_HAIR, kSilver},
            {RangeOf("A18:D18"), LXW_BORDER_THIN, kBlue}};
}

QByteArray LetterheadPicture() {
    QFile file(QStringLiteral(":/davo/report/letterhead.png"));
    file.open(QIODevice::ReadOnly);  // it is part of the program
    return file.readAll();
}

void PutLetterheadPicture(lxw_worksheet* sheet, const QByteArray& picture) {
    std::string name = "Letterhead";
    lxw_image_options options{};
    options.x_offset = 3;  // pixels
    options.y_offset = 4;
    options.x_scale = kPictureWidth * kXlsxPixelsPerPoint / PngWidth(picture);
    options.y_scale = options.x_scale;
    options.description = name.data();
    RequireXlsx(worksheet_insert_image_buffer_opt(
        sheet, 0, 0, reinterpret_cast<const unsigned char*>(picture.constData()),
        static_cast<std::size_t>(picture.size()), &options));
}

}  // namespace davo
