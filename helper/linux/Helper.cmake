# What serves the helper on Linux.
find_package(CURL REQUIRED)
find_package(LibArchive REQUIRED)
find_package(OpenSSL REQUIRED)

# Reaches into the port: it makes snapshots of btrfs volumes.
brevane_library(brevane_helper_snapshots FOLDERS snapshots linux/snapshots
    LINKS brevane_protocol brevane_scheduling brevane_base)

brevane_library(brevane_helper
    FOLDERS ${core} linux linux/installation linux/programs linux/update
    LINKS brevane_protocol brevane_scheduling brevane_messaging brevane_helper_snapshots CURL::libcurl LibArchive::LibArchive OpenSSL::Crypto)
set(process linux/program/SystemProcess.cpp)
set(watch linux/postupdate)

if(BREVANE_RUNS_FROM_BUILD)
    set_source_files_properties(linux/programs/ProgramCatalog.cpp PROPERTIES
        COMPILE_DEFINITIONS "BREVANE_SOURCE_PROGRAMS=\"${CMAKE_SOURCE_DIR}/resources/programs\"")
endif()

# What runs a backup program, in a process of its own.
brevane_library(brevane_backupd FOLDERS linux/backupd LINKS brevane_version brevane_base)

add_executable(brevane_backup_daemon linux/backupd/program/main.cpp)
set_target_properties(brevane_backup_daemon PROPERTIES OUTPUT_NAME com.zerkolin.brevane.backupd)
target_link_libraries(brevane_backup_daemon PRIVATE brevane_backupd brevane_system)
