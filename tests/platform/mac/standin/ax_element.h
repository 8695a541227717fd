// An element of the Accessibility API: one reference to something that an application shows.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/mac/standin/accessibility.h"
#include "tests/platform/mac/standin/core_foundation.h"

namespace standin {

/// Who answers is for the classes below to say. Messages wait for `seconds` at most, 0 for as long
/// as those of the system-wide element do.
class AxElement : public Object {
 public:
  explicit AxElement(pid_t process) : pid_(process) {}
  [[nodiscard]] CFTypeID type() const final { return typeNamed("AXUIElement"); }
  [[nodiscard]] bool equals(const Object& other) const final {
    const auto* element = dynamic_cast<const AxElement*>(&other);
    return element != nullptr && same(*element);
  }
  [[nodiscard]] pid_t pid() const { return pid_; }
  [[nodiscard]] float seconds() const { return seconds_; }
  virtual void limit(float seconds) { seconds_ = seconds; }

  [[nodiscard]] virtual bool same(const AxElement& other) const = 0;
  [[nodiscard]] virtual Answer read(const std::string& name) = 0;
  /// A list with a slot for each name.
  [[nodiscard]] virtual Answer readMany(const std::vector<std::string>& names) = 0;
  [[nodiscard]] virtual Answer actionNames() = 0;
  [[nodiscard]] virtual AXError perform(const std::string& action) = 0;
  [[nodiscard]] virtual Answer settable(const std::string& name) = 0;
  [[nodiscard]] virtual AXError set(const std::string& name, CFTypeRef value) = 0;
  [[nodiscard]] virtual AXError pidError() const = 0;

 private:
  pid_t pid_;
  float seconds_ = 0;
};

/// An element that a test has scripted.
class ScriptedElement final : public AxElement {
 public:
  ScriptedElement(pid_t process, int number) : AxElement(process), number_(number) {}
  [[nodiscard]] std::string description() const override;
  [[nodiscard]] int number() const { return number_; }

  [[nodiscard]] bool same(const AxElement& other) const override;
  [[nodiscard]] Answer read(const std::string& name) override;
  [[nodiscard]] Answer readMany(const std::vector<std::string>& names) override;
  [[nodiscard]] Answer actionNames() override;
  [[nodiscard]] AXError perform(const std::string& action) override;
  [[nodiscard]] Answer settable(const std::string& name) override;
  [[nodiscard]] AXError set(const std::string& name, CFTypeRef value) override;
  [[nodiscard]] AXError pidError() const override;
  [[nodiscard]] AXError subscribe(const std::string& notification);

 private:
  Node& asked(const std::string& what) const;

  int number_;
};

/// The system-wide element, which tests and desktops share.
class SystemWide final : public AxElement {
 public:
  SystemWide() : AxElement(0) {}
  [[nodiscard]] std::string description() const override { return "element 0/0"; }
  void limit(float seconds) override;

  [[nodiscard]] bool same(const AxElement& other) const override;
  [[nodiscard]] Answer read(const std::string& name) override;
  [[nodiscard]] Answer readMany(const std::vector<std::string>& names) override;
  [[nodiscard]] Answer actionNames() override;
  [[nodiscard]] AXError perform(const std::string& action) override;
  [[nodiscard]] Answer settable(const std::string& name) override;
  [[nodiscard]] AXError set(const std::string& name, CFTypeRef value) override;
  [[nodiscard]] AXError pidError() const override;
};

/// How long messages wait through references without a limit of their own.
[[nodiscard]] float systemWideSeconds();

}  // namespace standin
