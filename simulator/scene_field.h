// One value of a scene file, which knows where in the file it stands.
//
// Every reader gives the value or throws a `SceneError` that begins with the value's path, such as
// "applications[0].windows[1].frame must be a list of 4 numbers". Any thread; waits for nothing.
#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/json.h"
#include "platform/clock.h"
#include "platform/geometry.h"

namespace tarqo::sim {

/// What is wrong with a scene file, in one sentence for whoever wrote it.
class SceneError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What other parts of a scene can refer to.
enum class Named { node, window, otherWindow, application };
using NamedKinds = std::vector<Named>;

/// The names that a scene gives and uses. A use may come before what it names.
class SceneNames {
 public:
  /// Throws when the name is taken.
  void declare(const std::string& path, const std::string& name, Named kind);
  void use(const std::string& path, const std::string& name, NamedKinds kinds);
  /// Throws when a name is used that nothing of the right kind has.
  void requireAllKnown() const;

 private:
  struct Use {
    std::string path;
    std::string name;
    NamedKinds kinds;
  };
  std::map<std::string, Named> declared_;
  std::vector<Use> uses_;
};

class Field {
 public:
  /// Both references must outlive the field and those taken from it.
  Field(const Json& value, std::string path, SceneNames& names)
      : value_(&value), path_(std::move(path)), names_(&names) {}

  [[nodiscard]] const Json& value() const { return *value_; }
  /// Throws "<path> <what>".
  [[noreturn]] void fail(const std::string& what) const;

  [[nodiscard]] bool isNull() const { return value_->is_null(); }
  [[nodiscard]] std::string text() const;
  [[nodiscard]] bool boolean() const;
  [[nodiscard]] double number() const;
  [[nodiscard]] double number(int least, int most) const;
  [[nodiscard]] int count() const;              ///< A whole number of 0 or more.
  [[nodiscard]] Duration milliseconds() const;  ///< 0 or more.
  /// [x, y, width, height], as the next two no more than a million points from the origin.
  [[nodiscard]] Rect rect() const;
  [[nodiscard]] Point point() const;  ///< [x, y]
  [[nodiscard]] Size size() const;    ///< [width, height]
  [[nodiscard]] std::vector<std::string> texts() const;

  [[nodiscard]] std::vector<Field> items() const;
  [[nodiscard]] std::vector<std::pair<std::string, Field>> members() const;
  [[nodiscard]] std::optional<Field> find(std::string_view member) const;
  [[nodiscard]] Field require(std::string_view member) const;

  /// The text, which from now on names something of that kind.
  [[nodiscard]] std::string declare(Named kind) const;
  /// The text, which must be the name of something of one of those kinds.
  [[nodiscard]] std::string name(NamedKinds kinds) const;
  /// The same for a name that stands as this field's key.
  void refer(const std::string& name, NamedKinds kinds) const;

 private:
  [[nodiscard]] std::vector<double> numbers(std::size_t count) const;
  [[nodiscard]] Field member(std::string_view key, const Json& value) const;

  const Json* value_;
  std::string path_;
  SceneNames* names_;
};

}  // namespace tarqo::sim
