# A fuzzer: SOURCE defines LLVMFuzzerTestOneInput, CORPUS_FOLDER holds the saved inputs. Always makes a test that runs
# every saved input once; with BREVANE_FUZZ also the program NAME that searches for new ones.
function(brevane_fuzzer name SOURCE CORPUS_FOLDER)
    get_filename_component(corpus "${CORPUS_FOLDER}" ABSOLUTE)
    add_executable(${name}_replay "${SOURCE}" "${CMAKE_SOURCE_DIR}/tests/fuzz/replay/Replay.cpp")
    target_link_libraries(${name}_replay PRIVATE brevane_options ${ARGN})
    add_test(NAME "${name}: every saved input is taken without harm" COMMAND ${name}_replay "${corpus}")
    set_tests_properties("${name}: every saved input is taken without harm" PROPERTIES TIMEOUT 120)
    if(BREVANE_FUZZ)
        add_executable(${name} "${SOURCE}")
        target_link_libraries(${name} PRIVATE brevane_options ${ARGN})
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    endif()
endfunction()
