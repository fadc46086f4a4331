# Targets of the tests. All that tests need is built by qor_tests, not by "all"; what the test X needs
# is built by for-X, so that ./run can build for a few tests only.
add_custom_target(qor_tests)

# qor_test_needs(test target...): each test has one such line, if only to say that it needs nothing.
function(qor_test_needs test)
    if(NOT TARGET for-${test})
        add_custom_target(for-${test})
        add_dependencies(qor_tests for-${test})
    endif()
    if(ARGN)
        add_dependencies(for-${test} ${ARGN})
    endif()
endfunction()

# qor_add_test(NAME name SOURCES file... [LIBS library...] [TIMEOUT seconds] [COST seconds]
#     [LABELS label...])
#
# One GoogleTest program that is one CTest test. Cross-built, it runs under Wine, and it fails, too,
# when it or a process of it crashes, when it ends without GoogleTest's summary, and when it leaves a
# process behind. COST is about what it takes: those that take long are begun first.
function(qor_add_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;TIMEOUT;COST" "SOURCES;LIBS;LABELS")
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
    qor_test_needs(${arg_NAME} ${arg_NAME})

    if(CMAKE_CROSSCOMPILING)
        set_target_properties(${arg_NAME} PROPERTIES
            CROSSCOMPILING_EMULATOR ${CMAKE_SOURCE_DIR}/cmake/wine-test.sh)
    endif()
    add_test(NAME ${arg_NAME} COMMAND ${arg_NAME})
    set_tests_properties(${arg_NAME} PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}")
    if(arg_COST)
        set_tests_properties(${arg_NAME} PROPERTIES COST ${arg_COST})
    endif()
endfunction()
