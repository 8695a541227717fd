# Builds for macOS on Linux, against the declarations of platform/mac/sdk: a check of the sources, not
# a way to ship. script/cross-check gives the variables.
#
#   TARQO_ZIG        the zig compiler: clang 16, the headers of Darwin's C library, a Mach-O linker
#   TARQO_MAC_ARCH   arm64 or x86_64
#   TARQO_HEADERS    a folder with the portable headers of libraries (nlohmann, gtest, png) and
#                    nothing of this system

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${TARQO_MAC_ARCH})
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARQO_ZIG TARQO_MAC_ARCH TARQO_HEADERS)

set(zigArch ${TARQO_MAC_ARCH})
if(zigArch STREQUAL "arm64")
  set(zigArch aarch64)
endif()
# The oldest system that the helper runs on, as in CMakeLists.txt.
set(target ${zigArch}-macos.13.0)
set(CMAKE_C_COMPILER ${TARQO_ZIG} cc -target ${target})
set(CMAKE_CXX_COMPILER ${TARQO_ZIG} c++ -target ${target})
set(CMAKE_OBJCXX_COMPILER ${TARQO_ZIG} c++ -target ${target})
find_program(CMAKE_AR llvm-ar REQUIRED)
find_program(CMAKE_RANLIB llvm-ranlib REQUIRED)
# Asked for by CMake on this system; used by nothing here.
set(CMAKE_INSTALL_NAME_TOOL ${CMAKE_RANLIB})

set(sdk ${CMAKE_CURRENT_LIST_DIR}/../../platform/mac/sdk)
# Of the declarations, those of a newer SDK than that of the oldest system.
set(newest -D__MAC_OS_X_VERSION_MAX_ALLOWED=260000)
set(CMAKE_CXX_FLAGS_INIT "${newest} -isystem ${sdk}/include -fno-sanitize=undefined")
# zig names the language twice for Objective-C++ files.
set(CMAKE_OBJCXX_FLAGS_INIT "${newest} -Wno-unused-command-line-argument -isystem ${sdk}/include -fno-sanitize=undefined")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-F${sdk}/Frameworks -L${sdk}/lib")

# Packages are found here and nowhere on this system.
set(CMAKE_FIND_ROOT_PATH ${CMAKE_CURRENT_LIST_DIR})
set(CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR})
