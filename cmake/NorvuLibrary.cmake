# SPDX-License-Identifier: LGPL-3.0-or-later

# norvu_add_library(<target>
#     COMPONENT <name>        component of find_package(TellarixNorvu)
#     EXPORT_MACRO <macro>    <macro>_BUILD is defined while the library itself is compiled
#     SOURCES <file>...       sources and headers; headers named here are installed
#     PUBLIC <target>...      libraries that users of the headers need
#     PRIVATE <target>...     libraries that only the sources need
# )
function(norvu_add_library target)
    cmake_parse_arguments(ARG "" "COMPONENT;EXPORT_MACRO" "SOURCES;PUBLIC;PRIVATE" ${ARGN})

    add_library(${target} SHARED ${ARG_SOURCES})
    add_library(TellarixNorvu::${ARG_COMPONENT} ALIAS ${target})
    target_include_directories(${target} PUBLIC
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/libs>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
    # Classes hold their forms by value, so that their headers name what uic makes of the forms.
    set(forms_dir "${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/include")
    target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${forms_dir}>")
    target_compile_definitions(${target} PRIVATE ${ARG_EXPORT_MACRO}_BUILD)
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_link_libraries(${target}
        PUBLIC ${ARG_PUBLIC}
        PRIVATE ${ARG_PRIVATE} $<BUILD_INTERFACE:norvu_warnings>)
    # The run-time of clang's sanitizers is in the program, not in the libraries.
    if(NOT NORVU_BUILD_FUZZERS)
        target_link_options(${target} PRIVATE "LINKER:--no-undefined")
    endif()
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        EXPORT_NAME ${ARG_COMPONENT})

    install(TARGETS ${target} EXPORT TellarixNorvu${ARG_COMPONENT}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libraries
            NAMELINK_COMPONENT development)
    foreach(source IN LISTS ARG_SOURCES)
        set(header "${source}")
        if(source MATCHES "\\.ui$")
            cmake_path(GET source STEM form)
            set(header "${forms_dir}/ui_${form}.h")
        endif()
        if(header MATCHES "\\.h$" AND NOT header MATCHES "_p\\.h$")
            cmake_path(GET source PARENT_PATH folder)
            cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}"
                OUTPUT_VARIABLE folder)
            cmake_path(RELATIVE_PATH folder BASE_DIRECTORY "${PROJECT_SOURCE_DIR}/libs")
            install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder}
                COMPONENT development)
        endif()
    endforeach()
endfunction()
