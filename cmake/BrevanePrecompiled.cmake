# What most sources include, compiled once: a build from nothing takes less than half of the time, and so does every
# single source.
option(BREVANE_PRECOMPILE "Precompile the headers that most sources include" OFF)

# brevane_precompiled(NAME HEADERS...): a set of headers; brevane_use_precompiled(TARGET NAME) compiles a target's
# sources with them. Both do nothing when it is off.
function(brevane_precompiled name)
    cmake_parse_arguments(ARG "TEST" "" "HEADERS;LINKS;DEFINITIONS" ${ARGN})
    if(NOT BREVANE_PRECOMPILE)
        return()
    endif()
    file(WRITE "${CMAKE_BINARY_DIR}/precompiled/${name}.cpp" "")
    add_library(${name} OBJECT "${CMAKE_BINARY_DIR}/precompiled/${name}.cpp")
    target_link_libraries(${name} PRIVATE brevane_options ${ARG_LINKS})
    target_compile_definitions(${name} PRIVATE ${ARG_DEFINITIONS})
    target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
    set_target_properties(${name} PROPERTIES BREVANE_TEST ${ARG_TEST})
endfunction()

function(brevane_use_precompiled target name)
    if(BREVANE_PRECOMPILE)
        target_precompile_headers(${target} REUSE_FROM ${name})
        add_dependencies(${target} ${name})
    endif()
endfunction()

# Programs and libraries take the same headers only if they are compiled alike; ccache must be told what it may ignore.
if(BREVANE_PRECOMPILE)
    target_compile_options(brevane_options INTERFACE -fPIC -Winvalid-pch)
    if(BREVANE_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${BREVANE_CCACHE}")
    endif()
endif()

set(brevane_standard_headers
    <algorithm> <array> <atomic> <chrono> <cstdint> <expected> <functional> <initializer_list> <map> <memory> <mutex>
    <optional> <set> <span> <string> <string_view> <thread> <tuple> <type_traits> <unordered_map> <utility> <variant> <vector>)
brevane_precompiled(brevane_precompiled_values HEADERS ${brevane_standard_headers}
    "${CMAKE_SOURCE_DIR}/platform/Error.h" "${CMAKE_SOURCE_DIR}/platform/PropertyList.h")
if(BREVANE_TESTS)
    find_package(doctest REQUIRED)
    brevane_precompiled(brevane_precompiled_tests TEST LINKS doctest::doctest HEADERS ${brevane_standard_headers}
        <doctest/doctest.h> "${CMAKE_SOURCE_DIR}/platform/Error.h" "${CMAKE_SOURCE_DIR}/platform/PropertyList.h")
endif()
if(NOT APPLE)
    find_package(Qt6 REQUIRED COMPONENTS Core Gui Widgets)
    brevane_precompiled(brevane_precompiled_ui LINKS Qt6::Widgets DEFINITIONS QT_NO_KEYWORDS HEADERS ${brevane_standard_headers} <QtWidgets/QtWidgets>)
    if(BREVANE_TESTS)
        brevane_precompiled(brevane_precompiled_windows TEST LINKS Qt6::Widgets doctest::doctest
            DEFINITIONS QT_NO_KEYWORDS HEADERS ${brevane_standard_headers} <doctest/doctest.h> <QtWidgets/QtWidgets>)
    endif()
endif()
