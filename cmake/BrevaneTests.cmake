# All doctest cases are in three programs, by what a case stands on:
#   values     no toolkit, the scripted port
#   controls   the toolkit, off screen, and the scripted port
#   machine    the real port: bus, helper, processes, files; as root also polkit and btrfs
set(brevane_test_programs values controls machine)

# A room of the tests is a folder directly in tests/. Each of its tests has the room as a label, and the target room_NAME
# builds what they need; script/test NAME builds that and runs those.
function(brevane_room result)
    file(RELATIVE_PATH path "${CMAKE_SOURCE_DIR}/tests" "${CMAKE_CURRENT_SOURCE_DIR}")
    string(REGEX REPLACE "/.*" "" room "${path}")
    if(NOT TARGET room_${room})
        add_custom_target(room_${room})
    endif()
    set(${result} "${room}" PARENT_SCOPE)
endfunction()

# A test of this folder's room that is no doctest case: COMMAND runs it, NEEDS are the targets that must be built. Of
# several tests those with the higher COST begin first.
function(brevane_command_test sentence)
    cmake_parse_arguments(ARG "" "TIMEOUT;PROCESSORS;COST" "COMMAND;NEEDS;ENVIRONMENT" ${ARGN})
    brevane_room(room)
    if(ARG_NEEDS)
        add_dependencies(room_${room} ${ARG_NEEDS})
    endif()
    add_test(NAME "${sentence}" COMMAND ${ARG_COMMAND})
    set(properties LABELS ${room} SKIP_REGULAR_EXPRESSION "SKIPPED:")
    foreach(property TIMEOUT PROCESSORS COST ENVIRONMENT)
        if(ARG_${property})
            list(APPEND properties ${property} "${ARG_${property}}")
        endif()
    endforeach()
    set_tests_properties("${sentence}" PROPERTIES ${properties})
endfunction()

# The doctest cases of SOURCES (every source of this folder by default), in the PROGRAM of that name. Each becomes a CTest
# test under its room's name and its own sentence, and runs in a process of its own, with ENVIRONMENT. A case that can't
# run on a machine prints "SKIPPED: why" and is counted as skipped.
#   WINDOWS      in the machine's program: the toolkit's application is there for the cases of the suite "windows"
#   APART        the sources use the same words for different things, so they are never compiled at once
#   THREADS      code that runs on several threads, which is what the thread sanitizer's run is for
# The target NAME is a program of these cases alone, for whoever works on their room; `all` leaves it out.
# target_compile_definitions, target_link_options and add_dependencies of NAME hold in both programs.
function(brevane_test name)
    cmake_parse_arguments(ARG "RUN_SERIAL;WINDOWS;APART;THREADS" "PROGRAM;TIMEOUT" "SOURCES;LINKS;ENVIRONMENT" ${ARGN})
    if(NOT ARG_PROGRAM IN_LIST brevane_test_programs OR ARG_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "brevane_test(${name} PROGRAM values|controls|machine ...): ${ARG_UNPARSED_ARGUMENTS}")
    endif()
    if(NOT ARG_SOURCES)
        file(GLOB ARG_SOURCES CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    endif()
    set(main brevane_${ARG_PROGRAM}_main)
    set(precompiled brevane_precompiled_tests)
    if(ARG_PROGRAM STREQUAL "controls" OR ARG_WINDOWS)
        set(precompiled brevane_precompiled_windows)
        list(APPEND ARG_LINKS brevane_ui_user brevane_ui Qt6::Test)
    elseif(ARG_PROGRAM STREQUAL "machine")
        set(main brevane_values_main)
    endif()
    brevane_room(room)

    add_library(${name}_cases OBJECT ${ARG_SOURCES})
    target_link_libraries(${name}_cases PUBLIC brevane_options ${ARG_LINKS} doctest::doctest)
    target_compile_definitions(${name}_cases PRIVATE $<TARGET_PROPERTY:${name},COMPILE_DEFINITIONS>)
    if(BREVANE_BATCHES AND NOT ARG_APART)
        brevane_batch(${name}_cases 6)
        # What the cases stand on has words of its own.
        set(others ${ARG_SOURCES})
        list(FILTER others EXCLUDE REGEX "Tests\\.cpp$")
        if(others)
            set_source_files_properties(${others} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
        endif()
    endif()
    brevane_use_precompiled(${name}_cases ${precompiled})

    add_executable(${name} EXCLUDE_FROM_ALL)
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
    # Both, since the one's definitions are read through the other.
    set_target_properties(${name}_cases ${name} PROPERTIES BREVANE_TEST ON)
    target_link_libraries(${name} PRIVATE ${name}_cases ${main})
    add_dependencies(room_${room} ${name})

    set(labels ${room})
    if(ARG_THREADS)
        list(APPEND labels threads)
    endif()
    brevane_describe_part(${name} "${room}" "${labels}")
    brevane_discover(${name} "${CMAKE_CURRENT_BINARY_DIR}/${name}.json")
    # A run with the thread sanitizer leaves out what has one thread.
    if(ARG_THREADS OR NOT BREVANE_SANITIZE MATCHES thread)
        set_property(GLOBAL APPEND PROPERTY brevane_parts_${ARG_PROGRAM} ${name})
        set_property(GLOBAL APPEND PROPERTY brevane_descriptions_${ARG_PROGRAM} "${CMAKE_CURRENT_BINARY_DIR}/${name}.json")
    endif()
endfunction()

# Runs all the cases of the part NAME in one process under the sentence, with an ENVIRONMENT of its own. They are no tests
# by themselves then.
function(brevane_whole_test name sentence)
    cmake_parse_arguments(ARG "" "" "ENVIRONMENT" ${ARGN})
    list(JOIN ARG_ENVIRONMENT "|" environment)
    set_property(TARGET ${name} APPEND PROPERTY BREVANE_WHOLE "[\"${sentence}\", \"${environment}\"]")
endfunction()

# Writes what discover_tests.py has to know about a part, from the variables of brevane_test.
macro(brevane_describe_part name room labels)
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    set(sources)
    foreach(source IN LISTS ARG_SOURCES)
        get_filename_component(source "${source}" ABSOLUTE)
        file(RELATIVE_PATH source "${CMAKE_SOURCE_DIR}" "${source}")
        list(APPEND sources "${source}")
    endforeach()
    list(JOIN sources "\", \"" sources)
    set(serial "")
    if(ARG_RUN_SERIAL)
        set(serial TRUE)
    endif()
    set(tests "${CMAKE_CURRENT_BINARY_DIR}/${name}.tests.cmake")
    file(GENERATE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/${name}.json" CONTENT "{
  \"room\": \"${room}\",
  \"sources\": [\"${sources}\"],
  \"whole\": [$<JOIN:$<TARGET_PROPERTY:${name},BREVANE_WHOLE>,$<COMMA> >],
  \"environment\": \"${ARG_ENVIRONMENT}\",
  \"properties\": {\"TIMEOUT\": \"${ARG_TIMEOUT}\", \"SKIP_REGULAR_EXPRESSION\": \"SKIPPED:\", \"LABELS\": \"${labels}\", \"RUN_SERIAL\": \"${serial}\"},
  \"tests\": \"${tests}\"
}
")
    file(WRITE "${tests}.in" "if(EXISTS [==[${tests}]==])
    include([==[${tests}]==])
else()
    add_test([==[${room}: ${name} is built]==] false)
endif()
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${tests}.in")
endmacro()

function(brevane_discover program)
    add_custom_command(TARGET ${program} POST_BUILD COMMAND "${Python3_EXECUTABLE}" -B
        "${CMAKE_SOURCE_DIR}/cmake/discover_tests.py" "$<TARGET_FILE:${program}>" ${ARGN} VERBATIM)
endfunction()

# The three programs, when every room has said what is in them.
function(brevane_add_test_programs)
    foreach(program IN LISTS brevane_test_programs)
        get_property(parts GLOBAL PROPERTY brevane_parts_${program})
        get_property(descriptions GLOBAL PROPERTY brevane_descriptions_${program})
        add_executable(brevane_${program}_tests)
        set_target_properties(brevane_${program}_tests PROPERTIES LINKER_LANGUAGE CXX)
        add_dependencies(brevane_threaded_tests brevane_${program}_tests)
        foreach(part IN LISTS parts)
            target_link_libraries(brevane_${program}_tests PRIVATE ${part}_cases)
            target_link_options(brevane_${program}_tests PRIVATE $<TARGET_PROPERTY:${part},LINK_OPTIONS>)
            get_target_property(needs ${part} MANUALLY_ADDED_DEPENDENCIES)
            if(needs)
                add_dependencies(brevane_${program}_tests ${needs})
            endif()
        endforeach()
        target_link_libraries(brevane_${program}_tests PRIVATE brevane_${program}_main)
        brevane_discover(brevane_${program}_tests ${descriptions})
    endforeach()
endfunction()
