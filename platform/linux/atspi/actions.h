// What can be done with objects: their actions, and the attributes that can be set.
//
// Worker thread only.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/field_typing.h"
#include "platform/linux/atspi/keyboard_focus.h"
#include "platform/linux/atspi/object_attributes.h"
#include "platform/linux/atspi/pending_actions.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

class Actions {
 public:
  /// All are kept and outlive this.
  Actions(Reader& reader, ObjectAttributes& attributes, PendingActions& pending,
          KeyboardFocus& focus, FieldTyping& typing)
      : reader_(reader),
        attributes_(attributes),
        pending_(pending),
        focus_(focus),
        typing_(typing) {}

  /// The names of the actions that an object offers; empty when it does not answer.
  [[nodiscard]] std::vector<std::string> namesOf(const ObjectHandle& object);

  /// As `Accessibility::perform`, for an object.
  [[nodiscard]] Performed perform(const ObjectHandle& object, std::string_view action);

  /// As `Accessibility::isSettable`, for an object.
  [[nodiscard]] bool isSettable(const ObjectHandle& object, std::string_view name);

  /// As `Accessibility::takesTextByKeys`, for an object.
  [[nodiscard]] bool takesTextByKeys(const ObjectHandle& object);

  /// As `Accessibility::set`, for an object.
  [[nodiscard]] bool set(const ObjectHandle& object, std::string_view name, const Value& value);

 private:
  [[nodiscard]] bool setText(const ObjectHandle& object, const std::string& text);
  [[nodiscard]] bool setTextOnly(const ObjectHandle& object, const Properties& properties,
                                 const std::string& text);
  [[nodiscard]] bool awaitNumber(const ObjectHandle& object, double number);
  [[nodiscard]] bool setNumber(const ObjectHandle& object, double number);
  [[nodiscard]] std::optional<WindowNumber> windowNumber(const ObjectHandle& window);

  Reader& reader_;
  ObjectAttributes& attributes_;
  PendingActions& pending_;
  KeyboardFocus& focus_;
  FieldTyping& typing_;
};

}  // namespace tarqo::lnx::atspi
