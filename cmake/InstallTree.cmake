# The C++ run-time DLLs. The library and its hosts share them: an exception crosses the border only
# when both use the same libgcc. They are put beside the programs, in the build and the install tree.
include_guard()
if(NOT WIN32)
    return()
endif()

file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
foreach(_dll libstdc++-6.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
    set(_copy ${CMAKE_BINARY_DIR}/bin/${_dll})
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${_dll}
        OUTPUT_VARIABLE _original OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(${_original} IS_NEWER_THAN ${_copy})
        execute_process(COMMAND ${CMAKE_STRIP} -o ${_copy} ${_original} COMMAND_ERROR_IS_FATAL ANY)
    endif()
    install(FILES ${_copy} DESTINATION bin)
endforeach()
