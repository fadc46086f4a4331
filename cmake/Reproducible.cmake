# Two builds of one commit are the same bytes, wherever they are made: no time, and no folder of this
# machine, gets into an object, a DLL or a program. In debug information and in texts of assertions the
# checkout is called /qor-control (gdb: set substitute-path /qor-control FOLDER).

# qor_call_folder(folder name): for what is compiled for Windows in the present folder and below. Of two
# maps that fit, the later one counts.
function(qor_call_folder folder name)
    if(NOT WIN32)
        return()
    endif()
    add_compile_options("$<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${folder}=${name}>")
endfunction()

# qor_call_checkout(name): a compiler cache may have made relative paths of what CMake says.
function(qor_call_checkout name)
    file(RELATIVE_PATH toSource ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR})
    string(REGEX REPLACE "/$" "" toSource ${toSource})
    qor_call_folder(${toSource} ${name})
    qor_call_folder(${CMAKE_SOURCE_DIR} ${name})
endfunction()

if(NOT WIN32)
    return()
endif()
qor_call_folder(/usr/ toolchain/)
qor_call_checkout(/qor-control)
qor_call_folder(${CMAKE_BINARY_DIR} /qor-control/build)
qor_call_folder(deps/ /qor-control/build/deps/)
add_link_options(-Wl,--no-insert-timestamp)
foreach(_language C CXX)
    string(REPLACE " qc " " qcD " CMAKE_${_language}_ARCHIVE_CREATE
        "${CMAKE_${_language}_ARCHIVE_CREATE}")
    string(REPLACE "<CMAKE_RANLIB> " "<CMAKE_RANLIB> -D " CMAKE_${_language}_ARCHIVE_FINISH
        "${CMAKE_${_language}_ARCHIVE_FINISH}")
endforeach()
