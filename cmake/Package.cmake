# qor_package: what ./run package hands out, in the folder package/ of the build tree.
if(NOT WIN32)
    return()
endif()

configure_file(${CMAKE_SOURCE_DIR}/cmake/package/QorControlConfigVersion.cmake.in
    ${CMAKE_BINARY_DIR}/QorControlConfigVersion.cmake @ONLY)
install(FILES ${CMAKE_SOURCE_DIR}/cmake/package/QorControlConfig.cmake
    ${CMAKE_BINARY_DIR}/QorControlConfigVersion.cmake DESTINATION cmake COMPONENT sdk)

set(QOR_PACKAGE_FOLDER ${CMAKE_BINARY_DIR}/package)
set(QOR_PACKAGE ${QOR_PACKAGE_FOLDER}/QorControl-${PROJECT_VERSION}-win32.zip)
set(_date ${QOR_PACKAGE_FOLDER}/date)
file(MAKE_DIRECTORY ${QOR_PACKAGE_FOLDER})
string(REGEX REPLACE "gcc-posix$" "" _tools ${CMAKE_C_COMPILER})

# Tests call it, too; "work" and "out" are to follow.
set(QOR_MAKE_PACKAGE python3 -B ${CMAKE_SOURCE_DIR}/cmake/package/make.py
    --source ${CMAKE_SOURCE_DIR} --build ${CMAKE_BINARY_DIR} --version ${PROJECT_VERSION}
    --date ${_date} --mbedtls ${QOR_MBEDTLS_DIR} --uplot ${QOR_UPLOT_DIR} --httplib ${QOR_HTTPLIB_DIR} --tools ${_tools})

# A new commit has a new date.
add_custom_target(qor_package_date
    COMMAND ${CMAKE_SOURCE_DIR}/cmake/package/date.sh ${_date}
    BYPRODUCTS ${_date}
    VERBATIM)

file(GLOB _packed CONFIGURE_DEPENDS cmake/package/* docs/*.md docs/images/* examples/*
    src/qorcontrol/*.h tools/python/*.py tools/python/qorcontrol/*.py)
add_custom_command(
    OUTPUT ${QOR_PACKAGE}
    COMMAND ${QOR_MAKE_PACKAGE} --work ${QOR_PACKAGE_FOLDER}/work --out ${QOR_PACKAGE_FOLDER}
    DEPENDS ${_date} ${_packed} ${CMAKE_BINARY_DIR}/QorControlConfigVersion.cmake
        README.md CHANGELOG.md simulator/README.md simulator/qor-settings.ini
        simulator/simulator.ini simulator/models/engine.json src/cinterface/QorControl.h src/cinterface/QorControlC.def
        src/facade/QorControlFacade.h
        QorControlFacade QorControlC qorctl qor-simulator
    COMMENT "Packing ${QOR_PACKAGE}"
    VERBATIM)
add_custom_target(qor_package DEPENDS ${QOR_PACKAGE})
add_dependencies(qor_package qor_package_date)
