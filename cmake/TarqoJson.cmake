# The JSON library where nothing has installed it: its authors' release, known by its hash. It is all
# that the helper needs besides what macOS has.
include(FetchContent)

set(TARQO_JSON_URL https://github.com/nlohmann/json/archive/refs/tags/v3.11.2.tar.gz CACHE STRING
  "Where the release of the JSON library is, by https or as a file; the hash stays")
message(STATUS "No nlohmann-json is installed; taking ${TARQO_JSON_URL}")
FetchContent_Declare(nlohmann_json
  URL ${TARQO_JSON_URL}
  URL_HASH SHA256=d69f9deb6a75e2580465c6c4c5111b89c4dc2fa94e3a85fcd2ffcd9a143d9273
  DOWNLOAD_EXTRACT_TIMESTAMP ON
  # Headers alone: its own CMake files, which newer CMakes refuse, are left aside.
  SOURCE_SUBDIR include)
FetchContent_MakeAvailable(nlohmann_json)
add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
target_include_directories(nlohmann_json::nlohmann_json SYSTEM INTERFACE
  ${nlohmann_json_SOURCE_DIR}/include)
