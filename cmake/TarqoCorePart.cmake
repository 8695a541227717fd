# The core is cut into parts, each a library that may use only those below it.

# tarqo_core_part(NAME SOURCES... USES...): the library tarqo_NAME. With the tests it is also linked
# whole into a program of its own with nothing but what it uses, which fails when it needs more.
function(tarqo_core_part name)
  cmake_parse_arguments(PARSE_ARGV 1 part "" "" "SOURCES;USES")
  set(target tarqo_${name})
  add_library(${target} STATIC ${part_SOURCES})
  target_link_libraries(${target} PUBLIC ${part_USES})
  if(name STREQUAL base)
    target_precompile_headers(${target} PRIVATE
      $<$<COMPILE_LANGUAGE:CXX>:${CMAKE_SOURCE_DIR}/cmake/precompiled.h>)
  else()
    target_precompile_headers(${target} REUSE_FROM tarqo_base)
  endif()
  if(TARQO_TESTS AND NOT APPLE AND NOT CMAKE_CROSSCOMPILING)
    add_executable(${name}_links_alone ${CMAKE_SOURCE_DIR}/cmake/empty_main.cpp)
    set_target_properties(${name}_links_alone PROPERTIES UNITY_BUILD OFF)
    target_link_options(${name}_links_alone PRIVATE
      LINKER:--whole-archive $<TARGET_FILE:${target}> LINKER:--no-whole-archive)
    add_dependencies(${name}_links_alone ${target})
    target_link_libraries(${name}_links_alone PRIVATE tarqo_options ${part_USES})
  endif()
endfunction()
