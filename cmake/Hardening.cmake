# What stands between a fault of ours and somebody who can use it. The checked functions are in gcc's
# libssp, its guard is our own (StackGuard.c). Address space layout, data execution prevention and
# relocations are the linker's defaults; tests/package/hardening_test.py holds each file against all of it.
if(NOT WIN32)
    macro(qor_harden_folder)
    endmacro()
    return()
endif()

add_library(qor_stack_guard STATIC ${CMAKE_SOURCE_DIR}/cmake/StackGuard.c)
target_compile_options(qor_stack_guard PRIVATE -Wall -Wextra -Werror)
target_link_libraries(qor_stack_guard INTERFACE -l:libssp.a)
target_link_libraries(qor_options INTERFACE qor_stack_guard)

# qor_harden_folder(): all targets of this folder and of those below it. Not the tests: half of the
# build's time goes into them.
set(QOR_HARDENING -fstack-protector-strong $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
macro(qor_harden_folder)
    add_compile_options(${QOR_HARDENING})
endmacro()

target_compile_options(havege PRIVATE -fstack-protector-strong)
target_link_libraries(havege PRIVATE qor_stack_guard)
