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
#     [SHARDS count] [LABELS label...])
#
# One GoogleTest program that is one CTest test. Cross-built, it runs under Wine, and it fails, too,
# when it or a process of it crashes, when it ends without GoogleTest's summary, and when it leaves a
# process behind. COST: those with the greatest are begun first. With SHARDS it is that many CTest
# tests, name_1 and so on, which run side by side; each has its share of the program's tests.
function(qor_add_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;TIMEOUT;COST;SHARDS" "SOURCES;LIBS;LABELS")
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
    if(NOT arg_COST)
        set(arg_COST 0)  # CTest remembers how long it took
    endif()

    add_executable(${arg_NAME} EXCLUDE_FROM_ALL ${arg_SOURCES})
    target_link_libraries(${arg_NAME} PRIVATE qor::options ${arg_LIBS} gmock_main)
    if("unit" IN_LIST arg_LABELS)
        qor_count_lines(${arg_NAME})  # inline functions of src/ are in here, too
    endif()
    if(CMAKE_CROSSCOMPILING)
        set_target_properties(${arg_NAME} PROPERTIES
            CROSSCOMPILING_EMULATOR ${CMAKE_SOURCE_DIR}/cmake/wine-test.sh)
    endif()

    set(names ${arg_NAME})
    if(arg_SHARDS)
        set(names)
        foreach(shard RANGE 1 ${arg_SHARDS})
            list(APPEND names ${arg_NAME}_${shard})
        endforeach()
    endif()
    set(index 0)
    foreach(name IN LISTS names)
        add_test(NAME ${name} COMMAND ${arg_NAME})
        qor_test_needs(${name} ${arg_NAME})
        set_tests_properties(${name} PROPERTIES
            TIMEOUT ${arg_TIMEOUT} COST ${arg_COST} LABELS "${arg_LABELS}")
        if(arg_SHARDS)
            set_tests_properties(${name} PROPERTIES
                ENVIRONMENT "GTEST_TOTAL_SHARDS=${arg_SHARDS};GTEST_SHARD_INDEX=${index}")
        endif()
        math(EXPR index "${index} + 1")
    endforeach()
endfunction()
