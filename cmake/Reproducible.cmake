# Two builds of one commit are the same bytes, wherever they are made: no time, and no folder of this
# machine, gets into an object, a DLL or a program. In debug information and in texts of assertions the
# checkout is called /qor-control (gdb: set substitute-path /qor-control FOLDER).
if(NOT WIN32)
    return()
endif()

# qor_hide_folder(FOLDER NAME): for what is compiled in the present folder and below. Of two maps that
# fit, the later one counts.
function(qor_hide_folder folder name)
    add_compile_options("$<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${folder}=${name}>")
endfunction()

qor_hide_folder(/usr/ toolchain/)
qor_hide_folder(${CMAKE_SOURCE_DIR} /qor-control)
qor_hide_folder(${CMAKE_BINARY_DIR} /qor-control/build)
add_link_options(-Wl,--no-insert-timestamp)
foreach(_language C CXX)
    string(REPLACE " qc " " qcD " CMAKE_${_language}_ARCHIVE_CREATE
        "${CMAKE_${_language}_ARCHIVE_CREATE}")
    string(REPLACE "<CMAKE_RANLIB> " "<CMAKE_RANLIB> -D " CMAKE_${_language}_ARCHIVE_FINISH
        "${CMAKE_${_language}_ARCHIVE_FINISH}")
endforeach()
