# A fuzzer: SOURCE defines LLVMFuzzerTestOneInput, CORPUS_FOLDER holds the saved inputs: corpus.tar.xz, and beside it
# those that a name explains. Always makes a test that runs every saved input once; with BREVANE_FUZZ also the program
# NAME that searches for new ones, which script/fuzz runs and saves the finds of.
find_package(LibArchive REQUIRED)
set(replay "${CMAKE_SOURCE_DIR}/tests/fuzz/replay")
add_library(brevane_saved_inputs STATIC "${replay}/SavedInputs.cpp")
target_link_libraries(brevane_saved_inputs PUBLIC brevane_options PRIVATE LibArchive::LibArchive)
add_library(brevane_fuzz_replay STATIC "${replay}/Replay.cpp")
target_link_libraries(brevane_fuzz_replay PUBLIC brevane_saved_inputs)

function(brevane_fuzzer name SOURCE CORPUS_FOLDER)
    get_filename_component(corpus "${CORPUS_FOLDER}" ABSOLUTE)
    add_executable(${name}_replay "${SOURCE}")
    target_link_libraries(${name}_replay PRIVATE brevane_fuzz_replay ${ARGN})
    brevane_command_test("${name}: every saved input is taken without harm" COMMAND ${name}_replay "${corpus}"
        NEEDS ${name}_replay TIMEOUT 120)
    if(BREVANE_FUZZ)
        add_dependencies(brevane_fuzzers ${name})
        add_executable(${name} "${SOURCE}")
        target_link_libraries(${name} PRIVATE brevane_options ${ARGN})
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
        # What script/fuzz looks for.
        file(GENERATE OUTPUT "${CMAKE_BINARY_DIR}/fuzzers/${name}" CONTENT "$<TARGET_FILE:${name}>\n${corpus}\n")
    endif()
endfunction()
