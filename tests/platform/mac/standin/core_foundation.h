// The objects of Core Foundation that the tests make, and short ways to make them.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/mac/mac_cf.h"
#include "tests/platform/mac/standin/heap.h"

namespace standin {

using Owned = tarqo::mac::CfRef<CFTypeRef>;

/// From UTF-16, so that a text may hold half of a surrogate pair.
[[nodiscard]] Owned text16(std::u16string units);
[[nodiscard]] Owned text(std::string_view utf8);
[[nodiscard]] Owned number(double value);
[[nodiscard]] Owned integer(SInt64 value);
[[nodiscard]] Owned boolean(bool value);
[[nodiscard]] Owned null();
[[nodiscard]] Owned array(const std::vector<Owned>& values);
[[nodiscard]] Owned dictionary(const std::vector<std::pair<std::string, Owned>>& entries);
/// What the literals of nothing stand for; constants.
[[nodiscard]] CFTypeRef emptyArray();
[[nodiscard]] CFTypeRef emptyDictionary();
[[nodiscard]] Owned url(std::string_view text, std::string_view base = "");
[[nodiscard]] Owned foreign();
[[nodiscard]] Owned point(double x, double y);
[[nodiscard]] Owned size(double width, double height);
[[nodiscard]] Owned rect(double x, double y, double width, double height);
[[nodiscard]] Owned axError(AXError error);

/// What an object is, for assertions: "text Save", "boolean true", "number 2.5", "point 1,2".
[[nodiscard]] std::string describe(CFTypeRef object);

class String final : public Object {
 public:
  explicit String(std::u16string units) : units_(std::move(units)) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CFString"); }
  [[nodiscard]] std::string description() const override { return "text " + utf8(); }
  [[nodiscard]] bool equals(const Object& other) const override;
  [[nodiscard]] const std::u16string& units() const { return units_; }
  [[nodiscard]] std::string utf8() const;  ///< "?" for half of a surrogate pair.

 private:
  std::u16string units_;
};

/// The name that a reference to a text stands for.
[[nodiscard]] std::string nameOf(CFStringRef text);

class AxValue final : public Object {
 public:
  AxValue(AXValueType kind, std::string bytes) : kind_(kind), bytes_(std::move(bytes)) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("AXValue"); }
  [[nodiscard]] std::string description() const override;
  [[nodiscard]] AXValueType kind() const { return kind_; }
  [[nodiscard]] const std::string& bytes() const { return bytes_; }

 private:
  AXValueType kind_;
  std::string bytes_;
};

}  // namespace standin
