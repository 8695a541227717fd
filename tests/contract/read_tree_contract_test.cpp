// accessibility.h: reading a tree ahead

#include <array>

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

constexpr std::array<std::string_view, 13> kWalkNames = {
    "AXRole",    "AXSubrole",    "AXTitle", "AXDescription", "AXPlaceholderValue",
    "AXEnabled", "AXPosition",   "AXSize",  "AXSelected",    "AXFocused",
    "AXHidden",  "AXIdentifier", "AXURL"};

/// What the walk over a tree reads of one element.
struct Seen {
  std::string texts;
  std::optional<Rect> frame;
  std::vector<std::string> actions;
  std::size_t children = 0;

  bool operator==(const Seen&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Seen& seen) {
  out << seen.texts << " " << seen.children << " children, actions";
  for (const std::string& action : seen.actions) {
    out << " " << action;
  }
  return out;
}

class ReadTreeContract : public TargetContract {
 protected:
  // What a walk visits: it leaves out hidden elements with all that is beneath them, so a backend
  // need not read those ahead.
  [[nodiscard]] std::vector<Element> shownTree() const {
    std::vector<Element> found{window()};
    for (std::size_t i = 0; i < found.size(); ++i) {
      for (const Element& child : elements(found[i], "AXChildren")) {
        if (read<bool>(child, "AXHidden") != true) {
          found.push_back(child);
        }
      }
    }
    return found;
  }

  [[nodiscard]] Seen see(const Element& element) const {
    Seen seen;
    for (const auto& value : ax.attributes(element, kWalkNames)) {
      const auto* text = value ? value->as<std::string>() : nullptr;
      const auto* flag = value ? value->as<bool>() : nullptr;
      seen.texts += text != nullptr ? *text : flag != nullptr ? (*flag ? "+" : "-") : "";
      seen.texts += "|";
    }
    seen.texts += text(element, "AXValue");
    seen.frame = frame(element);
    seen.actions = ax.actionNames(element);
    seen.children = elements(element, "AXChildren").size();
    return seen;
  }
};

TEST_F(ReadTreeContract, EqualsReadingLive) {
  std::vector<Element> live;
  std::vector<Seen> liveSeen;
  for (const Element& element : shownTree()) {
    live.push_back(element);
    liveSeen.push_back(see(element));
  }

  const auto scope = ax.readTree(window(), {clock.now() + 4s, 2000});
  const std::vector<Element> ahead = shownTree();

  ASSERT_EQ(ahead.size(), live.size());
  for (std::size_t i = 0; i < ahead.size(); ++i) {
    EXPECT_TRUE(ahead[i] == live[i]) << i;
    EXPECT_EQ(see(ahead[i]), liveSeen[i]) << i;
  }
}

TEST_F(ReadTreeContract, EndsWithItsScope) {
  {
    const auto scope = ax.readTree(window(), {clock.now() + 4s, 2000});
    EXPECT_EQ(status(), "Status: idle");
  }
  EXPECT_NE(ax.perform(control("AXButton", "Save"), "AXPress"), Performed::refused);
  EXPECT_TRUE(waitUntil([&] { return status() == "Status: saved 1"; }));
}

TEST_F(ReadTreeContract, ActsLiveWithinTheScope) {
  const Element save = control("AXButton", "Save");
  {
    const auto scope = ax.readTree(window(), {clock.now() + 4s, 2000});
    EXPECT_NE(ax.perform(save, "AXPress"), Performed::refused);
  }
  EXPECT_TRUE(waitUntil([&] { return status() == "Status: saved 1"; }));
}

TEST_F(ReadTreeContract, StopsAtTheDeadlineOfAHungApplication) {
  target->hang();
  const Instant begin = clock.now();
  { const auto scope = ax.readTree(window(), {begin + 500ms, 2000}); }
  EXPECT_LT(clock.now() - begin, 700ms);
  target->resume();
}

TEST_F(ReadTreeContract, ReadsNothingAheadOnceTheDeadlineHasPassed) {
  const Instant begin = clock.now();
  { const auto scope = ax.readTree(window(), {begin - 1s, 2000}); }
  EXPECT_LT(clock.now() - begin, 200ms);
  EXPECT_EQ(text(window(), "AXRole"), "AXWindow");
}

TEST_F(ReadTreeContract, TellsTheRootThoughTheDeadlineHasPassed) {
  const Element save = control("AXButton", "Save");
  const auto scope = ax.readTree(window(), {clock.now() - 1s, 2000});
  EXPECT_EQ(text(window(), "AXRole"), "AXWindow");
  if (scope != nullptr) {
    EXPECT_EQ(text(save, "AXTitle"), "");
    EXPECT_TRUE(scope->incomplete());
    scope->readLive();
  }
  EXPECT_EQ(text(save, "AXTitle"), "Save");
}

TEST_F(ReadTreeContract, StillTellsWhatItReadOnceTheApplicationHangs) {
  const Element save = control("AXButton", "Save");
  const auto scope = ax.readTree(window(), {clock.now() + 4s, 2000});
  const bool readsAhead = scope != nullptr;
  EXPECT_FALSE(readsAhead && scope->incomplete());
  target->hang();
  EXPECT_EQ(text(application(), "AXTitle"), "");  // Nobody read that ahead.

  EXPECT_EQ(readsAhead && scope->incomplete(), readsAhead);
  EXPECT_EQ(text(window(), "AXRole"), readsAhead ? "AXWindow" : "");
  EXPECT_EQ(text(save, "AXTitle"), readsAhead ? "Save" : "");
  target->resume();
}

}  // namespace
}  // namespace tarqo::contract
