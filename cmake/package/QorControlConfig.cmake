# find_package(QorControl [COMPONENTS C] [Facade]), from the unzipped package or an install tree:
#
#   QorControl::C       QorControlC.dll, for any compiler; header QorControl.h
#   QorControl::Facade  QorControlFacade.dll, for mingw-w64's g++ 12 with POSIX threads only;
#                       header QorControlFacade.h
#
# qor_control_copy_dlls(target) puts what the target needs of them beside it after each build.
cmake_policy(VERSION 3.5)
get_filename_component(_qorControlRoot "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)

set(QorControl_RUNTIME_DLLS)
foreach(_dll libstdc++-6.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
    list(APPEND QorControl_RUNTIME_DLLS "${_qorControlRoot}/bin/${_dll}")
endforeach()

# Of two import libraries the linker gets its own kind.
set(_qorControlCLibrary "${_qorControlRoot}/lib/QorControlC.lib")
if(MINGW)
    set(_qorControlCLibrary "${_qorControlRoot}/lib/libQorControlC.dll.a")
endif()

macro(_qor_control_import name dll library)
    if(NOT TARGET QorControl::${name})
        add_library(QorControl::${name} SHARED IMPORTED)
        set_target_properties(QorControl::${name} PROPERTIES
            IMPORTED_LOCATION "${_qorControlRoot}/bin/${dll}"
            IMPORTED_IMPLIB "${library}"
            INTERFACE_INCLUDE_DIRECTORIES "${_qorControlRoot}/include")
    endif()
    set(QorControl_${name}_FOUND TRUE)
endmacro()

if(EXISTS "${_qorControlCLibrary}")
    _qor_control_import(C QorControlC.dll "${_qorControlCLibrary}")
endif()
# A C++ class, and the exceptions and containers of its interface, are one compiler's affair.
if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    _qor_control_import(Facade QorControlFacade.dll
        "${_qorControlRoot}/lib/libQorControlFacade.dll.a")
    set_property(TARGET QorControl::Facade PROPERTY INTERFACE_COMPILE_FEATURES cxx_std_17)
endif()

foreach(_component IN LISTS QorControl_FIND_COMPONENTS)
    if(QorControl_FIND_REQUIRED_${_component} AND NOT QorControl_${_component}_FOUND)
        set(QorControl_FOUND FALSE)
        set(QorControl_NOT_FOUND_MESSAGE
            "QorControl has no ${_component} for this compiler; QorControl::C is for every one.")
    endif()
endforeach()

# _qor_control_libraries(target variable): which of the two the target needs, itself or through libraries
# of the host's, of whatever kind.
function(_qor_control_libraries target variable)
    set(found)
    set(seen)
    set(open ${target})
    while(open)
        list(GET open 0 library)
        list(REMOVE_AT open 0)
        # As CMake notes private dependencies, and as authors do what is only for the build.
        string(REGEX REPLACE "^\\$<(LINK_ONLY|BUILD_INTERFACE):(.*)>$" "\\2" library "${library}")
        if(library IN_LIST seen OR NOT TARGET "${library}")
            continue()
        endif()
        list(APPEND seen "${library}")
        if(library MATCHES "^QorControl::(C|Facade)$")
            list(APPEND found ${CMAKE_MATCH_1})
            continue()
        endif()
        get_target_property(more "${library}" INTERFACE_LINK_LIBRARIES)
        if(more)
            list(APPEND open ${more})
        endif()
        get_target_property(type "${library}" TYPE)
        get_target_property(imported "${library}" IMPORTED)
        if(NOT type STREQUAL "INTERFACE_LIBRARY" AND NOT imported)
            get_target_property(more "${library}" LINK_LIBRARIES)
            if(more)
                list(APPEND open ${more})
            endif()
        endif()
    endwhile()
    set(${variable} ${found} PARENT_SCOPE)
endfunction()

function(qor_control_copy_dlls target)
    _qor_control_libraries(${target} names)
    if(NOT names)
        message(FATAL_ERROR "qor_control_copy_dlls: ${target} is linked to neither QorControl::C nor "
            "QorControl::Facade. Call it behind target_link_libraries.")
    endif()
    set(dlls)
    foreach(name IN LISTS names)
        list(APPEND dlls "$<TARGET_FILE:QorControl::${name}>")
    endforeach()
    if("Facade" IN_LIST names)
        list(APPEND dlls ${QorControl_RUNTIME_DLLS})
    endif()
    add_custom_command(TARGET ${target} POST_BUILD VERBATIM
        COMMAND ${CMAKE_COMMAND} -E copy_if_different ${dlls} "$<TARGET_FILE_DIR:${target}>")
endfunction()
