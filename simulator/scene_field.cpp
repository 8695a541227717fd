#include "simulator/scene_field.h"

#include <algorithm>
#include <cmath>

namespace tarqo::sim {
namespace {

// Longer than any test waits, and far from the end of what a clock can count.
constexpr double kMaxMilliseconds = 1e9;
constexpr double kMaxCount = 1e6;
// Far outside every screen, and near enough for sums to stay exact.
constexpr double kMaxCoordinate = 1e6;

std::string kindText(Named kind) {
  switch (kind) {
    case Named::node:
      return "a node";
    case Named::window:
      return "a window";
    case Named::otherWindow:
      return "another window";
    case Named::application:
      return "an application";
  }
  return "";
}

}  // namespace

void SceneNames::declare(const std::string& path, const std::string& name, Named kind) {
  if (!declared_.emplace(name, kind).second) {
    throw SceneError(path + " must differ from every other: \"" + name + "\" is taken");
  }
}

void SceneNames::use(const std::string& path, const std::string& name, NamedKinds kinds) {
  uses_.push_back({path, name, std::move(kinds)});
}

void SceneNames::requireAllKnown() const {
  for (const Use& use : uses_) {
    const auto found = declared_.find(use.name);
    if (found != declared_.end() &&
        std::find(use.kinds.begin(), use.kinds.end(), found->second) != use.kinds.end()) {
      continue;
    }
    std::string kinds;
    for (const Named kind : use.kinds) {
      kinds += (kinds.empty() ? "" : " or ") + kindText(kind);
    }
    throw SceneError(use.path + " must name " + kinds + ": none is called \"" + use.name + "\"");
  }
}

void Field::fail(const std::string& what) const {
  throw SceneError((path_.empty() ? "the scene" : path_) + " " + what);
}

std::string Field::text() const {
  if (!value_->is_string()) {
    fail("must be a text");
  }
  return value_->get<std::string>();
}

bool Field::boolean() const {
  if (!value_->is_boolean()) {
    fail("must be true or false");
  }
  return value_->get<bool>();
}

double Field::number() const {
  if (!value_->is_number()) {
    fail("must be a number");
  }
  return value_->get<double>();
}

double Field::number(int least, int most) const {
  const double number = value_->is_number() ? value_->get<double>() : least - 1;
  if (!(number >= least && number <= most)) {
    fail("must be a number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return number;
}

int Field::count() const {
  const double number = value_->is_number() ? value_->get<double>() : -1;
  if (number < 0 || number > kMaxCount || number != std::trunc(number)) {
    fail("must be a whole number of 0 or more");
  }
  return static_cast<int>(number);
}

Duration Field::milliseconds() const {
  const double number = value_->is_number() ? value_->get<double>() : -1;
  if (!(number >= 0 && number <= kMaxMilliseconds)) {
    fail("must be a number of milliseconds, 0 or more");
  }
  return std::chrono::duration_cast<Duration>(std::chrono::duration<double, std::milli>(number));
}

std::vector<double> Field::numbers(std::size_t count) const {
  const bool fits = value_->is_array() && value_->size() == count &&
                    std::all_of(value_->begin(), value_->end(),
                                [](const Json& each) { return each.is_number(); });
  if (!fits) {
    fail("must be a list of " + std::to_string(count) + " numbers");
  }
  auto numbers = value_->get<std::vector<double>>();
  if (std::any_of(numbers.begin(), numbers.end(),
                  [](double number) { return std::abs(number) > kMaxCoordinate; })) {
    fail("must not go beyond a million");
  }
  return numbers;
}

Rect Field::rect() const {
  const auto all = numbers(4);
  return {all[0], all[1], all[2], all[3]};
}

Point Field::point() const {
  const auto both = numbers(2);
  return {both[0], both[1]};
}

Size Field::size() const {
  const auto both = numbers(2);
  return {both[0], both[1]};
}

std::vector<std::string> Field::texts() const {
  std::vector<std::string> texts;
  for (const Field& item : items()) {
    texts.push_back(item.text());
  }
  return texts;
}

std::vector<Field> Field::items() const {
  if (!value_->is_array()) {
    fail("must be a list");
  }
  std::vector<Field> items;
  for (std::size_t i = 0; i < value_->size(); ++i) {
    items.emplace_back((*value_)[i], path_ + "[" + std::to_string(i) + "]", *names_);
  }
  return items;
}

Field Field::member(std::string_view key, const Json& value) const {
  return {value, (path_.empty() ? "" : path_ + ".") + std::string(key), *names_};
}

std::vector<std::pair<std::string, Field>> Field::members() const {
  if (!value_->is_object()) {
    fail("must be an object");
  }
  std::vector<std::pair<std::string, Field>> members;
  for (const auto& [key, value] : value_->items()) {
    members.emplace_back(key, member(key, value));
  }
  return members;
}

std::optional<Field> Field::find(std::string_view key) const {
  if (!value_->is_object()) {
    fail("must be an object");
  }
  const auto found = value_->find(std::string(key));
  return found == value_->end() ? std::nullopt : std::optional(member(key, *found));
}

Field Field::require(std::string_view key) const {
  if (auto found = find(key)) {
    return *found;
  }
  static const Json missing;
  member(key, missing).fail("is missing");
}

std::string Field::declare(Named kind) const {
  std::string name = text();
  names_->declare(path_, name, kind);
  return name;
}

std::string Field::name(NamedKinds kinds) const {
  std::string name = text();
  refer(name, std::move(kinds));
  return name;
}

void Field::refer(const std::string& name, NamedKinds kinds) const {
  names_->use(path_, name, std::move(kinds));
}

}  // namespace tarqo::sim
