# The mouths of the system as targets, natively, in two forms: with clang and QOR_FUZZ one program
# fuzz_X per target, for ./run fuzz; otherwise one test of all of them that replays the corpus.
set(fuzz_targets record settings simrecords trace stream window cinterface)
set(fuzz_sources
    targets/Record.cpp targets/Settings.cpp targets/SimRecords.cpp targets/Trace.cpp
    targets/Stream.cpp targets/Window.cpp targets/CInterface.cpp)
# The library for JSON takes the compiler longer than all the rest, so these are for ./run fuzz alone.
set(json_targets simfiles simsettings rpc)
set(json_sources targets/SimFiles.cpp targets/SimSettings.cpp targets/Rpc.cpp)

if(NOT QOR_FUZZ)
    add_compile_options("${quick_to_build}")
endif()

set(checkout ${CMAKE_SOURCE_DIR})
add_library(fuzz_options INTERFACE)
target_link_libraries(fuzz_options INTERFACE native_options)
target_include_directories(fuzz_options INTERFACE
    ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/standins
    ${checkout}/simulator ${checkout}/tools/qorctl)

# What the targets call, apart from the library's own folders in ../native.
file(GLOB interface_parts CONFIGURE_DEPENDS ${checkout}/src/cinterface/*.cpp)
list(FILTER interface_parts EXCLUDE REGEX "(DllMain|OwnUnwinding).cpp$")
add_library(fuzz_parts STATIC EXCLUDE_FROM_ALL
    ${interface_parts}
    ${checkout}/src/common/Gate.cpp
    ${checkout}/src/common/ThreadSlot.cpp
    ${checkout}/simulator/wire/Payloads.cpp
    ${checkout}/simulator/wire/Reader.cpp
    ${checkout}/simulator/wire/Record.cpp
    ${checkout}/simulator/wire/RecordStream.cpp
    ${checkout}/simulator/wire/Writer.cpp
    ${checkout}/src/client/ClientSettings.cpp
    ${checkout}/src/transport/ExternalCommandFactory.cpp
    ${checkout}/src/transport/ExternalOperatingWnd.cpp)
# Its conversions are none on Windows, where a long has 32 bits.
set_source_files_properties(${checkout}/src/common/ThreadSlot.cpp PROPERTIES
    COMPILE_OPTIONS -Wno-conversion)
target_link_libraries(fuzz_parts PUBLIC fuzz_options native_facade_parts native_agent native_trace)

file(GLOB json_parts CONFIGURE_DEPENDS
    ${checkout}/simulator/config/*.cpp ${checkout}/simulator/model/*.cpp
    ${checkout}/simulator/script/*.cpp)
add_library(fuzz_json_parts STATIC EXCLUDE_FROM_ALL
    ${json_parts}
    ${checkout}/simulator/app/Settings.cpp
    ${checkout}/tools/qorctl/HexText.cpp
    ${checkout}/tools/qorctl/Spelling.cpp
    ${checkout}/tools/qorctl/serve/rpc/Hint.cpp
    ${checkout}/tools/qorctl/serve/rpc/Message.cpp
    ${checkout}/tools/qorctl/serve/rpc/Param.cpp)
target_link_libraries(fuzz_json_parts PUBLIC fuzz_options deps::json deps::fmt)

# In place of the system's, and of some of those in ../native: as objects they come before any
# library.
add_library(fuzz_standins OBJECT EXCLUDE_FROM_ALL
    Target.cpp
    standins/ClientCalls.cpp
    standins/CodePage.cpp
    standins/ExportFiles.cpp
    standins/Messages.cpp
    standins/OpenFiles.cpp
    standins/Profile.cpp
    standins/ScriptedQor.cpp
    standins/Turns.cpp)
target_link_libraries(fuzz_standins PUBLIC fuzz_parts)
set(wrapped_calls -Wl,--wrap=fopen)

if(QOR_FUZZ)
    # Everything that is linked is instrumented; only the programs have the fuzzer's own main.
    add_library(fuzz_main OBJECT EXCLUDE_FROM_ALL LibFuzzer.cpp)
    target_link_libraries(fuzz_main PUBLIC fuzz_options)
    add_custom_target(fuzzers)
    list(APPEND fuzz_targets ${json_targets})
    list(APPEND fuzz_sources ${json_sources})
    foreach(target source IN ZIP_LISTS fuzz_targets fuzz_sources)
        add_executable(fuzz_${target} EXCLUDE_FROM_ALL ${source})
        target_link_libraries(fuzz_${target} PRIVATE fuzz_main fuzz_standins fiber_kernel)
        if(target IN_LIST json_targets)
            target_link_libraries(fuzz_${target} PRIVATE fuzz_json_parts)
        endif()
        target_link_options(fuzz_${target} PRIVATE -fsanitize=fuzzer ${wrapped_calls})
        add_dependencies(fuzzers fuzz_${target})
    endforeach()
else()
    qor_add_test(NAME fuzz_replay_test
        SOURCES ReplayTest.cpp ${fuzz_sources}
        LIBS fuzz_standins fiber_kernel
        LABELS fuzz
        TIMEOUT 300)
    if(TARGET fuzz_replay_test)
        target_compile_definitions(fuzz_replay_test PRIVATE
            FUZZ_CORPUS="${CMAKE_CURRENT_SOURCE_DIR}/corpus")
        target_link_options(fuzz_replay_test PRIVATE ${wrapped_calls})
    endif()
endif()
