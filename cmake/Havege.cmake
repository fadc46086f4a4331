# havege: the HAVEGE random generator of mbed TLS 2.28, and nothing else of that library.
# Its sources come from Debian's source package (see fetch-source.sh) and stay outside the tree.
execute_process(
    COMMAND ${CMAKE_SOURCE_DIR}/cmake/fetch-source.sh mbedtls
    OUTPUT_VARIABLE _sourceFolder
    OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE _fetchResult)
if(NOT _fetchResult EQUAL 0)
    message(FATAL_ERROR "mbed TLS sources are missing (see the line above)")
endif()

set(QOR_MBEDTLS_DIR "${_sourceFolder}" CACHE INTERNAL "where ./run checks that it has not moved")

# MBEDTLS_HAVE_ASM lets it read the processor's time stamp counter; without it the clock is a slow one.
set(_configFolder ${CMAKE_BINARY_DIR}/deps/havege)
file(CONFIGURE OUTPUT ${_configFolder}/havege_config.h CONTENT
"#define MBEDTLS_HAVE_ASM
#define MBEDTLS_HAVEGE_C
#define MBEDTLS_TIMING_C
")

add_library(havege STATIC
    ${QOR_MBEDTLS_DIR}/library/havege.c
    ${QOR_MBEDTLS_DIR}/library/timing.c
    ${QOR_MBEDTLS_DIR}/library/platform_util.c)
target_include_directories(havege SYSTEM PUBLIC ${QOR_MBEDTLS_DIR}/include ${_configFolder})
target_compile_definitions(havege PUBLIC "MBEDTLS_CONFIG_FILE=<havege_config.h>")
target_compile_options(havege PUBLIC -ffile-prefix-map=${QOR_MBEDTLS_DIR}=/qor-control/mbedtls)
if(QOR_SANITIZE)
    target_compile_options(havege PRIVATE -fno-sanitize=all)
endif()
set_target_properties(havege PROPERTIES POSITION_INDEPENDENT_CODE ON)
