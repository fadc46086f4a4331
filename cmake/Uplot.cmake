# uPlot, which draws the page of "qorctl watch --plot": QOR_UPLOT_DIR is where its files are. They
# come from npm (see fetch-npm.sh), stay outside the tree and are built into qorctl.
if(NOT WIN32)
    return()
endif()

execute_process(
    COMMAND ${CMAKE_SOURCE_DIR}/cmake/fetch-npm.sh uplot
    OUTPUT_VARIABLE _uplotFolder
    OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE _uplotResult)
if(NOT _uplotResult EQUAL 0)
    message(FATAL_ERROR "uPlot is missing (see the line above)")
endif()
set(QOR_UPLOT_DIR "${_uplotFolder}" CACHE INTERNAL "where ./run checks that it has not moved")
