# A room's library: every source directly in the named folders (relative to this one; "." by default).
# With BREVANE_BATCHES several sources are compiled at once, so those of one library have no names in common.
#   APART   they have: each is compiled by itself
function(brevane_library name)
    cmake_parse_arguments(ARG "APART" "PRECOMPILED" "FOLDERS;LINKS" ${ARGN})
    if(NOT ARG_FOLDERS)
        set(ARG_FOLDERS .)
    endif()
    set(sources)
    foreach(folder IN LISTS ARG_FOLDERS)
        file(GLOB found CONFIGURE_DEPENDS
            "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp" "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.mm")
        list(APPEND sources ${found})
    endforeach()
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC brevane_options ${ARG_LINKS})
    if(NOT ARG_PRECOMPILED)
        set(ARG_PRECOMPILED brevane_precompiled_values)
    endif()
    brevane_use_precompiled(${name} ${ARG_PRECOMPILED})
    if(NOT ARG_APART)
        brevane_batch(${name} 8)
    endif()
endfunction()

# Compiles so many of the target's sources at once, where that is wanted.
function(brevane_batch target count)
    if(BREVANE_BATCHES)
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${count})
        # A batch includes its sources, so what is a source's own looks like a header's to gcc.
        target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
    endif()
endfunction()
