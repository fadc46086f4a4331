# Compiler settings. Everything of ours links qor::options; third-party code gets only what changes
# the binary interface or the platform (global options below).

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Debug, Release or RelWithDebInfo" FORCE)
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Programs and DLLs side by side, so that each program finds the DLLs without a search path.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

if(WIN32)
    # QorControlFacade.dll, not libQorControlFacade.dll. (Import libraries keep their "lib".)
    set(CMAKE_SHARED_LIBRARY_PREFIX "")
    # Version 4: Wine's debugger shows no line numbers with newer debug information.
    add_compile_options(-gdwarf-4)
elseif(QOR_M32)
    add_compile_options(-m32)
    add_link_options(-m32)
endif()

if(QOR_SANITIZE)
    if(WIN32)
        message(FATAL_ERROR "QOR_SANITIZE: the cross compiler has no sanitizer run-time library")
    endif()
    set(_sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_compile_options(${_sanitizers})
    add_link_options(${_sanitizers})
endif()

# For ./run fuzz: what is compiled counts its branches, for the fuzzer or for a report.
option(QOR_FUZZ "Build the coverage-guided fuzzers of tests/fuzz (native builds with clang only)" OFF)
option(QOR_FUZZ_COVERAGE "Build them for a report of the branches that the corpus takes" OFF)
if(QOR_FUZZ)
    if(WIN32 OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "QOR_FUZZ needs a native build with clang, not ${CMAKE_CXX_COMPILER}")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link)
    if(QOR_M32)
        link_libraries(atomic)  # which its 64-bit atomics call there
    endif()
    if(QOR_FUZZ_COVERAGE)
        add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
        add_link_options(-fprofile-instr-generate)
    endif()
endif()

if(QOR_SANITIZE_THREADS)
    if(WIN32 OR QOR_M32 OR QOR_SANITIZE)
        message(FATAL_ERROR "QOR_SANITIZE_THREADS: for native 64-bit builds, as the only sanitizer")
    endif()
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
endif()

# What is counted says so by itself, see qor_count_lines; all that it is linked into needs the run-time
# library of the counters.
if(QOR_COVERAGE)
    add_link_options(--coverage)
endif()

# qor_count_lines(target): as they stand in the sources, so without optimisation; and by their names in
# this folder, see Reproducible.cmake.
function(qor_count_lines target)
    if(NOT QOR_COVERAGE)
        return()
    endif()
    file(RELATIVE_PATH toSource ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR})
    string(REGEX REPLACE "/$" "" toSource ${toSource})
    target_compile_options(${target} PRIVATE --coverage -O0)
    foreach(folder IN ITEMS ${toSource} ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR} /usr/ deps/)
        target_compile_options(${target} PRIVATE -fprofile-prefix-map=${folder}=${folder})
    endforeach()
endfunction()

if(QOR_HARDEN)
    add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
endif()

add_library(qor_options INTERFACE)
add_library(qor::options ALIAS qor_options)
target_compile_features(qor_options INTERFACE cxx_std_17)
target_compile_options(qor_options INTERFACE -Wall -Wextra -Wconversion -Wshadow -Werror)
if(WIN32)
    # Windows 7 interfaces; never UNICODE: texts are in the ANSI code page throughout.
    target_compile_definitions(qor_options INTERFACE
        _WIN32_WINNT=0x0601 WINVER=0x0601 NOMINMAX WIN32_LEAN_AND_MEAN)
endif()
