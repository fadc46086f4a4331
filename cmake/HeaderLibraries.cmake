# deps::json, deps::cli11, deps::fmt: header-only libraries of the system.
# They lie in /usr/include among the headers of the native C library, which the cross compiler must
# never see. So each gets a folder of its own in the build tree with one link to its headers.
function(_qor_header_library name headerFolder package)
    if(NOT EXISTS /usr/include/${headerFolder})
        message(FATAL_ERROR "/usr/include/${headerFolder} is missing: install the package ${package}")
    endif()
    set(shim ${CMAKE_BINARY_DIR}/deps/${name})
    file(MAKE_DIRECTORY ${shim})
    file(CREATE_LINK /usr/include/${headerFolder} ${shim}/${headerFolder} SYMBOLIC)
    add_library(deps_${name} INTERFACE)
    add_library(deps::${name} ALIAS deps_${name})
    target_include_directories(deps_${name} SYSTEM INTERFACE ${shim})
endfunction()

_qor_header_library(json nlohmann nlohmann-json3-dev)
_qor_header_library(cli11 CLI libcli11-dev)
_qor_header_library(fmt fmt libfmt-dev)
target_compile_definitions(deps_fmt INTERFACE FMT_HEADER_ONLY)
