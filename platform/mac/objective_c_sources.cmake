# The rest of the backend: what calls Objective-C frameworks or the kernel of macOS.
set(TARQO_MAC_SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/mac_bundles.mm
  ${CMAKE_CURRENT_LIST_DIR}/mac_clock.mm
  ${CMAKE_CURRENT_LIST_DIR}/mac_main_loop.mm
  ${CMAKE_CURRENT_LIST_DIR}/mac_platform.mm
  ${CMAKE_CURRENT_LIST_DIR}/mac_process_record.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_processes.mm
  ${CMAKE_CURRENT_LIST_DIR}/mac_random.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_screen_capture.mm
  ${CMAKE_CURRENT_LIST_DIR}/mac_spawn.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_text_recognizer.mm
  ${CMAKE_CURRENT_LIST_DIR}/mac_workspace.mm)

# Texts serve `tarqo::unicode` and the backend.
set(TARQO_MAC_UNICODE_SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/mac_cf_text.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_unicode.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_unicode_language.mm
  ${CMAKE_CURRENT_LIST_DIR}/mac_utf8.cpp)
