# cpp-httplib, which speaks HTTP for "qorctl serve": a header of Debian's source package (see
# fetch-source.sh), which stays outside the tree.
if(NOT WIN32)
    return()
endif()

execute_process(
    COMMAND ${CMAKE_SOURCE_DIR}/cmake/fetch-source.sh cpp-httplib
    OUTPUT_VARIABLE _httplibFolder
    OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE _httplibResult)
if(NOT _httplibResult EQUAL 0)
    message(FATAL_ERROR "cpp-httplib is missing (see the line above)")
endif()
set(QOR_HTTPLIB_DIR "${_httplibFolder}" CACHE INTERNAL "where ./run checks that it has not moved")

add_library(httplib INTERFACE)
add_library(deps::httplib ALIAS httplib)
target_include_directories(httplib SYSTEM INTERFACE ${QOR_HTTPLIB_DIR})
target_compile_options(httplib INTERFACE -ffile-prefix-map=${QOR_HTTPLIB_DIR}=/qor-control/cpp-httplib)
target_link_libraries(httplib INTERFACE ws2_32)
