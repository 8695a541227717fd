#include "platform/linux/linux_text_regions.h"

#include <algorithm>
#include <span>
#include <utility>

namespace tarqo::lnx {
namespace {

/// Taller ink is no glyph of a line but a picture, if it fills its place.
constexpr int kMaxGlyphPx = 120;
constexpr double kPictureFill = 0.3;
constexpr int kMinPicturePx = 24;
/// Lower ink is a dot, a comma, a stroke: part of a line, never one itself.
constexpr int kMinLinePx = 5;
/// The widest gap in a line, as a share of its height: the space of a fixed-width font after a
/// colon is that wide, between the columns of tables there is more.
constexpr double kMaxGap = 1.3;
/// Glyphs of a line differ in height at most so much: "a" and "(" do, an icon and its label do not.
constexpr double kMinHeightShare = 0.5;
constexpr double kMinOverlapShare = 0.5;
/// How far above or below a line the middle of its dots and strokes may stand.
constexpr double kDotSlack = 0.25;
constexpr double kPartSlack = 0.1;
/// A wider part at the end of a line, in heights of the line, is something else.
constexpr double kMaxPartAspect = 3;
/// Borders and rules: the ink between surfaces, and long thin strokes.
constexpr int kMinDividerPx = 40;
constexpr int kThinPx = 3;
constexpr int kMinRulePx = 30;
/// A single part narrower than that is a text cursor, and wider a dash.
constexpr double kMinLoneAspect = 0.13;
constexpr double kMaxLoneAspect = 6;
/// More "lines" than a window can hold legibly are the texture of a picture.
constexpr std::size_t kMaxLines = 400;
/// Joining lines to longer ones comes to rest after two or three sweeps.
constexpr int kMaxSweeps = 8;

/// Glyphs, words or lines that belong together.
struct Group {
  PixelBox box;
  int surface = 0;
  int parts = 1;
  bool isSolid = false;  ///< Some of it is large enough for an icon.
};

int gapBetween(const PixelBox& a, const PixelBox& b) {
  return std::max(a.left, b.left) - std::min(a.right, b.right);
}

int verticalOverlap(const PixelBox& a, const PixelBox& b) {
  return std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
}

bool standSideBySide(const Group& a, const Group& b) {
  const auto [lower, taller] = std::minmax({a.box.height(), b.box.height()});
  return a.surface == b.surface && lower >= kMinHeightShare * taller &&
         verticalOverlap(a.box, b.box) >= kMinOverlapShare * lower &&
         gapBetween(a.box, b.box) <= kMaxGap * taller;
}

void join(Group& group, const Group& other) {
  group.box.add(other.box);
  group.parts += other.parts;
  group.isSolid = group.isSolid || other.isSolid;
}

/// One pass from left to right: each group joins the nearest one before it that it stands beside.
std::vector<Group> sweep(std::vector<Group> groups) {
  std::ranges::sort(groups, {}, [](const Group& group) { return group.box.left; });
  std::vector<Group> done;
  std::vector<Group> open;
  for (const Group& group : groups) {
    const auto finished = std::partition(open.begin(), open.end(), [&](const Group& before) {
      const double tallest = before.box.height() / kMinHeightShare;
      return gapBetween(before.box, group.box) <= kMaxGap * tallest;
    });
    done.insert(done.end(), finished, open.end());
    open.erase(finished, open.end());
    Group* nearest = nullptr;
    for (Group& before : open) {
      if (standSideBySide(before, group) &&
          (nearest == nullptr ||
           gapBetween(before.box, group.box) < gapBetween(nearest->box, group.box))) {
        nearest = &before;
      }
    }
    if (nearest != nullptr) {
      join(*nearest, group);
    } else {
      open.push_back(group);
    }
  }
  done.insert(done.end(), open.begin(), open.end());
  return done;
}

std::vector<Group> joinLines(std::vector<Group> groups) {
  for (int i = 0; i < kMaxSweeps; ++i) {
    const std::size_t before = groups.size();
    groups = sweep(std::move(groups));
    if (groups.size() == before) {
      break;
    }
  }
  return groups;
}

/// Whether the small group is a dot, an accent or a stroke that belongs to a glyph of the line, or
/// a row of them: the lower strokes of Hangul often stand side by side.
bool isPartOf(const Group& small, const Group& line) {
  const double height = line.box.height();
  const double centre = (small.box.top + small.box.bottom) / 2.0;
  const double slack = (small.box.height() < kMinLinePx ? kDotSlack : kPartSlack) * height;
  const bool isInside =
      small.box.left >= line.box.left - height && small.box.right <= line.box.right + height;
  return small.surface == line.surface && small.box.height() < kMinHeightShare * height &&
         (isInside || small.box.width() <= kMaxPartAspect * height) &&
         centre >= line.box.top - slack && centre <= line.box.bottom + slack &&
         gapBetween(small.box, line.box) <= kMaxGap * height;
}

/// The nearest of the lines that the small group is part of; null when there is none.
const Group* lineOf(const Group& small, std::span<const Group> lines) {
  const Group* nearest = nullptr;
  for (const Group& line : lines) {
    if (isPartOf(small, line) && (nearest == nullptr || gapBetween(small.box, line.box) <
                                                            gapBetween(small.box, nearest->box))) {
      nearest = &line;
    }
  }
  return nearest;
}

/// Gives parts of glyphs to their lines; what belongs to none stays by itself.
std::vector<Group> absorbParts(std::vector<Group> groups) {
  const auto heightOf = [](const Group& group) { return group.box.height(); };
  std::ranges::sort(groups, {}, heightOf);
  // Found in the groups as they were: a line that grew with each speck would creep into the next.
  const std::vector<Group> before = groups;
  std::vector<Group> kept;
  for (const Group& small : groups) {
    const auto taller = std::ranges::upper_bound(before, 2 * heightOf(small), {}, heightOf);
    if (const Group* line = lineOf(small, std::span(taller, before.end())); line != nullptr) {
      join(groups[static_cast<std::size_t>(line - before.data())], small);
    } else {
      kept.push_back(small);
    }
  }
  return kept;
}

bool isRule(const InkPart& part) {
  const auto [thin, length] = std::minmax({part.box.width(), part.box.height()});
  return thin <= kThinPx && length >= kMinRulePx;
}

bool isPicture(const InkPart& part) {
  const auto [low, high] = std::minmax({part.box.width(), part.box.height()});
  return low >= kMinPicturePx && (part.surface < 0 || high > kMaxGlyphPx) &&
         part.areaPx >= kPictureFill * low * high;
}

bool isLine(const Group& group) {
  const double height = group.box.height();
  const double aspect = group.box.width() / height;
  return height >= kMinLinePx && (group.parts > 1 || (!group.isSolid && aspect >= kMinLoneAspect &&
                                                      aspect <= kMaxLoneAspect));
}

std::vector<Group> linesOf(std::vector<Group> glyphs) {
  const auto isBody = [](const Group& group) { return group.box.height() >= kMinLinePx; };
  const auto dots = std::partition(glyphs.begin(), glyphs.end(), isBody);
  const std::vector<Group> small(dots, glyphs.end());
  glyphs.erase(dots, glyphs.end());
  std::vector<Group> lines = joinLines(std::move(glyphs));
  if (lines.size() > kMaxLines * 4) {
    return lines;
  }
  lines.insert(lines.end(), small.begin(), small.end());
  lines = joinLines(absorbParts(std::move(lines)));
  std::erase_if(lines, [](const Group& group) { return !isLine(group); });
  return lines;
}

}  // namespace

TextRegions findTextRegions(const png::BgrxView& image) {
  TextRegions regions;
  std::vector<Group> glyphs;
  for (const InkPart& part : findInk(image)) {
    const bool large = std::max(part.box.width(), part.box.height()) > kMinDividerPx;
    if (isPicture(part)) {
      regions.pictures.push_back(part.box);
    } else if (part.surface >= 0 && part.box.height() <= kMaxGlyphPx && !isRule(part) &&
               !(part.divides && large)) {
      glyphs.push_back({part.box, part.surface, 1, part.isSolid});
    }
  }
  const std::vector<Group> lines = linesOf(std::move(glyphs));
  if (lines.size() > kMaxLines) {
    return {{}, {}, {{0, 0, image.widthPx, image.heightPx}}};
  }
  for (const Group& line : lines) {
    (line.isSolid ? regions.large : regions.lines).push_back(line.box);
  }
  for (std::vector<PixelBox>* boxes : {&regions.lines, &regions.large}) {
    std::ranges::sort(*boxes, {}, [](const PixelBox& box) { return std::pair(box.top, box.left); });
  }
  return regions;
}

}  // namespace tarqo::lnx
