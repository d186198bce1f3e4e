# SPDX-License-Identifier: GPL-3.0-or-later
# The library that draws curves: the target davo_qcustomplot.
if(NOT TARGET davo_qcustomplot)
  find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets PrintSupport)
  find_path(QCUSTOMPLOT_INCLUDE qcustomplot.h REQUIRED)
  find_library(QCUSTOMPLOT_LIBRARY QCustomPlotQt6 REQUIRED)
  add_library(davo_qcustomplot INTERFACE)
  target_include_directories(davo_qcustomplot SYSTEM INTERFACE "${QCUSTOMPLOT_INCLUDE}")
  target_compile_definitions(davo_qcustomplot INTERFACE QCUSTOMPLOT_USE_LIBRARY)
  target_link_libraries(davo_qcustomplot INTERFACE
    "${QCUSTOMPLOT_LIBRARY}" Qt6::Widgets Qt6::PrintSupport)
endif()
