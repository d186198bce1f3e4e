#include "reports/excel_renderer.h"

namespace davo {

std::unique_ptr<ReportRenderer> MakeExcelRenderer() {
    return nullptr;
}

}  // namespace davo
