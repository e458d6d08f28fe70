# SPDX-License-Identifier: LGPL-3.0-or-later

# What a host needs to build against the installed libraries: find_package(TellarixNorvu) with the
# components Core, Client, Gui and Norvu, and one pkg-config file for each library; what a plug-in of
# the workbench needs is in the component Workbench.

install(FILES "${PROJECT_SOURCE_DIR}/libs/norvu/api.h"
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/norvu COMPONENT development)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/TellarixNorvu")
foreach(component IN ITEMS Core Client Gui Norvu Workbench)
    install(EXPORT TellarixNorvu${component}
        FILE TellarixNorvu${component}Targets.cmake
        NAMESPACE TellarixNorvu::
        DESTINATION ${package_dir}
        COMPONENT development)
endforeach()
configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/cmake/TellarixNorvuConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/TellarixNorvuConfig.cmake"
    INSTALL_DESTINATION ${package_dir}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
    "${PROJECT_BINARY_DIR}/TellarixNorvuConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/TellarixNorvuConfig.cmake"
    "${PROJECT_BINARY_DIR}/TellarixNorvuConfigVersion.cmake"
    DESTINATION ${package_dir} COMPONENT development)

# norvu_install_pkgconfig(<name> <library> <description> <required packages>)
function(norvu_install_pkgconfig name library description requires)
    file(RELATIVE_PATH prefix_from_pc
        "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
    set(NAME ${name})
    set(LIBRARY ${library})
    set(DESCRIPTION "${description}")
    set(REQUIRES "${requires}")
    string(REGEX REPLACE "/$" "" PREFIX_FROM_PC "${prefix_from_pc}")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/library.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc"
        @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${name}.pc"
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

norvu_install_pkgconfig(tellarix-core tellarix_core
    "Tellarix: time, records, filters and data model" "Qt5Core")
norvu_install_pkgconfig(tellarix-client tellarix_client
    "Tellarix: application base and record streams" "tellarix-core")
norvu_install_pkgconfig(tellarix-gui tellarix_qt
    "Tellarix: record widget, rulers and scheme" "tellarix-client Qt5Gui Qt5Widgets")
norvu_install_pkgconfig(tellarix-norvu tellarix_norvugui
    "Norvu: widgets and signal tools for seismology" "tellarix-gui")
