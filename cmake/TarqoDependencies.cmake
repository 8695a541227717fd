# Libraries from the package manager, each behind one target.

# A Mac may have no package manager.
option(TARQO_FETCH_JSON "Take the JSON library from its authors where none is installed" "${APPLE}")
if(TARQO_FETCH_JSON)
  find_package(nlohmann_json 3.11 QUIET)
  if(NOT nlohmann_json_FOUND)
    include(TarqoJson)
  endif()
else()
  find_package(nlohmann_json 3.11 REQUIRED)
endif()
# Without it there is no simulated desktop, which on a Mac the helper does not need.
if(APPLE AND NOT TARQO_TESTS)
  find_package(PNG)
else()
  find_package(PNG REQUIRED)
endif()
find_package(Threads REQUIRED)

if(APPLE)
  enable_language(OBJCXX)
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(ICU REQUIRED IMPORTED_TARGET icu-uc icu-i18n)
  if(TARQO_DESKTOP)
    pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
    pkg_check_modules(XCB REQUIRED IMPORTED_TARGET
      xcb xcb-shm xcb-composite xcb-res xcb-xtest xcb-randr xcb-xkb)
    # Declarations alone: the helper loads the library when it is first needed.
    pkg_check_modules(TESSERACT REQUIRED tesseract lept)
  endif()
endif()

if(TARQO_TESTS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()
