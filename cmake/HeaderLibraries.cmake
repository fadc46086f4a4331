# deps::json, deps::cli11, deps::fmt: libraries of the system that are headers.
# They lie in /usr/include among the headers of the native C library, which the cross compiler must
# never see. So each gets a folder of its own in the build tree with one link to its headers.
function(_qor_header_library name headerFolder package)
    if(NOT EXISTS /usr/include/${headerFolder})
        message(FATAL_ERROR "/usr/include/${headerFolder} is missing: install the package ${package}")
    endif()
    set(shim ${CMAKE_BINARY_DIR}/deps/${name})
    file(MAKE_DIRECTORY ${shim})
    file(CREATE_LINK /usr/include/${headerFolder} ${shim}/${headerFolder} SYMBOLIC)
    # The compiler takes the shorter of the two names, which depends on how it was told of the folder.
    qor_call_folder(deps/${name}/${headerFolder} toolchain/include/${headerFolder})
    add_library(deps_${name} INTERFACE)
    add_library(deps::${name} ALIAS deps_${name})
    target_include_directories(deps_${name} SYSTEM INTERFACE ${shim})
endfunction()

_qor_header_library(json nlohmann nlohmann-json3-dev)
_qor_header_library(cli11 CLI libcli11-dev)
_qor_header_library(fmt fmt libfmt-dev)

# What fmt's headers only declare is compiled here, once: as FMT_HEADER_ONLY it would be in each
# source, which doubles the time that a small one takes.
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/deps/fmt/format.cpp CONTENT
"#include <fmt/format-inl.h>
FMT_BEGIN_NAMESPACE
namespace detail {
template FMT_API auto dragonbox::to_decimal(float) noexcept -> dragonbox::decimal_fp<float>;
template FMT_API auto dragonbox::to_decimal(double) noexcept -> dragonbox::decimal_fp<double>;
template FMT_API locale_ref::locale_ref(const std::locale&);
template FMT_API auto locale_ref::get<std::locale>() const -> std::locale;
template FMT_API auto thousands_sep_impl(locale_ref) -> thousands_sep_result<char>;
template FMT_API auto decimal_point_impl(locale_ref) -> char;
template FMT_API void buffer<char>::append(const char*, const char*);
template FMT_API void vformat_to(buffer<char>&, string_view,
    basic_format_args<FMT_BUFFER_CONTEXT(char)>, locale_ref);
}
FMT_END_NAMESPACE
")
add_library(deps_fmt_compiled STATIC EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/deps/fmt/format.cpp)
target_include_directories(deps_fmt_compiled SYSTEM PRIVATE ${CMAKE_BINARY_DIR}/deps/fmt)
target_link_libraries(deps_fmt INTERFACE deps_fmt_compiled)
