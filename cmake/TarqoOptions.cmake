# What every target of the project shares: the language level, the warnings, the sanitizers.

option(TARQO_TESTS "Build the tests" ON)
option(TARQO_DESKTOP "Build the backend of this system and what needs it" ON)
option(TARQO_WERROR "Treat warnings as errors" ON)
set(TARQO_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_OBJCXX_STANDARD 20)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
set(CMAKE_OBJCXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(tarqo_options INTERFACE)
target_include_directories(tarqo_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(tarqo_options INTERFACE
  $<$<COMPILE_LANGUAGE:CXX,OBJCXX>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor
  -Woverloaded-virtual>
  $<$<BOOL:${TARQO_WERROR}>:-Werror>)
# GCC 12 takes inlined string concatenation for overlapping or endless copies (its bug 105651), and
# the alternatives that a variant does not hold for uninitialised (its bug 105593).
target_compile_options(tarqo_options INTERFACE
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:GNU>>:-Wno-restrict -Wno-stringop-overflow
  -Wno-maybe-uninitialized>)
if(TARQO_SANITIZE)
  target_compile_options(tarqo_options INTERFACE -fsanitize=${TARQO_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  target_link_options(tarqo_options INTERFACE -fsanitize=${TARQO_SANITIZE})
endif()
