# Flags that every target shares. A warning is an error: whoever adds one sees it first.
add_library(tidewell_flags INTERFACE)
target_compile_options(tidewell_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual -Wold-style-cast -Wcast-align -Wimplicit-fallthrough -Wformat=2 -Werror
    -fno-omit-frame-pointer
    # A precompiled header fits only sources with the same flags. CMake's own property says -fPIE to programs,
    # and GLib's flags say -pthread.
    -fPIC -pthread)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # Aggregates leave out members that have a default; that is what the defaults are for.
    target_compile_options(tidewell_flags INTERFACE
        -Wextra-semi -Wno-missing-field-initializers -Wno-missing-designated-field-initializers)
else()
    target_compile_options(tidewell_flags INTERFACE -Wno-missing-field-initializers)
endif()
if(NOT TIDEWELL_SANITIZE)
    target_compile_definitions(tidewell_flags INTERFACE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
endif()

find_program(TIDEWELL_LLD NAMES ld.lld-19 ld.lld)
if(TIDEWELL_LLD AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_link_options(tidewell_flags INTERFACE --ld-path=${TIDEWELL_LLD})
endif()
target_link_options(tidewell_flags INTERFACE -Wl,--as-needed -Wl,-z,relro,-z,now)

if(TIDEWELL_SANITIZE)
    target_compile_options(tidewell_flags INTERFACE
        -fsanitize=${TIDEWELL_SANITIZE} -fno-sanitize-recover=all)
    target_link_options(tidewell_flags INTERFACE -fsanitize=${TIDEWELL_SANITIZE})
endif()
if(TIDEWELL_COVERAGE)
    target_compile_options(tidewell_flags INTERFACE -fprofile-instr-generate -fcoverage-mapping)
    target_link_options(tidewell_flags INTERFACE -fprofile-instr-generate)
endif()

# ccache with precompiled headers needs these allowances; see "Precompiled headers" in its manual.
find_program(TIDEWELL_CCACHE ccache)
if(TIDEWELL_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} ${TIDEWELL_CCACHE})
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        target_compile_options(tidewell_flags INTERFACE "SHELL:-Xclang -fno-pch-timestamp")
    endif()
endif()
