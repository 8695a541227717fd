# The half of the backend that calls C frameworks only. It is plain C++, so that tests/platform/mac compiles it
# on other systems too.
set(TARQO_MAC_C_SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/mac_accessibility.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_cf_text.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_cf_value.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_element.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_images.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_input_events.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_login_session.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_observers.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_permissions.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_web_trees.cpp
  ${CMAKE_CURRENT_LIST_DIR}/mac_window_server.cpp)
