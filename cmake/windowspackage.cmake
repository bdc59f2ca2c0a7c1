# What a Windows user downloads: a portable zip and an installer, made by "cpack" in the cross build
# (scripts/windows-check.sh runs it). Both hold the same folder:
#
#   fleetwright.exe, fleetwright-check.exe, parkingspecs.db
#   Sample Aircraft\Corvane Skyliner 200\...
#   LICENSE.txt, THIRD-PARTY-NOTICES.txt, README.txt
#
# The program keeps its settings in the registry and writes nothing beside itself, so the zip runs from any
# folder, one the user cannot write to included.
install(TARGETS fleetwright fleetwright-check RUNTIME DESTINATION .)
get_target_property(program_folder fleetwright BINARY_DIR)
install(FILES "${program_folder}/parkingspecs.db" DESTINATION .)
install(DIRECTORY "${program_folder}/Sample Aircraft" DESTINATION .)
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION . RENAME LICENSE.txt)
install(FILES "${PROJECT_SOURCE_DIR}/THIRD-PARTY-NOTICES.txt" DESTINATION .)
# Notepad shows a file with LF line ends on one line before Windows 10, so the read-me is written with CR LF.
file(READ "${PROJECT_SOURCE_DIR}/cmake/packaging/README-windows.txt" windows_readme)
string(REPLACE "@VERSION@" "${PROJECT_VERSION}" windows_readme "${windows_readme}")
string(REPLACE "\n" "\r\n" windows_readme "${windows_readme}")
file(WRITE "${CMAKE_BINARY_DIR}/packaging/README.txt" "${windows_readme}")
install(FILES "${CMAKE_BINARY_DIR}/packaging/README.txt" DESTINATION .)

set(CPACK_PACKAGE_NAME Fleetwright)
set(CPACK_PACKAGE_VENDOR "Corvane Tools")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_FILE_NAME "fleetwright-${PROJECT_VERSION}-windows-x64")
set(CPACK_PACKAGE_INSTALL_DIRECTORY Fleetwright)
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR ZIP NSIS)
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/packages")

# The zip opens to one folder named after the package, as people expect of a portable program.
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY ON)

# The installer comes from our own script (cmake/packaging/NSIS.template.in): CPack fills in the file lists.
list(PREPEND CMAKE_MODULE_PATH "${PROJECT_SOURCE_DIR}/cmake/packaging")
set(CPACK_NSIS_PACKAGE_NAME Fleetwright)
set(CPACK_NSIS_DISPLAY_NAME Fleetwright)
set(CPACK_NSIS_MUI_ICON "${FLEETWRIGHT_ICO}")
set(CPACK_NSIS_MUI_UNIICON "${FLEETWRIGHT_ICO}")
set(CPACK_NSIS_INSTALLED_ICON_NAME fleetwright.exe)
set(CPACK_NSIS_COMPRESSOR "/SOLID lzma")
set(CPACK_NSIS_URL_INFO_ABOUT "https://fleetwright.corvane.example/")

include(CPack)
