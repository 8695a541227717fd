# Objective-C++ where no Apple framework is: clang compiles the macOS backend for this system, and
# tests/platform/mac brings a runtime and frameworks to run it on. Sets TARQO_OBJECTIVE_C to whether
# that can be done here.

set(TARQO_OBJECTIVE_C OFF)
if(APPLE OR NOT TARQO_TESTS OR NOT CMAKE_SYSTEM_PROCESSOR STREQUAL x86_64)
  return()
endif()
# GCC has an Objective-C++ of its own, without blocks and reference counting.
find_program(TARQO_CLANG NAMES clang++)
if(NOT TARQO_CLANG)
  message(STATUS "No clang++: the Objective-C half of the macOS backend is not tested here")
  return()
endif()
set(CMAKE_OBJCXX_COMPILER ${TARQO_CLANG})
enable_language(OBJCXX ASM)
set(TARQO_OBJECTIVE_C ON)
