# What a build for macOS has that others have not: Objective-C++, and the application's bundle.
enable_language(OBJCXX)
set(CMAKE_OBJCXX_STANDARD 23)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
set(CMAKE_OBJCXX_EXTENSIONS OFF)
if(BREVANE_CCACHE)
    set(CMAKE_OBJCXX_COMPILER_LAUNCHER "${BREVANE_CCACHE}")
endif()

target_compile_options(brevane_options INTERFACE
    -Werror=unguarded-availability
    $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc> $<$<COMPILE_LANGUAGE:OBJCXX>:-Wno-gnu-zero-variadic-macro-arguments>)
target_link_options(brevane_options INTERFACE -Wl,-dead_strip)

# CFBundleVersion: the release and, counted up by whoever packages it, the build.
set(BREVANE_BUILD_NUMBER 1 CACHE STRING "Number of the build within the release")

# Gives a program without a bundle the property list that names it and its version, and links it with what it uses alone: a
# daemon must not load what windows need.
function(brevane_tool target)
    get_target_property(BREVANE_TOOL ${target} OUTPUT_NAME)
    set(made "${CMAKE_CURRENT_BINARY_DIR}/${BREVANE_TOOL}.plist")
    configure_file("${CMAKE_SOURCE_DIR}/resources/macos/Tool.plist.in" "${made}" @ONLY)
    target_link_options(${target} PRIVATE "LINKER:-sectcreate,__TEXT,__info_plist,${made}" -Wl,-dead_strip_dylibs)
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${made}")
endfunction()

# Makes the program Brevane.app, with its texts, icon and help.
function(brevane_bundle target)
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    find_program(BREVANE_RSVG rsvg-convert REQUIRED)
    set(resources "${CMAKE_SOURCE_DIR}/resources")
    set(made "${CMAKE_CURRENT_BINARY_DIR}/bundle")
    set(BREVANE_MINIMUM_ON_APPLE_PROCESSORS "${CMAKE_OSX_DEPLOYMENT_TARGET}")
    if(CMAKE_OSX_DEPLOYMENT_TARGET VERSION_LESS 11.0)
        set(BREVANE_MINIMUM_ON_APPLE_PROCESSORS 11.0) # the first system for them
    endif()
    configure_file("${resources}/macos/Help.plist.in" "${made}/Help.plist" @ONLY)
    configure_file("${resources}/macos/Info.plist.in" "${made}/Info.plist" @ONLY)
    add_custom_command(OUTPUT "${made}/Brevane.icns"
        COMMAND "${Python3_EXECUTABLE}" "${CMAKE_SOURCE_DIR}/script/macos/icon.py"
            "${resources}/icon/brevane.svg" "${made}/Brevane.icns"
        DEPENDS "${resources}/icon/brevane.svg" "${CMAKE_SOURCE_DIR}/script/macos/icon.py" VERBATIM)
    add_custom_target(${target}_icon DEPENDS "${made}/Brevane.icns")
    add_dependencies(${target} ${target}_icon)

    set_target_properties(${target} PROPERTIES OUTPUT_NAME Brevane MACOSX_BUNDLE ON
        MACOSX_BUNDLE_INFO_PLIST "${made}/Info.plist")
    set(contents "$<TARGET_BUNDLE_CONTENT_DIR:${target}>")
    set(help "${contents}/Resources/Brevane.help/Contents")
    set(commands COMMAND "${CMAKE_COMMAND}" -E copy_if_different "${made}/Brevane.icns" "${contents}/Resources/Brevane.icns"
        COMMAND "${CMAKE_COMMAND}" -E copy_if_different "${made}/Help.plist" "${help}/Info.plist"
        COMMAND "${CMAKE_COMMAND}" -E copy_if_different "${resources}/help/help.css" "${help}/Resources/help.css")
    file(GLOB books CONFIGURE_DEPENDS "${resources}/help/*/index.html")
    foreach(book IN LISTS books)
        get_filename_component(folder "${book}" DIRECTORY)
        get_filename_component(name "${folder}" NAME)
        list(APPEND commands COMMAND "${CMAKE_COMMAND}" -E copy_directory "${folder}" "${help}/Resources/${name}.lproj")
    endforeach()
    file(GLOB languages CONFIGURE_DEPENDS "${resources}/*.lproj")
    foreach(language IN LISTS languages)
        get_filename_component(name "${language}" NAME)
        list(APPEND commands COMMAND "${CMAKE_COMMAND}" -E copy_directory "${language}" "${contents}/Resources/${name}")
    endforeach()
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${help}/Resources" ${commands} VERBATIM)
endfunction()
