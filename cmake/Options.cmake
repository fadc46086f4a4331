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

if(QOR_SANITIZE_THREADS)
    if(WIN32 OR QOR_M32 OR QOR_SANITIZE)
        message(FATAL_ERROR "QOR_SANITIZE_THREADS: for native 64-bit builds, as the only sanitizer")
    endif()
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
endif()

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
