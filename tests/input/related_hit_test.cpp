// Which element found under the pointer stands for the one that is meant.

#include "input/related_hit.h"

#include "tests/support/scene.h"

namespace tarqo {
namespace {

class RelatedHit : public testing::Test {
 protected:
  bool related(const sim::Node& hit, const sim::Node& target) {
    return relatedHit(desktop.accessibility(), hit.element(), target.element());
  }

  // The innermost of a chain of groups under `parent`, far away from everything.
  static sim::Node& levelsBelow(sim::Node& parent, int levels) {
    sim::Node* node = &parent;
    for (int level = 1; level <= levels; ++level) {
      node = &node->add("AXUnknown").at({5000, 5000, 10, 10});
    }
    return *node;
  }

  sim::Desktop desktop;
  sim::App& app = desktop.app("com.example.Notes");
  sim::Window& window = app.window({0, 0, 1000, 1000}, "Notes");
  sim::Node& button = window.button("Save").at({100, 100, 80, 24});
};

// By lineage.

TEST_F(RelatedHit, AnElementStandsForItself) { EXPECT_TRUE(related(button, button)); }

TEST_F(RelatedHit, WhatLiesBeneathTheTargetStandsForIt) {
  EXPECT_TRUE(related(button.label("Save"), button));
}

TEST_F(RelatedHit, ElevenLevelsBelowTheTargetAreFound) {
  EXPECT_TRUE(related(levelsBelow(button, 11), button));
}

TEST_F(RelatedHit, TwelveLevelsBelowTheTargetAreNot) {
  EXPECT_FALSE(related(levelsBelow(button, 12), button));
}

TEST_F(RelatedHit, WhatContainsTheTargetInTheTreeStandsForIt) {
  sim::Node& card = window.add("AXUnknown").at({5000, 5000, 10, 10});
  EXPECT_TRUE(related(card, card.add("AXUnknown").button("inner")));
}

TEST_F(RelatedHit, AnAncestorElevenLevelsUpIsFoundAndTwelveLevelsUpIsNot) {
  sim::Node& card = window.add("AXUnknown").at({5000, 5000, 10, 10});
  sim::Node& eleventh = levelsBelow(card, 11);
  EXPECT_TRUE(related(card, eleventh));
  EXPECT_FALSE(related(card, eleventh.add("AXUnknown").at({0, 0, 10, 10})));
}

TEST_F(RelatedHit, TheWindowDoesNotStandForWhatItContains) {
  EXPECT_FALSE(related(window, button));
}

TEST_F(RelatedHit, TheApplicationDoesNotStandForWhatItContains) {
  EXPECT_FALSE(related(app.node(), button));
}

TEST_F(RelatedHit, WhatLiesBeneathAWindowStandsForTheWindow) {
  EXPECT_TRUE(related(button, window));
}

TEST_F(RelatedHit, AWindowStandsForItself) { EXPECT_TRUE(related(window, window)); }

TEST_F(RelatedHit, TheSearchDoesNotClimbPastAWindow) {
  sim::Node& outer = window.add("AXUnknown").at({5000, 5000, 10, 10});
  sim::Node& inner = outer.add("AXWindow").add("AXUnknown").at({0, 0, 10, 10});
  EXPECT_FALSE(related(inner, outer));
  EXPECT_FALSE(related(outer, inner));
}

TEST_F(RelatedHit, WithoutAParentTheSearchEnds) {
  sim::Node& label = button.label("Save").at({5000, 5000, 10, 10}).without("AXParent");
  EXPECT_FALSE(related(label, button));
  label.with("AXParent", Value{"AXButton"});
  EXPECT_FALSE(related(label, button));
}

TEST_F(RelatedHit, AnElementBesideTheTargetDoesNotStandForIt) {
  EXPECT_FALSE(related(window.button("Other").at({300, 100, 80, 24}), button));
}

// By role and place.

TEST_F(RelatedHit, TheSameRoleAtTheSamePlaceIsTheControlMadeAnew) {
  EXPECT_TRUE(related(window.button("Save").at({100, 100, 80, 24}), button));
  EXPECT_TRUE(related(window.button("Save").at({100.4, 99.6, 80.4, 23.6}), button));
}

TEST_F(RelatedHit, HalfAPointOfDifferenceIsAnotherPlace) {
  EXPECT_FALSE(related(window.button("").at({100.5, 100, 80, 24}), button));
  EXPECT_FALSE(related(window.button("").at({100, 99.5, 80, 24}), button));
  EXPECT_FALSE(related(window.button("").at({100, 100, 80.5, 24}), button));
  EXPECT_FALSE(related(window.button("").at({100, 100, 80, 23.5}), button));
}

TEST_F(RelatedHit, AnotherRoleAtTheSamePlaceIsAnotherElement) {
  EXPECT_FALSE(related(window.label("Save").at({100, 100, 80, 24}), button));
}

TEST_F(RelatedHit, AWindowOfTheSameRoleAndPlaceStandsForAWindow) {
  sim::Window& replaced = app.window({0, 0, 1000, 1000}, "Notes");
  EXPECT_TRUE(related(replaced, window));
}

TEST_F(RelatedHit, TheWindowStandsForWhatHasItsRoleAndPlaceInIt) {
  EXPECT_TRUE(related(window, window.add("AXWindow").at({0, 0, 1000, 1000})));
  window.with("AXRole", Value{"AXButton"}).at({100, 100, 80, 24});
  EXPECT_TRUE(related(window, button));
}

TEST_F(RelatedHit, WithoutAFrameNothingIsDecidedByPlace) {
  sim::Node& twin = window.button("Save").withoutFrame();
  EXPECT_FALSE(related(twin, button));
  twin.at({100, 100, 80, 24});
  button.withoutFrame();
  EXPECT_FALSE(related(twin, button));
}

TEST_F(RelatedHit, AHitOfLessThanAPointIsNoneByPlace) {
  button.at({100, 100, 0.9, 24});
  EXPECT_FALSE(related(window.button("").at({100, 100, 0.9, 24}), button));
  button.at({100, 100, 24, 0.9});
  EXPECT_FALSE(related(window.button("").at({100, 100, 24, 0.9}), button));
  button.at({100, 100, 1, 1});
  EXPECT_TRUE(related(window.button("").at({100, 100, 1, 1}), button));
}

// Regions.

TEST_F(RelatedHit, ARegionThatContainsTheTargetStandsForIt) {
  for (const char* role : {"AXCell", "AXRow", "AXGroup"}) {
    EXPECT_TRUE(related(window.add(role).at({90, 90, 200, 50}), button)) << role;
  }
}

TEST_F(RelatedHit, ARegionInsideTheTargetStandsForIt) {
  for (const char* role : {"AXCell", "AXRow", "AXGroup"}) {
    EXPECT_TRUE(related(window.add(role).at({110, 105, 10, 10}), button)) << role;
  }
}

TEST_F(RelatedHit, OtherRolesDoNotStandForWhatTheyContain) {
  for (const char* role : {"AXList", "AXTable", "AXScrollArea", "AXUnknown"}) {
    EXPECT_FALSE(related(window.add(role).at({90, 90, 200, 50}), button)) << role;
  }
}

TEST_F(RelatedHit, ContainingAllowsHalfAPoint) {
  EXPECT_TRUE(related(window.group().at({100.5, 100, 300, 300}), button));
  EXPECT_FALSE(related(window.group().at({100.5625, 100, 300, 300}), button));
  EXPECT_TRUE(related(window.group().at({99.5, 110, 20, 10}), button));
  EXPECT_FALSE(related(window.group().at({99.4375, 110, 20, 10}), button));
}

TEST_F(RelatedHit, ARegionThatHalfOverlapsATargetOfAnotherRoleDoesNot) {
  EXPECT_FALSE(related(window.group().at({120, 90, 80, 50}), button));
}

TEST_F(RelatedHit, TwoCellsThatShareHalfOfTheirUnionAreOne) {
  sim::Node& target = window.add("AXCell").at({100, 300, 60, 20});
  // 40 of 80 points in width.
  EXPECT_TRUE(related(window.add("AXCell").at({120, 300, 60, 20}), target));
  EXPECT_FALSE(related(window.add("AXCell").at({121, 300, 60, 20}), target));
}

TEST_F(RelatedHit, ARowAndACellThatShareHalfOfTheirUnionAreTwo) {
  sim::Node& target = window.add("AXCell").at({100, 300, 60, 20});
  EXPECT_FALSE(related(window.add("AXRow").at({120, 300, 60, 20}), target));
}

TEST_F(RelatedHit, TwoButtonsThatShareHalfOfTheirUnionAreTwo) {
  button.at({100, 300, 60, 20});
  EXPECT_FALSE(related(window.button("").at({120, 300, 60, 20}), button));
}

TEST_F(RelatedHit, CellsApartAreTwo) {
  sim::Node& target = window.add("AXCell").at({100, 300, 60, 20});
  EXPECT_FALSE(related(window.add("AXCell").at({500, 300, 60, 20}), target));
}

// Dead elements.

TEST_F(RelatedHit, AnElementThatIsGoneStandsForNothing) {
  const Element gone = window.button("Save").at({100, 100, 80, 24}).element();
  window.children().back()->remove();
  EXPECT_FALSE(relatedHit(desktop.accessibility(), gone, button.element()));
}

}  // namespace
}  // namespace tarqo
