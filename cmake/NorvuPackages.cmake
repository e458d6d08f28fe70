# SPDX-License-Identifier: LGPL-3.0-or-later

# Debian packages: the libraries, what a host needs to build against them, and the programs.
#
# They hold what was installed under /usr, whose folders are compiled into the libraries: other
# builds offer none. "cmake --workflow --preset package" makes them in build/package.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME norvu)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Norvu developers <norvu@example.org>")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL libraries development applications)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# What programs are linked with is found by dpkg-shlibdeps. Packages of hosts learn from the file
# "shlibs" of our own package that they need it.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# What is loaded at run time stands in no list of linked libraries: fonts and Qt's SQLite driver.
# Qt's platforms and SVG plug-ins come with libqt5gui5 and libqt5svg5, which are linked.
set(library_package libtellarix-norvu${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_DEPENDS "libqt5sql5-sqlite, fonts-dejavu-core")
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_RECOMMENDS
    "ca-certificates, libqt5sql5-psql, libqt5sql5-mysql")
file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/triggers" CONTENT "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_CONTROL_EXTRA "${PROJECT_BINARY_DIR}/triggers")
set(CPACK_DEBIAN_LIBRARIES_DESCRIPTION "desktop seismology toolkit: libraries
Times, records, miniSEED and SAC, record streams, filters, record widget and
rulers; trace view, spectrograms and the kit of small widgets.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtellarix-norvu-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${library_package} (= ${PROJECT_VERSION}), qtbase5-dev, libboost-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "desktop seismology toolkit: headers
Headers, CMake package and pkg-config files to build programs with the
libraries.")

set(CPACK_DEBIAN_APPLICATIONS_PACKAGE_NAME norvu-workbench)
set(CPACK_DEBIAN_APPLICATIONS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_APPLICATIONS_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_APPLICATIONS_DESCRIPTION "waveforms and spectrograms of files and record streams
The desktop application norvu-workbench and the command-line tool tellarix.")

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    install(FILES "${PROJECT_SOURCE_DIR}/cmake/copyright"
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()

include(CPack)
