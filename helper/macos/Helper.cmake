# What serves the helper on macOS.
brevane_library(brevane_helper
    FOLDERS ${core} snapshots macos macos/commands macos/packages macos/timemachine macos/update
    LINKS brevane_protocol brevane_scheduling brevane_messaging "-framework Foundation" "-framework IOKit")
set(process macos/program/SystemProcess.mm)
set(watch macos/postupdate)
