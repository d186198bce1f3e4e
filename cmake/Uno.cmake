# SPDX-License-Identifier: GPL-3.0-or-later
# LibreOffice's C++ interface (UNO): sets DAVO_UNO to whether its SDK is here and, when it is, makes
# the target davo_uno with the generated headers and the client libraries.

set(DAVO_LIBREOFFICE "/usr/lib/libreoffice" CACHE PATH "Where LibreOffice is installed")

set(DAVO_UNO OFF CACHE INTERNAL "LibreOffice can be driven")
if(NOT WIN32
   AND EXISTS "${DAVO_LIBREOFFICE}/sdk/bin/cppumaker"
   AND EXISTS "${DAVO_LIBREOFFICE}/sdk/include/cppuhelper/bootstrap.hxx"
   AND EXISTS "${DAVO_LIBREOFFICE}/program/types/offapi.rdb")
  set(DAVO_UNO ON CACHE INTERNAL "LibreOffice can be driven")
endif()

if(NOT DAVO_UNO AND NOT WIN32)
  message(STATUS "Reports will be .xlsx: no libreoffice-dev in ${DAVO_LIBREOFFICE}")
endif()

if(DAVO_UNO)
  set(headers "${CMAKE_BINARY_DIR}/uno")
  file(MAKE_DIRECTORY "${headers}")
  # All headers: it takes a second, and a chosen few miss the types of exceptions.
  add_custom_command(OUTPUT "${headers}/made"
    COMMAND "${DAVO_LIBREOFFICE}/sdk/bin/cppumaker" -Gc -O "${headers}"
            "${DAVO_LIBREOFFICE}/program/types.rdb" "${DAVO_LIBREOFFICE}/program/types/offapi.rdb"
    COMMAND "${CMAKE_COMMAND}" -E touch "${headers}/made"
    COMMENT "Making the headers of LibreOffice's interface")
  add_custom_target(davo_uno_headers DEPENDS "${headers}/made")
  add_library(davo_uno INTERFACE)
  add_dependencies(davo_uno davo_uno_headers)
  target_include_directories(davo_uno SYSTEM INTERFACE
    "${headers}" "${DAVO_LIBREOFFICE}/sdk/include")
  target_compile_definitions(davo_uno INTERFACE UNX GCC LINUX CPPU_ENV=gcc3)
  target_link_libraries(davo_uno INTERFACE
    uno_cppuhelpergcc3 uno_cppu uno_salhelpergcc3 uno_sal)
  target_link_directories(davo_uno INTERFACE "${DAVO_LIBREOFFICE}/sdk/lib")
  target_link_options(davo_uno INTERFACE
    "-Wl,-rpath,${DAVO_LIBREOFFICE}/program" "-Wl,-rpath-link,${DAVO_LIBREOFFICE}/program")
endif()
