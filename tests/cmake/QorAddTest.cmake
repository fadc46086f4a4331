# qor_add_test(NAME name SOURCES file... [LIBS library...] [TIMEOUT seconds] [LABELS label...])
#
# One GoogleTest program that is one CTest test. It is built by the target qor_tests, not by "all".
# Cross-built, it runs under Wine, and it fails, too, when it or a process of it crashes, when it
# ends without GoogleTest's summary, and when it leaves a process behind.
add_custom_target(qor_tests)

function(qor_add_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;TIMEOUT" "SOURCES;LIBS;LABELS")
    if(NOT arg_NAME OR NOT arg_SOURCES OR arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "qor_add_test: NAME and SOURCES are needed; "
            "not understood: '${arg_UNPARSED_ARGUMENTS}'")
    endif()
    if(NOT TARGET gmock_main)
        return()  # GoogleTest is not installed
    endif()
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)  # seconds; a busy machine may need ten times its usual
    endif()

    add_executable(${arg_NAME} EXCLUDE_FROM_ALL ${arg_SOURCES})
    target_link_libraries(${arg_NAME} PRIVATE qor::options ${arg_LIBS} gmock_main)
    add_dependencies(qor_tests ${arg_NAME})

    if(CMAKE_CROSSCOMPILING)
        set_target_properties(${arg_NAME} PROPERTIES
            CROSSCOMPILING_EMULATOR ${CMAKE_SOURCE_DIR}/cmake/wine-test.sh)
    endif()
    add_test(NAME ${arg_NAME} COMMAND ${arg_NAME})
    set_tests_properties(${arg_NAME} PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}")
endfunction()
