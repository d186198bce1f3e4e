# SPDX-License-Identifier: GPL-3.0-or-later
# What a Windows build has beside the program: its icon, version and manifest, and the libraries that
# must be in its folder. DAVO_WINDOWS_LIBRARIES is what packaging/windows/make-libraries made.
enable_language(RC)
set(DAVO_WINDOWS_LIBRARIES "" CACHE PATH "Qt and the other libraries for Windows")

configure_file("${CMAKE_SOURCE_DIR}/packaging/windows/davo.manifest.in"
  "${CMAKE_BINARY_DIR}/davo.manifest" @ONLY)
configure_file("${CMAKE_SOURCE_DIR}/packaging/windows/davo.rc.in" "${CMAKE_BINARY_DIR}/davo.rc" @ONLY)
target_sources(davo PRIVATE "${CMAKE_BINARY_DIR}/davo.rc")
set_source_files_properties("${CMAKE_BINARY_DIR}/davo.rc" TARGET_DIRECTORY davo PROPERTIES
  OBJECT_DEPENDS "${CMAKE_BINARY_DIR}/davo.manifest;${CMAKE_SOURCE_DIR}/src/app/icon/davo.ico")

# The compiler's own libraries; where they are, it knows.
set(libraries)
foreach(name libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll zlib1.dll)
  execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${name}
    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${file}")
    find_file(DAVO_${name} ${name} PATHS /usr/x86_64-w64-mingw32/lib NO_DEFAULT_PATH REQUIRED
      NO_CMAKE_FIND_ROOT_PATH)
    set(file "${DAVO_${name}}")
  endif()
  list(APPEND libraries "${file}")
endforeach()
foreach(name Qt6Core Qt6Gui Qt6Widgets Qt6PrintSupport libQCustomPlotQt6)
  list(APPEND libraries "${DAVO_WINDOWS_LIBRARIES}/bin/${name}.dll")
endforeach()
set(plugins platforms/qwindows.dll styles/qwindowsvistastyle.dll imageformats/qico.dll)

# In the build folder Qt looks for its plugins beside bin; in the shipped one, in the program's own.
set(run_folder "${CMAKE_BINARY_DIR}/bin")
file(COPY ${libraries} "${DAVO_WINDOWS_LIBRARIES}/bin/Qt6Test.dll" DESTINATION "${run_folder}")
foreach(plugin IN LISTS plugins ITEMS platforms/qoffscreen.dll)
  get_filename_component(kind "${plugin}" DIRECTORY)
  file(COPY "${DAVO_WINDOWS_LIBRARIES}/plugins/${plugin}" DESTINATION "${CMAKE_BINARY_DIR}/plugins/${kind}")
endforeach()

# What tests draw without a screen has these letters.
foreach(face IN ITEMS DejaVuSans DejaVuSans-Bold)
  file(COPY "/usr/share/fonts/truetype/dejavu/${face}.ttf" DESTINATION "${CMAKE_BINARY_DIR}/fonts")
endforeach()

install(TARGETS davo davo-report davo-line RUNTIME DESTINATION . COMPONENT windows)
install(FILES ${libraries} DESTINATION . COMPONENT windows)
foreach(plugin IN LISTS plugins)
  get_filename_component(kind "${plugin}" DIRECTORY)
  install(FILES "${DAVO_WINDOWS_LIBRARIES}/plugins/${plugin}" DESTINATION ${kind} COMPONENT windows)
endforeach()
install(FILES "${CMAKE_SOURCE_DIR}/packaging/template/DAVO_Header.xls" DESTINATION . COMPONENT windows)
install(FILES "${CMAKE_SOURCE_DIR}/packaging/windows/read-me.txt" DESTINATION . COMPONENT windows)
install(DIRECTORY "${DAVO_WINDOWS_LIBRARIES}/licences/" DESTINATION licences COMPONENT windows)
# The program's own licence, as the system that packs it has it.
install(FILES /usr/share/common-licenses/GPL-3 DESTINATION licences RENAME GPL-3.txt
  COMPONENT windows)
