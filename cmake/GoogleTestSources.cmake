# gtest, gmock and gmock_main, built from Debian's source folder: on demand only.
# Where the package is not installed (a machine that only runs the demo) there are no tests.
set(QOR_GOOGLETEST_DIR /usr/src/googletest)
if(EXISTS ${QOR_GOOGLETEST_DIR}/CMakeLists.txt)
    set(INSTALL_GTEST OFF)
    add_subdirectory(${QOR_GOOGLETEST_DIR} ${CMAKE_BINARY_DIR}/deps/googletest EXCLUDE_FROM_ALL SYSTEM)
    foreach(library IN ITEMS gtest gmock gmock_main)
        target_compile_options(${library} PRIVATE "$<$<CONFIG:RelWithDebInfo>:-Og;-g1>")
    endforeach()
endif()
