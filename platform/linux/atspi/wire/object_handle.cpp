#include "platform/linux/atspi/wire/object_handle.h"

#include <memory>
#include <utility>

namespace tarqo::lnx::atspi {
namespace {

class LinuxElement final : public ElementObject {
 public:
  explicit LinuxElement(ObjectHandle handle) : handle_(std::move(handle)) {}

  [[nodiscard]] const ObjectHandle& handle() const { return handle_; }

  [[nodiscard]] bool same(const ElementObject& other) const override {
    const auto* theirs = dynamic_cast<const LinuxElement*>(&other);
    if (theirs == nullptr || theirs->handle_.kind != handle_.kind ||
        theirs->handle_.pid != handle_.pid) {
      return false;
    }
    switch (handle_.kind) {
      case ObjectHandle::Kind::application:
        return true;
      case ObjectHandle::Kind::bareWindow:
        return theirs->handle_.number == handle_.number;
      case ObjectHandle::Kind::object:
        break;
    }
    return theirs->handle_.ref == handle_.ref && theirs->handle_.facet == handle_.facet;
  }

 private:
  ObjectHandle handle_;
};

}  // namespace

Element makeElement(ObjectHandle handle) {
  return Element(std::make_shared<const LinuxElement>(std::move(handle)));
}

Element makeApplication(Pid pid, Duration timeout) {
  return makeElement({.kind = ObjectHandle::Kind::application, .pid = pid, .timeout = timeout});
}

Element makeBareWindow(Pid pid, Duration timeout, WindowNumber number) {
  return makeElement(
      {.kind = ObjectHandle::Kind::bareWindow, .pid = pid, .timeout = timeout, .number = number});
}

const ObjectHandle* handleOf(const Element& element) {
  const auto* ours = dynamic_cast<const LinuxElement*>(&element.object());
  return ours == nullptr ? nullptr : &ours->handle();
}

}  // namespace tarqo::lnx::atspi
