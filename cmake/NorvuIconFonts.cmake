# SPDX-License-Identifier: LGPL-3.0-or-later

# The four faces of the icon font, as Qt resources under :/fonts.
#
# They are built from the free Font Awesome package of the npm registry, pinned by version and
# checksum. Holders of a licence for the full font point NORVU_ICON_FONT_DIR to a folder with their
# own fa-regular-400.ttf, fa-solid-900.ttf, fa-light-300.ttf and fa-brands-400.ttf instead.
set(NORVU_ICON_FONT_DIR "" CACHE PATH "Folder with icon font files to use instead of built ones")

set(icon_font_version 5.13.1)
set(icon_font_url
    "https://registry.npmjs.org/@fortawesome/fontawesome-free/-/fontawesome-free-${icon_font_version}.tgz")
set(icon_font_sha512 "0fcd7d7f7e052c778137fe31bf0d07474bbb5361bb46a8cf4a0817a9fecb92db31590e3c5407c6c2f32b85c56e6995767c5d3af5cffad7d45d8020a6b340c787")
set(icon_font_faces fa-regular-400.ttf fa-solid-900.ttf fa-light-300.ttf fa-brands-400.ttf)

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
    set(package "${PROJECT_BINARY_DIR}/fontawesome-free-${icon_font_version}.tgz")
    file(DOWNLOAD "${icon_font_url}" "${package}"
        EXPECTED_HASH SHA512=${icon_font_sha512} STATUS status TLS_VERIFY ON)
    list(GET status 0 code)
    if(NOT code EQUAL 0)
        list(GET status 1 reason)
        file(REMOVE "${package}")
        message(FATAL_ERROR "${icon_font_url} can't be fetched: ${reason}. "
            "Set NORVU_ICON_FONT_DIR to build without the network.")
    endif()

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
