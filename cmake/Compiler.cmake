# How every source of the project is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

find_program(TIDEMARK_CCACHE ccache)
if(TIDEMARK_CCACHE)
    # The precompiled headers make ccache miss unless it is told that they carry no time stamps.
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND};-E;env;CCACHE_SLOPPINESS=pch_defines,time_macros;${TIDEMARK_CCACHE}")
endif()

add_library(tidemark_compiler INTERFACE)
target_compile_options(tidemark_compiler INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
    -Wconversion -Wsign-conversion -Wnull-dereference -Wformat=2 -Wimplicit-fallthrough)
target_compile_definitions(tidemark_compiler INTERFACE
    _FILE_OFFSET_BITS=64 QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_CAST_FROM_BYTEARRAY QT_NO_CAST_TO_ASCII)
# A room's libraries come along with it, also into a program that uses nothing of them: tidemarkctl has no network.
target_link_options(tidemark_compiler INTERFACE -Wl,--as-needed)
if(TIDEMARK_WARNINGS_AS_ERRORS)
    target_compile_options(tidemark_compiler INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 reports accesses inside std::string and std::optional that cannot happen.
    target_compile_options(tidemark_compiler INTERFACE
        -Wno-null-dereference -Wno-restrict -Wno-stringop-overflow)
    if(TIDEMARK_PRECOMPILED_HEADERS)
        target_compile_options(tidemark_compiler INTERFACE -fpch-preprocess)
    endif()
endif()
if(TIDEMARK_SANITIZE)
    target_compile_options(tidemark_compiler INTERFACE
        -fsanitize=${TIDEMARK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(tidemark_compiler INTERFACE -fsanitize=${TIDEMARK_SANITIZE})
    # What is tested is watched by every sanitizer. The tests themselves do without the one for undefined behaviour, which
    # doubles the time to compile them.
    if(TIDEMARK_SANITIZE MATCHES undefined)
        target_compile_options(tidemark_compiler INTERFACE
            $<$<BOOL:$<TARGET_PROPERTY:TIDEMARK_IS_TEST>>:-fno-sanitize=undefined>)
    endif()
    if(TIDEMARK_SANITIZE MATCHES thread)
        add_library(tidemark_tsan OBJECT "${CMAKE_CURRENT_LIST_DIR}/ThreadSanitizer.cpp")
        target_sources(tidemark_compiler INTERFACE
            $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:tidemark_tsan>>)
    endif()
endif()
if(TIDEMARK_FUZZERS)
    # Counts the ways through the code under test, without a main() of its own.
    target_compile_options(tidemark_compiler INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    target_compile_options(tidemark_compiler INTERFACE -fstack-protector-strong)
    target_compile_definitions(tidemark_compiler INTERFACE _FORTIFY_SOURCE=2)
endif()
