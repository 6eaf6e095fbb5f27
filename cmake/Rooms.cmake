# A room is one folder of TidemarkCore or Tidemark with one static library of its own.
#
# Headers are included by their bare names, and a room sees only its own folder and those of the
# rooms it DEPENDS on (with theirs). So an include against the one-way order does not compile.
function(tidemark_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;DEPENDS;LIBRARIES" ${ARGN})
    add_library(Tidemark${name} STATIC ${ROOM_SOURCES})
    target_include_directories(Tidemark${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
    list(TRANSFORM ROOM_DEPENDS PREPEND Tidemark)
    target_link_libraries(Tidemark${name}
        PUBLIC ${ROOM_DEPENDS} Qt6::Core
        PRIVATE ${ROOM_LIBRARIES} tidemark_compiler)
    tidemark_precompile(Tidemark${name} "${PROJECT_SOURCE_DIR}/cmake/CorePrecompiled.h")
endfunction()

# Precompiles `header` for `target`, where the build asks for it.
function(tidemark_precompile target header)
    if(TIDEMARK_PRECOMPILED_HEADERS)
        target_precompile_headers(${target} PRIVATE "${header}")
    endif()
endfunction()
