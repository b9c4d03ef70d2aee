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
