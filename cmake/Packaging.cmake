# SPDX-License-Identifier: GPL-3.0-or-later
# Where everything is when the program is installed, and the Debian package that CPack makes of it
# (packaging/debian/build). What a Windows build ships is in WindowsProgram.
if(WIN32)
  return()
endif()

set(debian "${CMAKE_SOURCE_DIR}/packaging/debian")
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

install(TARGETS davo davo-report davo-instrument davo-line RUNTIME DESTINATION bin)
if(TARGET davo_reports_calc)
  # A module that only the program loads: it is nobody's library and nothing runs it.
  install(TARGETS davo_reports_calc LIBRARY DESTINATION lib/davo
    PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endif()
install(FILES "${CMAKE_SOURCE_DIR}/packaging/template/DAVO_Header.xls" DESTINATION share/davo)
install(FILES "${debian}/davo.desktop" DESTINATION share/applications)
install(FILES "${debian}/local.davo.davo.metainfo.xml" DESTINATION share/metainfo)
foreach(size 16 24 32 48 64 128 256)
  install(FILES "${CMAKE_SOURCE_DIR}/src/app/icon/davo-${size}.png"
    DESTINATION "share/icons/hicolor/${size}x${size}/apps" RENAME davo.png)
endforeach()
install(FILES "${CMAKE_SOURCE_DIR}/src/app/icon/davo.svg"
  DESTINATION share/icons/hicolor/scalable/apps)
install(FILES "${debian}/copyright" DESTINATION share/doc/davo)
install(FILES "${debian}/lintian-overrides" DESTINATION share/lintian/overrides RENAME davo)

# Without the time of packing in them: the same sources make the same files.
set(packed)
foreach(name davo.1 davo-report.1 davo-instrument.1 davo-line.1)
  configure_file("${debian}/${name}.in" "${CMAKE_BINARY_DIR}/packed/${name}" @ONLY)
endforeach()
configure_file("${debian}/changelog" "${CMAKE_BINARY_DIR}/packed/changelog" COPYONLY)
foreach(name davo.1 davo-report.1 davo-instrument.1 davo-line.1 changelog)
  set(file "${CMAKE_BINARY_DIR}/packed/${name}")
  add_custom_command(OUTPUT "${file}.gz"
    COMMAND gzip -9nc "${file}" > "${file}.gz"
    DEPENDS "${file}" VERBATIM)
  list(APPEND packed "${file}.gz")
endforeach()
install(FILES "${CMAKE_BINARY_DIR}/packed/davo.1.gz" "${CMAKE_BINARY_DIR}/packed/davo-report.1.gz"
  "${CMAKE_BINARY_DIR}/packed/davo-instrument.1.gz" "${CMAKE_BINARY_DIR}/packed/davo-line.1.gz"
  DESTINATION share/man/man1)
install(FILES "${debian}/davo-report.bash"
  DESTINATION share/bash-completion/completions RENAME davo-report)
install(FILES "${CMAKE_BINARY_DIR}/packed/changelog.gz" DESTINATION share/doc/davo)

# All that is installed, and nothing else: packing builds no more than this.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
add_custom_target(davo_shipped DEPENDS ${packed})
add_dependencies(davo_shipped davo davo-report davo-instrument davo-line davo_guide)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME davo)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "DAVO maintainers <maintainers@davo.example>")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Calc makes and shows the .xls reports; without it they are .xlsx.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libreoffice-calc | libreoffice-calc-nogui")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "front end of a current-transformer test set")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Leads a technician through saturation and ratio tests of current
transformers with a DAVO test set on a serial line, and keeps every shot
as a plain-text test record. It also

 * fetches the records that the instrument's memory holds,
 * computes kneepoints by three rules,
 * makes workbooks with report, data points and excitation chart,
 * edits, copies, renames and deletes records and test headers.

The program davo-report makes reports of many records at once, without a
window. The program davo-instrument is a simulated test set on a pseudo
terminal, for training and for trying the program.")
include(CPack)
