// The keyboard focus: giving it to an object, and posting keys that only that object may get.
//
// Worker thread only.
#pragma once

#include "platform/accessibility.h"
#include "platform/input_events.h"
#include "platform/linux/atspi/hit_test.h"
#include "platform/linux/atspi/pending_actions.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/tree_relations.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

class KeyboardFocus {
 public:
  /// All are kept and outlive this. Without `input` nothing is clicked and no key is posted.
  KeyboardFocus(Reader& reader, TreeRelations& relations, HitTest& hitTest, PendingActions& pending,
                InputEvents* input)
      : reader_(reader),
        relations_(relations),
        hitTest_(hitTest),
        pending_(pending),
        input_(input) {}

  /// Gives an object the focus in its application; true when it had it and when the application
  /// reports success.
  [[nodiscard]] bool grab(const ObjectHandle& object);

  /// Whether an object of GTK 4, which refuses to give anything the focus, gets it by a click that
  /// does nothing else: a field for text.
  [[nodiscard]] bool isGrabbedByClick(const Properties& properties);

  /// Waits until an object reports the focus, for 0.8 s at most; false when it does not.
  [[nodiscard]] bool await(const ObjectHandle& object);

  /// Whether keys go to the object's window, according to the X server now.
  [[nodiscard]] bool isInKeyWindow(const ObjectHandle& object);

  /// Posts a key's press and release while keys go to the object's window; false when they do not,
  /// and when either event cannot be made. Needs `input`.
  [[nodiscard]] bool postKey(const ObjectHandle& object, EventSource* source,
                             const InputEvent& down, const InputEvent& up);

 private:
  [[nodiscard]] bool click(const ObjectHandle& object);
  [[nodiscard]] bool postPair(EventSource* source, Pid receiver, const InputEvent& down,
                              const InputEvent& up);

  Reader& reader_;
  TreeRelations& relations_;
  HitTest& hitTest_;
  PendingActions& pending_;
  InputEvents* input_;
};

}  // namespace tarqo::lnx::atspi
