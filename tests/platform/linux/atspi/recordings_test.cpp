// What an observation lists of windows of real applications, node by node: each recording
// (script/record-application) beside the list that was found right, NAME.nodes.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "tests/platform/linux/atspi/recorded_application.h"
#include "tests/platform/linux/atspi/recorded_desktop.h"

namespace tarqo::lnx::atspi {
namespace {

/// Quoted, but as it is read.
std::string quoted(const Json& text) { return text.dump(-1, ' ', false); }

/// Whether a member tells nothing to a reader of the list: what a node is not, and what says where
/// it stands.
bool goesWithoutSaying(const std::string& key, const Json& value) {
  static const std::set<std::string> kShownOtherwise{"id",      "parentId", "role",
                                                     "rawRole", "name",     "bounds"};
  static const std::set<std::string> kUsuallyFalse{"clickable", "editable", "press", "menu",
                                                   "focused"};
  return kShownOtherwise.contains(key) || (key == "enabled" && value == true) ||
         (kUsuallyFalse.contains(key) && value == false);
}

std::string lineOf(const Json& node) {
  std::ostringstream line;
  line << node.at("rawRole").get<std::string>() << " " << quoted(node.at("name"));
  if (const auto bounds = node.find("bounds"); bounds != node.end()) {
    line << " at " << bounds->at("x") << "," << bounds->at("y") << " " << bounds->at("width") << "x"
         << bounds->at("height");
  }
  for (const auto& [key, value] : node.items()) {
    if (!goesWithoutSaying(key, value)) {
      line << " " << key << (value == true ? "" : "=" + quoted(value));
    }
  }
  return line.str();
}

/// The nodes, each on a line below its parent.
std::string listOf(const Json& snapshot) {
  std::map<std::string, int> depths;
  std::ostringstream list;
  for (const Json& node : snapshot.at("nodes")) {
    const Json& parent = node.at("parentId");
    const int depth = parent.is_string() ? depths[parent] + 1 : 0;
    depths[node.at("id")] = depth;
    list << std::string(static_cast<std::size_t>(depth) * 2, ' ') << lineOf(node) << "\n";
  }
  return list.str();
}

std::string contentsOf(const std::filesystem::path& file) {
  std::ostringstream contents;
  contents << std::ifstream(file).rdbuf();
  return contents.str();
}

RecordedApplication recorded(const std::string& name) {
  std::ifstream lines(std::filesystem::path(TARQO_RECORDINGS) / (name + ".jsonl"));
  return RecordedApplication(lines);
}

/// Where two lists differ first.
std::string difference(const std::string& expected, const std::string& actual) {
  std::istringstream left(expected);
  std::istringstream right(actual);
  std::string wanted;
  std::string found;
  for (int number = 1;; ++number) {
    const bool more = static_cast<bool>(std::getline(left, wanted));
    if (!std::getline(right, found)) {
      found = "(the end)";
    }
    if (wanted != found || !more) {
      return "line " + std::to_string(number) + ": " + found +
             "\nin place of: " + (more ? wanted : "(the end)");
    }
  }
}

class Recordings : public testing::TestWithParam<std::string> {};

std::vector<std::string> recordedNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(TARQO_RECORDINGS)) {
    if (entry.path().extension() == ".jsonl") {
      names.push_back(entry.path().stem());
    }
  }
  std::ranges::sort(names);
  return names;
}

TEST_P(Recordings, AreListedAsReviewed) {
  const std::filesystem::path folder = TARQO_RECORDINGS;
  const RecordedApplication application = recorded(GetParam());
  RecordedDesktop desktop(application.windows(),
                          [&](auto* call) { return application.answer(call); });
  const Json snapshot = desktop.observe();
  ASSERT_TRUE(snapshot.is_object()) << desktop.error;
  EXPECT_FALSE(snapshot.at("truncated").get<bool>());
  const std::string actual = listOf(snapshot);
  const std::string expected = contentsOf(folder / (GetParam() + ".nodes"));
  if (actual != expected) {
    const std::filesystem::path written =
        std::filesystem::path(TARQO_WRITTEN) / (GetParam() + ".nodes");
    std::ofstream(written) << actual;
    FAIL() << difference(expected, actual) << "\nthe whole list is in " << written;
  }
}

INSTANTIATE_TEST_SUITE_P(Of, Recordings, testing::ValuesIn(recordedNames()),
                         [](const testing::TestParamInfo<std::string>& each) {
                           std::string name = each.param;
                           std::erase_if(name, [](char letter) { return letter == '-'; });
                           return name;
                         });

TEST(RecordingsFolder, HasAWindowOfEveryToolkit) {
  std::set<Toolkit> toolkits;
  for (const std::string& name : recordedNames()) {
    const RecordedApplication application = recorded(name);
    toolkits.insert(toolkitNamed(application.toolkit(), application.version()));
    EXPECT_LT(
        std::filesystem::file_size(std::filesystem::path(TARQO_RECORDINGS) / (name + ".jsonl")),
        200'000U)
        << name;
  }
  for (const Toolkit toolkit :
       {Toolkit::gtk3, Toolkit::gtk4, Toolkit::qt, Toolkit::chromium, Toolkit::gecko}) {
    EXPECT_TRUE(toolkits.contains(toolkit)) << static_cast<int>(toolkit);
  }
}

}  // namespace
}  // namespace tarqo::lnx::atspi
