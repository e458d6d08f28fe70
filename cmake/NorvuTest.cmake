# SPDX-License-Identifier: LGPL-3.0-or-later

# norvu_add_test(<name> SOURCES <file>... LIBRARIES <target>... [ON_DISPLAY])
#
# One Qt Test executable, run on the offscreen platform, or on a display of its own with a window
# manager; that is passed over where there are no programs for it. A test that prints a failed signal/slot
# connection fails, since Qt only warns about a signature that is spelt wrongly.
function(norvu_add_test name)
    cmake_parse_arguments(ARG "ON_DISPLAY" "" "SOURCES;LIBRARIES" ${ARGN})

    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} Qt5::Test norvu_warnings)
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_compile_definitions(${name} PRIVATE NORVU_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        NORVU_PROGRAMS="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
    if(ARG_ON_DISPLAY)
        add_test(NAME ${name}
            COMMAND "${PROJECT_SOURCE_DIR}/scripts/on-display" $<TARGET_FILE:${name}>)
    else()
        add_test(NAME ${name} COMMAND ${name})
    endif()
    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/leaks.supp:print_suppressions=0;UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1;TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/threads.supp"
        FAIL_REGULAR_EXPRESSION "QObject::connect:"
        SKIP_RETURN_CODE 77
        TIMEOUT 300)
endfunction()
