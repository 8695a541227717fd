// Sets the values of fields that take text from the keyboard alone, as those of Chromium do.
//
// Worker thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/accessibility.h"
#include "platform/input_events.h"
#include "platform/linux/atspi/keyboard_focus.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

class FieldTyping {
 public:
  /// All are kept and outlive this. Without a keyboard no field is typed into.
  FieldTyping(Reader& reader, KeyboardFocus& focus, InputEvents* keyboard)
      : reader_(reader), focus_(focus), keyboard_(keyboard) {}

  /// Whether the value of such an object can be set by typing, and by nothing else.
  [[nodiscard]] bool isNeededFor(const ObjectHandle& object, const Properties& properties);

  /// What a field holds now, the beginning of it where it is long; empty when it does not tell, as
  /// a password field does not.
  [[nodiscard]] std::optional<std::string> contentOf(const ObjectHandle& object);

  /// Waits for a field to hold anything but `before`, for a fourth of a second; false when it holds
  /// it still.
  [[nodiscard]] bool awaitOther(const ObjectHandle& object, const std::string& before);

  /// Replaces the text of a field by typing over it; true when the text arrived. Types only while
  /// the field's window receives keys and the field has the focus in it. Waits for every key.
  [[nodiscard]] bool typeOver(const ObjectHandle& object, const std::string& text);

 private:
  struct Content {
    std::string text;             ///< Its beginning, where it is long.
    std::int32_t characters = 0;  ///< Of all of it.
  };

  [[nodiscard]] bool typeKeys(const ObjectHandle& field, const std::string& text);
  [[nodiscard]] std::optional<Content> measuredContentOf(const ObjectHandle& object);
  [[nodiscard]] bool selectAll(const ObjectHandle& object, std::int32_t characters);
  [[nodiscard]] bool selects(const ObjectHandle& object, std::int32_t characters);
  [[nodiscard]] bool awaitContent(const ObjectHandle& object, const std::string& text,
                                  const Content& before);

  Reader& reader_;
  KeyboardFocus& focus_;
  InputEvents* keyboard_;
};

}  // namespace tarqo::lnx::atspi
