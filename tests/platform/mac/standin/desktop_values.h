// Elements and values of a desktop as objects of Core Foundation.
#pragma once

#include <optional>

#include "platform/accessibility.h"
#include "tests/platform/mac/standin/ax_element.h"
#include "tests/platform/mac/standin/desktop.h"

namespace standin {

class DesktopElement final : public AxElement {
 public:
  /// An application element is made anew with every limit, since there the limit belongs to it.
  DesktopElement(pid_t process, std::optional<tarqo::Element> element, bool isApplication)
      : AxElement(process), element_(std::move(element)), isApplication_(isApplication) {}

  [[nodiscard]] const std::optional<tarqo::Element>& element() const { return element_; }

  [[nodiscard]] std::string description() const override;
  void limit(float seconds) override;
  [[nodiscard]] bool same(const AxElement& other) const override;
  [[nodiscard]] Answer read(const std::string& name) override;
  [[nodiscard]] Answer readMany(const std::vector<std::string>& names) override;
  [[nodiscard]] Answer actionNames() override;
  [[nodiscard]] AXError perform(const std::string& action) override;
  [[nodiscard]] Answer settable(const std::string& name) override;
  [[nodiscard]] AXError set(const std::string& name, CFTypeRef value) override;
  [[nodiscard]] AXError pidError() const override;

 private:
  template <typename Ask>
  auto ask(const Ask& question) const -> decltype(question(std::declval<tarqo::Accessibility&>(),
                                                           std::declval<const tarqo::Element&>()));

  std::optional<tarqo::Element> element_;
  bool isApplication_;
};

[[nodiscard]] Owned objectOf(const tarqo::Value& value);
[[nodiscard]] tarqo::Value valueOf(CFTypeRef object);

}  // namespace standin
