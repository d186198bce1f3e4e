// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/paper.h"

#include <algorithm>
#include <array>

#include "reports/page/chart.h"

namespace davo {

Paper PaperOf(const QLocale& locale) {
    using L = QLocale;
    // Those of CLDR's supplemental data whose paper is "US-Letter".
    constexpr std::array kLetter = {L::UnitedStates, L::Canada,    L::Mexico,   L::Philippines,
                                    L::PuertoRico,   L::Chile,     L::Colombia, L::CostaRica,
                                    L::Guatemala,    L::Nicaragua, L::Panama,   L::ElSalvador,
                                    L::Venezuela,    L::Belize};
    const bool letter =
        std::find(kLetter.begin(), kLetter.end(), locale.territory()) != kLetter.end();
    return letter && locale.language() != QLocale::C ? Paper::Letter : Paper::A4;
}

Paper UsualPaper() {
    for (const char* name : {"LC_ALL", "LC_PAPER"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty()) return PaperOf(QLocale(value));
    }
    return PaperOf(QLocale::system());
}

QSizeF SizeOf(Paper paper) {
    return paper == Paper::A4 ? QSizeF(210, 297) : QSizeF(215.9, 279.4);
}

QSizeF ChartSize(Paper paper, std::size_t curves) {
    constexpr double kFrameShare = 0.401;
    constexpr double kOfNumbers = 10;
    const QSizeF page = SizeOf(paper);
    const double wide = page.width() - 2 * kPageMargin;
    const double high = kFrameShare * page.width() * page.height() / (wide - kChartAround.width());
    return {wide, high + kChartAround.height() - (curves > 1 ? kOfNumbers : 0)};
}

}  // namespace davo
