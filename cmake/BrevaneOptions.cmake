# They are written for the Linux edition's ports.
set(BREVANE_TESTS_DEFAULT ON)
if(APPLE)
    set(BREVANE_TESTS_DEFAULT OFF)
endif()
option(BREVANE_TESTS "Build the tests and benchmarks" ${BREVANE_TESTS_DEFAULT})
option(BREVANE_FUZZ "Build the fuzzers (needs clang)" OFF)
option(BREVANE_BATCHES "Compile several sources of a library or of the tests at once: quicker from nothing, slower after a change" OFF)
# Not for what is packaged: it is to read nothing of the folder in which it was built, which may be anybody's elsewhere.
option(BREVANE_RUNS_FROM_BUILD "Programs that are not installed find texts and descriptions in the source tree" ON)
set(BREVANE_SANITIZE "" CACHE STRING "Sanitizers, comma separated, as -fsanitize= takes them")

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(BREVANE_CCACHE ccache)
if(BREVANE_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${BREVANE_CCACHE}")
    set(CMAKE_C_COMPILER_LAUNCHER "${BREVANE_CCACHE}")
endif()

add_library(brevane_options INTERFACE)
target_include_directories(brevane_options INTERFACE "${CMAKE_SOURCE_DIR}")
option(BREVANE_WERROR "Take warnings as errors" ON)
target_compile_options(brevane_options INTERFACE
    -Wall -Wextra $<$<BOOL:${BREVANE_WERROR}>:-Werror> -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough
    -fvisibility=hidden -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
# gcc's library sorts with a function that it calls deprecated, which only clang tells.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND NOT APPLE)
    target_compile_options(brevane_options INTERFACE -Wno-deprecated-declarations)
endif()
# gcc 12 takes the alternatives of a variant that are not there for uninitialised ones.
target_compile_options(brevane_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
# lld also takes archives in any order, which lets a program choose its port of the platform last. So does Apple's linker.
if(NOT APPLE)
    target_link_options(brevane_options INTERFACE -fuse-ld=lld)
endif()

# The tests' cases are checked too, but not made fast where nobody works on them: that took half of the whole build's time.
set(is_test $<BOOL:$<TARGET_PROPERTY:BREVANE_TEST>>)
if(BREVANE_BATCHES)
    target_compile_options(brevane_options INTERFACE $<${is_test}:-O0> $<${is_test}:-g1>)
    target_compile_definitions(brevane_options INTERFACE $<${is_test}:DOCTEST_CONFIG_SUPER_FAST_ASSERTS>)
endif()

if(BREVANE_SANITIZE)
    target_compile_options(brevane_options INTERFACE
        -fsanitize=${BREVANE_SANITIZE} -fno-omit-frame-pointer -g1 $<$<NOT:${is_test}>:-O1>)
    target_link_options(brevane_options INTERFACE -fsanitize=${BREVANE_SANITIZE})
    foreach(sanitizer address thread)
        if(BREVANE_SANITIZE MATCHES ${sanitizer})
            string(TOUPPER ${sanitizer} name)
            target_compile_definitions(brevane_options INTERFACE $<${is_test}:BREVANE_${name}_SANITIZER>)
        endif()
    endforeach()
    if(BREVANE_SANITIZE MATCHES undefined)
        target_compile_options(brevane_options INTERFACE -fno-sanitize-recover=undefined)
    endif()
    # gcc's own checks hide from its warnings that a variant's alternative is set.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(brevane_options INTERFACE -Wno-maybe-uninitialized)
    endif()
    if(BREVANE_SANITIZE MATCHES thread AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(brevane_options INTERFACE -Wno-tsan)
    endif()
else()
    target_compile_options(brevane_options INTERFACE -fstack-protector-strong)
    target_compile_definitions(brevane_options INTERFACE
        $<$<AND:$<NOT:$<CONFIG:Debug>>,$<NOT:${is_test}>>:_FORTIFY_SOURCE=2>)
    if(NOT APPLE)
        target_link_options(brevane_options INTERFACE -Wl,-z,relro,-z,now)
    endif()
endif()
# A program needs nothing of what only functions call that it leaves out: they are cut off one by one.
if(NOT APPLE)
    target_compile_options(brevane_options INTERFACE -ffunction-sections -fdata-sections)
    target_link_options(brevane_options INTERFACE -Wl,--gc-sections)
    # gcc does not order a precompiled header's debug information alike each time, and a program's build ID hashes it.
    if(NOT BREVANE_RUNS_FROM_BUILD)
        target_link_options(brevane_options INTERFACE -Wl,--strip-debug)
    endif()
endif()

# Everything reports its branches to the fuzzer; only the fuzzers themselves take its main function.
if(BREVANE_FUZZ)
    target_compile_options(brevane_options INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(brevane_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
