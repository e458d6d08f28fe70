# SPDX-License-Identifier: LGPL-3.0-or-later

# The four faces of the icon font, as Qt resources under :/fonts.
#
# They are built from the free Font Awesome package, pinned by version and checksum. npm fetches it at
# the first configuration, so that the registry, mirror or proxy set there holds. Without a network,
# NORVU_ICON_FONT_PACKAGE names a package file fetched before. Holders of a licence for the full font
# point NORVU_ICON_FONT_DIR to a folder with their own fa-regular-400.ttf, fa-solid-900.ttf,
# fa-light-300.ttf and fa-brands-400.ttf instead. Both can also be environment variables, so that the
# scripts need no options of their own.
set(NORVU_ICON_FONT_PACKAGE "" CACHE FILEPATH "Package file of the icon font, fetched before")
set(NORVU_ICON_FONT_DIR "" CACHE PATH "Folder with icon font files to use instead of built ones")

set(icon_font_version 5.13.1)
set(icon_font_package "@fortawesome/fontawesome-free@${icon_font_version}")
set(icon_font_sha512 "0fcd7d7f7e052c778137fe31bf0d07474bbb5361bb46a8cf4a0817a9fecb92db31590e3c5407c6c2f32b85c56e6995767c5d3af5cffad7d45d8020a6b340c787")
set(icon_font_faces fa-regular-400.ttf fa-solid-900.ttf fa-light-300.ttf fa-brands-400.ttf)

# An option that is not set takes the environment's value and keeps it for later configurations.
foreach(option IN ITEMS NORVU_ICON_FONT_PACKAGE NORVU_ICON_FONT_DIR)
    if(NOT ${option} AND NOT "$ENV{${option}}" STREQUAL "")
        set(path "$ENV{${option}}")
        cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY "${PROJECT_SOURCE_DIR}" NORMALIZE)
        set_property(CACHE ${option} PROPERTY VALUE "${path}")
    endif()
endforeach()

# norvu_add_icon_fonts(<target>)
function(norvu_add_icon_fonts target)
    if(NORVU_ICON_FONT_DIR)
        set(folder "${NORVU_ICON_FONT_DIR}")
        foreach(face IN LISTS icon_font_faces)
            if(NOT EXISTS "${folder}/${face}")
                message(FATAL_ERROR "NORVU_ICON_FONT_DIR: ${folder} has no ${face}")
            endif()
        endforeach()
    else()
        set(folder "${PROJECT_BINARY_DIR}/fonts")
        norvu_build_icon_fonts("${folder}")
    endif()

    set(files "")
    foreach(face IN LISTS icon_font_faces)
        string(APPEND files "        <file alias=\"${face}\">${folder}/${face}</file>\n")
    endforeach()
    set(resources "${PROJECT_BINARY_DIR}/iconfonts.qrc")
    file(CONFIGURE OUTPUT "${resources}" CONTENT
        "<RCC>\n    <qresource prefix=\"/fonts\">\n${files}    </qresource>\n</RCC>\n" @ONLY)

    list(TRANSFORM icon_font_faces PREPEND "${folder}/" OUTPUT_VARIABLE paths)
    set(source "${PROJECT_BINARY_DIR}/qrc_iconfonts.cpp")
    add_custom_command(OUTPUT "${source}"
        COMMAND Qt5::rcc --name iconfonts --output "${source}" "${resources}"
        DEPENDS "${resources}" ${paths}
        COMMENT "Packing the icon fonts"
        VERBATIM)
    set_source_files_properties("${source}" PROPERTIES SKIP_AUTOGEN ON)
    target_sources(${target} PRIVATE "${source}")
endfunction()

function(norvu_build_icon_fonts folder)
    norvu_find_fonttools(python)
    norvu_find_icon_package(package)

    set(script "${PROJECT_SOURCE_DIR}/scripts/build-icon-fonts.py")
    list(TRANSFORM icon_font_faces PREPEND "${folder}/" OUTPUT_VARIABLE paths)
    add_custom_command(OUTPUT ${paths} "${folder}/LICENSE.txt"
        COMMAND "${python}" "${script}" "${package}" "${folder}"
        DEPENDS "${script}" "${package}"
        COMMENT "Building the icon fonts"
        VERBATIM)
    install(FILES "${folder}/LICENSE.txt" RENAME LICENSE.icon-fonts.txt
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT libraries)
    install(FILES "${PROJECT_SOURCE_DIR}/LICENSE.OFL-1.1"
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT libraries)
endfunction()

function(norvu_find_icon_package result)
    set(package "${NORVU_ICON_FONT_PACKAGE}")
    if(NOT package)
        set(package "${PROJECT_BINARY_DIR}/fontawesome-free-${icon_font_version}.tgz")
        norvu_is_icon_package("${package}" fetched)
        if(NOT fetched)
            norvu_fetch_icon_package("${package}")
        endif()
    endif()
    norvu_is_icon_package("${package}" valid)
    if(NOT valid)
        message(FATAL_ERROR "${package} is not ${icon_font_package}: its SHA-512 differs, or there "
            "is no such file. NORVU_ICON_FONT_PACKAGE names a package file fetched before.")
    endif()
    set(${result} "${package}" PARENT_SCOPE)
endfunction()

function(norvu_is_icon_package file result)
    set(sha512 "")
    if(EXISTS "${file}" AND NOT IS_DIRECTORY "${file}")
        file(SHA512 "${file}" sha512)
    endif()
    string(COMPARE EQUAL "${sha512}" "${icon_font_sha512}" same)
    set(${result} ${same} PARENT_SCOPE)
endfunction()

function(norvu_fetch_icon_package target)
    find_program(NORVU_NPM NAMES npm DOC "Fetches the package of the icon font")
    # The cache is our own, since the user's may be missing or read-only.
    set(scratch "${PROJECT_BINARY_DIR}/npm")
    file(REMOVE_RECURSE "${scratch}")
    file(MAKE_DIRECTORY "${scratch}")
    set(messages "There is no npm.")
    if(NORVU_NPM)
        message(STATUS "Fetching ${icon_font_package}")
        execute_process(
            COMMAND "${NORVU_NPM}" pack "${icon_font_package}" --pack-destination "${scratch}"
                --cache "${scratch}/cache" --ignore-scripts --update-notifier=false
                --loglevel=error
            WORKING_DIRECTORY "${scratch}"
            TIMEOUT 600
            OUTPUT_QUIET ERROR_VARIABLE messages)
    endif()
    file(GLOB packages "${scratch}/*.tgz")
    if(NOT packages)
        message(NOTICE "${messages}")
        message(FATAL_ERROR "${icon_font_package} can't be fetched. Set NORVU_ICON_FONT_PACKAGE, "
            "as an option or in the environment, to the file that \"npm pack ${icon_font_package}\" "
            "writes on a machine with a network, or NORVU_ICON_FONT_DIR to a folder with ready "
            "font files.")
    endif()
    file(RENAME "${packages}" "${target}")
    file(REMOVE_RECURSE "${scratch}")
endfunction()

# A Python that has fontTools; Debian's own comes first, since others rarely have it.
function(norvu_find_fonttools result)
    find_program(NORVU_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
    find_program(NORVU_PYTHON NAMES python3 REQUIRED)
    execute_process(COMMAND "${NORVU_PYTHON}" -c "import fontTools" RESULT_VARIABLE missing
        ERROR_QUIET)
    if(missing)
        message(FATAL_ERROR "${NORVU_PYTHON} has no fontTools: install python3-fonttools")
    endif()
    set(${result} "${NORVU_PYTHON}" PARENT_SCOPE)
endfunction()
