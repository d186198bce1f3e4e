# SPDX-License-Identifier: GPL-3.0-or-later
# What nearly every source includes, compiled once for each kind of source: it halves the build. A
# source still includes what it uses; static analysis compiles each without these.
option(DAVO_PRECOMPILED_HEADERS "Compile headers that nearly every source includes once" ON)

set(davo_headers_core <algorithm> <array> <chrono> <cmath> <cstdint> <functional> <map> <memory>
  <optional> <set> <string> <string_view> <utility> <vector>
  <QCoreApplication> <QDateTime> <QDir> <QFile> <QFileInfo> <QString> <QStringList> <QTimer>)
set(davo_headers_ui ${davo_headers_core} <QApplication> <QBoxLayout> <QCheckBox> <QCloseEvent>
  <QComboBox> <QDialog> <QGridLayout> <QGroupBox> <QKeyEvent> <QLabel> <QLineEdit> <QListWidget>
  <QMainWindow> <QMenu> <QMessageBox> <QPainter> <QPushButton> <QScreen> <QStyle>)
set(davo_headers_test <gtest/gtest.h> <gmock/gmock.h> <iostream> <random>)

# davo_make_headers(<name> <headers variable ...> [LINKS ...] [OPTIONS ...])
function(davo_make_headers name)
  cmake_parse_arguments(ARG "" "" "HEADERS;LINKS;OPTIONS" ${ARGN})
  set(nothing "${CMAKE_BINARY_DIR}/${name}.cpp")
  file(CONFIGURE OUTPUT "${nothing}" CONTENT "// Only its precompiled headers are used.\n")
  add_library(${name} OBJECT "${nothing}")
  target_link_libraries(${name} PRIVATE davo_flags ${ARG_LINKS})
  target_compile_options(${name} PRIVATE ${ARG_OPTIONS})
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

# davo_use_headers(<target> core|ui|test_core|test_ui)
function(davo_use_headers target kind)
  if(TARGET davo_headers_${kind})
    target_precompile_headers(${target} REUSE_FROM davo_headers_${kind})
  endif()
endfunction()

# With another compiler nobody has tried it.
if(NOT DAVO_PRECOMPILED_HEADERS OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  return()
endif()
davo_make_headers(davo_headers_core HEADERS ${davo_headers_core} LINKS Qt6::Core)
davo_make_headers(davo_headers_ui HEADERS ${davo_headers_ui} LINKS Qt6::Widgets)
if(DAVO_TESTS)
  find_package(GTest REQUIRED)
  davo_make_headers(davo_headers_test_core
    HEADERS ${davo_headers_core} ${davo_headers_test} <QElapsedTimer> <QProcess>
    LINKS Qt6::Core GTest::gmock GTest::gtest OPTIONS ${DAVO_TEST_OPTIONS})
  davo_make_headers(davo_headers_test_ui
    HEADERS ${davo_headers_ui} ${davo_headers_test} <QMdiArea> <QMenuBar> <QPointer> <QTest> <QTreeWidget>
    LINKS Qt6::Widgets Qt6::Test GTest::gmock GTest::gtest OPTIONS ${DAVO_TEST_OPTIONS})
endif()
