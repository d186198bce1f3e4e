# SPDX-License-Identifier: GPL-3.0-or-later
# How this house makes libraries, tests and benchmarks, in one place.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(WIN32)
  set(DAVO_PLATFORM windows)
else()
  set(DAVO_PLATFORM linux)
endif()

# All compiler flags of our own code. The presets make warnings errors.
add_library(davo_flags INTERFACE)
target_compile_options(davo_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
  # What is compiled once for libraries and programs fits both; Qt 6.4 asks for it itself, 6.8 does not.
  $<$<NOT:$<BOOL:${WIN32}>>:-fPIC>)
target_compile_definitions(davo_flags INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_include_directories(davo_flags INTERFACE "${CMAKE_SOURCE_DIR}/src")

# Line tables are what a stack trace needs. Nobody waits for a test's own code, so that it is compiled
# as quickly as can be; what it tests is compiled as it is shipped.
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g1 -DNDEBUG")
set(DAVO_TEST_OPTIONS "$<$<CONFIG:RelWithDebInfo>:-O0>")
# Anonymous namespaces of a folder's sources are then one.
option(DAVO_UNITY "Compile the sources of a folder as one" ON)

option(DAVO_SANITIZE "Address and undefined-behaviour sanitizers" OFF)
option(DAVO_COVERAGE "Coverage counters" OFF)
option(DAVO_FUZZ "Build the fuzzers (clang only)" OFF)
if(DAVO_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(DAVO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()
if(DAVO_COVERAGE)
  add_link_options(--coverage)
endif()

# davo_count_lines(<target>): what is shipped counts which of its lines run; tools/coverage.py reads that.
function(davo_count_lines target)
  if(DAVO_COVERAGE AND CMAKE_CURRENT_SOURCE_DIR MATCHES "^${CMAKE_SOURCE_DIR}/src/")
    target_compile_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# davo_join(<target>): compiles its sources of one folder as one, since most of the time goes
# into what they include.
function(davo_join target)
  if(NOT DAVO_UNITY)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    cmake_path(GET source PARENT_PATH folder)
    if(NOT folder MATCHES "^/")
      set_source_files_properties("${source}" PROPERTIES UNITY_GROUP "all_${folder}")
    endif()
  endforeach()
endfunction()

# davo_library(<name> SOURCES ... [PLATFORM ...] [LINKS ...] [MOC])
# PLATFORM names files without "_<platform>.cpp": the one for the target is chosen here.
function(davo_library name)
  cmake_parse_arguments(ARG "MOC" "" "SOURCES;PLATFORM;LINKS" ${ARGN})
  foreach(stem IN LISTS ARG_PLATFORM)
    list(APPEND ARG_SOURCES "${stem}_${DAVO_PLATFORM}.cpp")
  endforeach()
  add_library(${name} STATIC ${ARG_SOURCES})
  davo_join(${name})
  davo_count_lines(${name})
  target_link_libraries(${name} PUBLIC davo_flags ${ARG_LINKS})
  if("Qt6::Widgets" IN_LIST ARG_LINKS)
    davo_use_headers(${name} ui)
  else()
    davo_use_headers(${name} core)
  endif()
  set_target_properties(${name} PROPERTIES AUTOMOC ${ARG_MOC} POSITION_INDEPENDENT_CODE ON)
endfunction()

# davo_test(<name> SOURCES ... [LINKS ...] [WIDGETS] [LABELS ...] [TIMEOUT seconds] [SERIAL]
#           [NOT_IN_WINE pattern ...] [ALONE source ...])
# ALONE names sources that cannot be compiled as one with the others.
# NOT_IN_WINE names tests, as --gtest_filter does, that cannot run there; docs/maintainers/windows.md
# has the reasons that count.
# One executable, one CTest entry. Each runs offscreen with a home and configuration folder of
# its own, so that no test reads or writes the user's settings.
function(davo_test name)
  cmake_parse_arguments(ARG "WIDGETS;SERIAL" "TIMEOUT" "SOURCES;LINKS;LABELS;NOT_IN_WINE;ALONE" ${ARGN})
  # What is given more time begins first, so that it is not what the others' end waits for, and has
  # more of the machine: who waits for a window beside it does so for the clock.
  set(cost 0)
  set(processors 1)
  if(ARG_TIMEOUT)
    set(cost ${ARG_TIMEOUT})
    set(processors 3)
  else()
    set(ARG_TIMEOUT 600)
  endif()
  add_executable(${name} ${ARG_SOURCES} ${ARG_ALONE})
  if(ARG_WIDGETS)
    set(main davo_test_main_widgets)
    davo_use_headers(${name} test_ui)
  else()
    set(main davo_test_main_core)
    davo_use_headers(${name} test_core)
  endif()
  if(DAVO_UNITY)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 0)
    if(ARG_ALONE)
      set_source_files_properties(${ARG_ALONE} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    endif()
  endif()
  target_link_libraries(${name} PRIVATE davo_flags ${ARG_LINKS} ${main} GTest::gmock GTest::gtest)
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_compile_options(${name} PRIVATE ${DAVO_TEST_OPTIONS})
  target_compile_definitions(${name} PRIVATE DAVO_TESTS_FOLDER="${CMAKE_SOURCE_DIR}/tests")
  set(filter)
  if(WIN32 AND ARG_NOT_IN_WINE)
    list(JOIN ARG_NOT_IN_WINE ":" filter)
    set(filter "--gtest_filter=-${filter}")
  endif()
  add_test(NAME ${name} COMMAND ${name} ${filter})
  set(home "${CMAKE_BINARY_DIR}/homes/${name}")
  file(MAKE_DIRECTORY "${home}")
  set(environment "QT_QPA_PLATFORM=offscreen")
  if(DAVO_COVERAGE)
    # What a program without rights or a disk could not count is no message of it.
    list(APPEND environment "GCOV_ERROR_FILE=/dev/null")
  endif()
  if(NOT WIN32)
    # In Wine the whole prefix is the tests' own.
    list(APPEND environment "HOME=${home}" "XDG_CONFIG_HOME=${home}/config" "XDG_DATA_HOME=${home}/data"
      "XDG_RUNTIME_DIR=${home}")
  endif()
  set_tests_properties(${name} PROPERTIES
    TIMEOUT ${ARG_TIMEOUT} COST ${cost} PROCESSORS ${processors} ENVIRONMENT "${environment}")
  if(ARG_LABELS)
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}")
  endif()
  if(ARG_SERIAL)
    set_tests_properties(${name} PROPERTIES RUN_SERIAL ON)
  endif()
endfunction()

# davo_test_at_150_percent(name test screen filter): once more those of test's cases that filter
# picks, at 150 % on the screen of tools/driver/<screen>.json, where texts are cut first.
function(davo_test_at_150_percent name test screen filter)
  add_test(NAME ${name} COMMAND ${test} "--gtest_filter=${filter}")
  get_test_property(${test} ENVIRONMENT environment)
  list(FILTER environment EXCLUDE REGEX "^QT_QPA_PLATFORM=")
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "${environment};QT_SCALE_FACTOR=1.5;QT_QPA_PLATFORM=offscreen:configfile=${CMAKE_SOURCE_DIR}/tools/driver/${screen}.json")
endfunction()

# davo_bench(<subject> [LINKS ...]): the benchmark davo_bench_<subject> of <subject>_bench.cpp.
function(davo_bench subject)
  cmake_parse_arguments(ARG "" "" "LINKS" ${ARGN})
  set(name davo_bench_${subject})
  add_executable(${name} ${subject}_bench.cpp)
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE davo_flags ${ARG_LINKS} benchmark::benchmark)
endfunction()
