# SPDX-License-Identifier: GPL-3.0-or-later
# ccache is used where it is found. Paths below the sources count relative to them, so that every
# clone and every build folder of it shares what was compiled once.
find_program(DAVO_CCACHE ccache)
if(DAVO_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # The precompiled headers need the first two: what they define is in the key by their content.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
    CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
    CCACHE_NOHASHDIR=1
    "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}" "${DAVO_CCACHE}")
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Debug information names the sources relative to their folder, too.
  add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}=." -fpch-preprocess)
endif()
