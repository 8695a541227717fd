#include "tests/platform/linux/atspi/made_up_application.h"

#include <sstream>

#include "platform/linux/atspi/wire/bus.h"

namespace tarqo::lnx::atspi {
namespace {

constexpr const char* kShown = "enabled sensitive showing visible";

/// Two texts in braces would be a member of an object.
Json pair(const char* first, const char* second) { return Json::array({first, second}); }

}  // namespace

MadeUpApplication::MadeUpApplication(const std::string& toolkit) {
  const std::size_t space = toolkit.find(' ');
  header_ = {{"recording", 1},
             {"toolkit", toolkit.substr(0, space)},
             {"version", toolkit.substr(space + 1)},
             {"windows",
              {{{"title", "Made up"},
                {"client", {100, 100, 600, 400}},
                {"decoration", Json::array()},
                {"shadow", Json::array()},
                {"active", true}}}}};
  objects_["root"] = {
      {"id", "root"},
      {"role", 75},
      {"states", ""},
      {"interfaces", "Accessible Application"},
      {"allAtOnce", true},
      {"properties", {{"Name", "made-up"}, {"Parent", {"registry", kRootPath}}, {"ChildCount", 0}}},
      {"children", Json::array()}};
  add("1", "root", 23)["properties"]["Name"] = "Made up";
  object("1")["onScreen"] = {100, 100, 600, 400};
  object("1")["inWindow"] = {0, 0, 600, 400};
  add("2", "1", 43, "Action")["actions"] =
      Json::array({pair("Press", "press"), pair("Menu", "menu")});
  Json& field = add("3", "1", 79, "Text EditableText");
  field["text"] = "Ada";
  field["states"] = std::string(kShown) + " editable focusable focused single-line";
  field["relations"] = {{2, {"5"}}};
  add("4", "1", 31, "Selection")["selected"] = "42";
  for (const char* row : {"41", "42", "43"}) {
    add(row, "4", 32);
  }
  add("5", "1", 29, "Text")["text"] = "Name";
  add("6", "1", 34);
  add("61", "6", 33, "Action Selection")["actions"] = Json::array({pair("Click", "click")});
  add("611", "61", 35, "Action")["actions"] = Json::array({pair("Click", "click")});
  add("7", "1", 51, "Value")["value"] = 4.5;
  add("8", "1", 11, "Selection Action")["selected"] = "42";
  Json& table = add("9", "1", 55, "Table");
  table["columns"] = 1;
  table["headers"] = {"91"};
  table["states"] = std::string(kShown) + " manages-descendants";
  add("91", "9", 57);
  add("92", "9", 56);
  add("10", "1", 95, "Document")["document"] = {{"DocURL", "https://example.com/"}};
}

Json& MadeUpApplication::add(const std::string& id, const std::string& parent, int role,
                             const std::string& interfaces) {
  const auto place = static_cast<int>(objects_.size());
  objects_[id] = {
      {"id", id},
      {"role", role},
      {"states", kShown},
      {"interfaces", "Accessible Component " + interfaces},
      {"allAtOnce", header_.at("toolkit") != "Qt"},
      {"properties",
       {{"Name", "object " + id}, {"Description", ""}, {"Parent", parent}, {"ChildCount", 0}}},
      {"onScreen", {110, 110 + 15 * place, 200, 12}},
      {"inWindow", {10, 10 + 15 * place, 200, 12}},
      {"drawn", true},
      {"children", Json::array()}};
  Json& above = object(parent);
  above["children"].push_back(id);
  above["properties"]["ChildCount"] = above["children"].size();
  return object(id);
}

RecordedApplication MadeUpApplication::application() const {
  std::stringstream lines;
  lines << header_.dump() << "\n";
  for (const auto& [id, object] : objects_) {
    lines << object.dump() << "\n";
  }
  return RecordedApplication(lines);
}

}  // namespace tarqo::lnx::atspi
