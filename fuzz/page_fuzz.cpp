// SPDX-License-Identifier: GPL-3.0-or-later
// Certificate and page of all records, of any record file: whatever its texts hold, the page has no
// other elements than one whose texts have no sign that HTML knows.
#include "batch/summary_page.h"

#include "common/text.h"
#include "fuzz/fuzzing.h"
#include "reports/page/certificate.h"
#include "reports/page/html.h"
#include "reports/record_facts.h"

namespace {

using namespace davo;
using fuzz::Require;

constexpr std::string_view kSigns = "<>&\"'";

struct Pages {
    std::string certificate;
    std::string summary;
};

Pages PagesOf(const std::string& bytes, const std::string& name) {
    const RecordFacts facts = ParseRecordFacts(bytes, name);
    Pages pages;
    pages.certificate = CertificateAsHtml(CertificateOf(facts, KneeRule::Ieee45), Paper::A4);
    SummaryPage summary(KneeRule::Ieee45, QStringLiteral("/records"));
    const QString path = QStringLiteral("/records/") + FromPage(name) + QStringLiteral(".txt");
    summary.Add(facts, path, {path});
    summary.AddUnread(FromPage(name));
    pages.summary = summary.Html();
    return pages;
}

std::string Plain(std::string text) {
    for (char& c : text) {
        if (kSigns.find(c) != std::string_view::npos) c = 'x';
    }
    return text;
}

auto Tags(const std::string& page) {
    return std::count(page.begin(), page.end(), '<');
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::string name = input.Text().substr(0, 30);
    const std::string bytes = input.Rest();
    // A number may be none without its sign, and the other way round.
    Pages pages;
    Pages plain;
    if (!fuzz::Runs({6, 9, 13, 62}, [&] { pages = PagesOf(bytes, name); })) return 0;
    if (!fuzz::Runs({6, 9, 13, 62}, [&] { plain = PagesOf(Plain(bytes), Plain(name)); })) return 0;
    Require(Tags(pages.certificate) == Tags(plain.certificate), "a certificate's texts are texts");
    Require(Tags(pages.summary) == Tags(plain.summary), "a summary's texts are texts");
    return 0;
}
