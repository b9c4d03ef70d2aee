# A toolchain for building the macOS edition on another system with clang and lld. The SDK's folder is in the
# environment's MACOS_SDK; BREVANE_MACOS_ARCHITECTURE is x86_64 or arm64.
#
# An SDK's C++ headers may be older than the language that we write. BREVANE_LIBCXX_HEADERS names the folder of newer
# libc++ headers, before which BREVANE_LIBCXX_CONFIGURATION holds a __config_site that switches their notes on the
# availability of each system version on. The library itself is always the system's.
#
# BREVANE_SDK_SUPPLEMENT may name a library stub with what AppKit passes on from frameworks that the SDK does not hold.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES BREVANE_MACOS_ARCHITECTURE BREVANE_LIBCXX_HEADERS BREVANE_LIBCXX_CONFIGURATION
    BREVANE_SDK_SUPPLEMENT)

set(BREVANE_MACOS_ARCHITECTURE x86_64 CACHE STRING "x86_64 or arm64")
set(CMAKE_SYSTEM_PROCESSOR ${BREVANE_MACOS_ARCHITECTURE})
set(CMAKE_OSX_SYSROOT "$ENV{MACOS_SDK}" CACHE PATH "The macOS SDK")
if(BREVANE_MACOS_ARCHITECTURE STREQUAL arm64)
    set(CMAKE_OSX_DEPLOYMENT_TARGET 11.0 CACHE STRING "The oldest system")
else()
    set(CMAKE_OSX_DEPLOYMENT_TARGET 10.9 CACHE STRING "The oldest system")
endif()

set(version 19)
find_program(BREVANE_CLANG clang-${version} REQUIRED)
find_program(BREVANE_CLANGXX clang++-${version} REQUIRED)
set(CMAKE_C_COMPILER "${BREVANE_CLANG}")
foreach(language CXX OBJCXX)
    set(CMAKE_${language}_COMPILER "${BREVANE_CLANGXX}")
    if(BREVANE_LIBCXX_HEADERS)
        set(CMAKE_${language}_FLAGS_INIT "-nostdinc++ -cxx-isystem ${BREVANE_LIBCXX_CONFIGURATION} -cxx-isystem ${BREVANE_LIBCXX_HEADERS}")
    endif()
endforeach()
foreach(language C CXX OBJCXX)
    set(CMAKE_${language}_COMPILER_TARGET ${BREVANE_MACOS_ARCHITECTURE}-apple-macos${CMAKE_OSX_DEPLOYMENT_TARGET})
endforeach()
foreach(tool AR NM RANLIB OBJDUMP STRIP INSTALL_NAME_TOOL)
    string(TOLOWER ${tool} name)
    string(REPLACE _ - name ${name})
    find_program(CMAKE_${tool} llvm-${name}-${version} REQUIRED)
endforeach()
set(CMAKE_EXE_LINKER_FLAGS_INIT -fuse-ld=lld)
set(CMAKE_CXX_STANDARD_LIBRARIES_INIT "${BREVANE_SDK_SUPPLEMENT}")
set(CMAKE_OBJCXX_STANDARD_LIBRARIES_INIT "${BREVANE_SDK_SUPPLEMENT}")

set(CMAKE_FIND_ROOT_PATH "${CMAKE_OSX_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
