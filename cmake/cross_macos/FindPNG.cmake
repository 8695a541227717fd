# Its headers alone: libpng is needed by the tests of a Mac, not by the helper.
if(NOT TARGET PNG::PNG)
  add_library(PNG::PNG INTERFACE IMPORTED)
  target_include_directories(PNG::PNG SYSTEM INTERFACE ${TARQO_HEADERS})
endif()
set(PNG_FOUND TRUE)
