# The layout of an installation: `cmake --install BUILD --component brevane --prefix ROOT` makes it, and the packages of
# updates hold the same. All of a version is in one folder; the other fixed paths lead into it.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(product Library/Brevane)
set(installed_targets brevane_scheduler_helper brevane_backup_daemon brevane_post_update brevane brevane_log_tool
    brevane_agent_program)
foreach(target IN LISTS installed_targets)
    if(NOT TARGET ${target})
        list(REMOVE_ITEM installed_targets ${target})
    endif()
endforeach()

# What script/run and packages need to be built.
add_custom_target(brevane_installation DEPENDS ${installed_targets})

# First of all, so that what was there before is known.
install(CODE "
    set(brevane_root \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
    set(brevane_made)
    foreach(folder . Library Library/LaunchDaemons Library/Preferences Library/Logs Library/Logs/Brevane usr usr/bin)
        if(NOT IS_DIRECTORY \"\${brevane_root}/\${folder}\")
            list(APPEND brevane_made \${folder})
            file(MAKE_DIRECTORY \"\${brevane_root}/\${folder}\")
        endif()
    endforeach()" COMPONENT brevane)

foreach(target IN LISTS installed_targets)
    if(target MATCHES "helper|backup_daemon|post_update")
        install(TARGETS ${target} RUNTIME DESTINATION ${product} COMPONENT brevane)
    else()
        install(TARGETS ${target} RUNTIME DESTINATION ${product}/bin COMPONENT brevane)
    endif()
endforeach()
install(DIRECTORY "${CMAKE_SOURCE_DIR}/resources/" DESTINATION ${product}/share/brevane/resources COMPONENT brevane
    PATTERN linux EXCLUDE PATTERN macos EXCLUDE PATTERN programs EXCLUDE PATTERN "*.txt" EXCLUDE)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/resources/programs" DESTINATION ${product}/share/brevane COMPONENT brevane)
install(FILES "${CMAKE_SOURCE_DIR}/resources/linux/com.zerkolin.brevane.scheduler.plist"
    DESTINATION ${product}/LaunchDaemons COMPONENT brevane)
file(GLOB system_files CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/resources/linux/com.zerkolin.brevane*")
list(FILTER system_files EXCLUDE REGEX "\\.plist$")
install(FILES ${system_files} DESTINATION ${product}/share/system COMPONENT brevane)
install(FILES "${CMAKE_SOURCE_DIR}/resources/icon/brevane.svg" DESTINATION ${product}/share/system COMPONENT brevane
    RENAME com.zerkolin.brevane.application.svg)

# Last: the list of all of it, and the links.
install(CODE "
    execute_process(COMMAND \"${Python3_EXECUTABLE}\" \"${CMAKE_SOURCE_DIR}/cmake/manifest.py\"
        --root \"\${brevane_root}\" --version \"${PROJECT_VERSION}.${BREVANE_BUILD_NUMBER}\"
        --human-version \"${PROJECT_VERSION}\" --prefix \"\${CMAKE_INSTALL_PREFIX}\"
        --folders \${brevane_made} --files \${CMAKE_INSTALL_MANIFEST_FILES}
        COMMAND_ERROR_IS_FATAL ANY)" COMPONENT brevane)
