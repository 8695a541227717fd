#include "platform/tesseract/text_regions.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/tesseract/box_grid.h"

namespace tarqo::ocr {
namespace {

/// Taller ink is not a glyph of a line; it is a picture if it fills its place.
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
std::vector<Group> sweep(std::vector<Group> groups, const PixelBox& picture) {
  std::ranges::sort(groups, {},
                    [](const Group& group) { return std::pair(group.box.left, group.box.top); });
  std::vector<Group> joined;
  BoxGrid grid(picture);
  for (const Group& group : groups) {
    const double tallest = group.box.height() / kMinHeightShare;
    PixelBox near = group.box;
    near.left -= static_cast<int>(kMaxGap * tallest) + 1;
    std::optional<std::pair<int, std::size_t>> nearest;  // The gap, and which group.
    grid.forNear(near, [&](std::size_t i) {
      if (standSideBySide(joined[i], group)) {
        const std::pair candidate(gapBetween(joined[i].box, group.box), i);
        nearest = std::min(candidate, nearest.value_or(candidate));
      }
    });
    if (nearest) {
      Group& before = joined[nearest->second];
      const PixelBox box = before.box;
      join(before, group);
      grid.grow(nearest->second, box, before.box);
    } else {
      grid.add(joined.size(), group.box);
      joined.push_back(group);
    }
  }
  return joined;
}

std::vector<Group> joinLines(std::vector<Group> groups, const PixelBox& picture) {
  for (int i = 0; i < kMaxSweeps; ++i) {
    const std::size_t before = groups.size();
    groups = sweep(std::move(groups), picture);
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

/// Where the small groups are that can be part of a line.
PixelBox reachOf(const PixelBox& line) {
  const int beside = static_cast<int>(kMaxGap * line.height()) + 1;
  const int above = static_cast<int>(kDotSlack * line.height()) + 1;
  return {line.left - beside, line.top - above, line.right + beside, line.bottom + above};
}

/// Lines, and what may be one, to be found by the small groups that are part of them.
class LineIndex {
 public:
  /// By their heights, the lowest first.
  LineIndex(std::vector<Group> lines, const PixelBox& picture)
      : lines_(std::move(lines)), grid_(picture) {
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      // Lines lower than that have no parts among these; in a crowded picture most are.
      if (lines_[i].box.height() > 2 * lines_.front().box.height()) {
        grid_.add(i, reachOf(lines_[i].box));
      }
    }
  }

  /// The nearest line that the small group is part of, the lowest of several.
  [[nodiscard]] std::optional<std::size_t> lineOf(const Group& small) const {
    PixelBox middle = small.box;
    middle.top = (small.box.top + small.box.bottom) / 2;
    middle.bottom = middle.top + 1;
    std::optional<std::pair<int, std::size_t>> nearest;  // The gap, and which line.
    grid_.forNear(middle, [&](std::size_t i) {
      if (isPartOf(small, lines_[i])) {
        const std::pair candidate(gapBetween(small.box, lines_[i].box), i);
        nearest = std::min(candidate, nearest.value_or(candidate));
      }
    });
    return nearest ? std::optional(nearest->second) : std::nullopt;
  }

 private:
  std::vector<Group> lines_;
  BoxGrid grid_;
};

/// Joins parts of glyphs to their lines; parts that belong to no line stay as they are.
std::vector<Group> absorbParts(std::vector<Group> groups, const PixelBox& picture) {
  std::ranges::sort(groups, {}, [](const Group& group) { return group.box.height(); });
  // Found in the groups as they were: a line that grew with each speck would creep into the next.
  const LineIndex lines(groups, picture);
  std::vector<Group> kept;
  for (const Group& small : groups) {
    if (const auto line = lines.lineOf(small)) {
      join(groups[*line], small);
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

std::vector<Group> linesOf(std::vector<Group> glyphs, const PixelBox& picture) {
  const auto isBody = [](const Group& group) { return group.box.height() >= kMinLinePx; };
  const auto dots = std::partition(glyphs.begin(), glyphs.end(), isBody);
  const std::vector<Group> small(dots, glyphs.end());
  glyphs.erase(dots, glyphs.end());
  std::vector<Group> lines = joinLines(std::move(glyphs), picture);
  if (lines.size() > kMaxLines * 4) {
    return lines;
  }
  lines.insert(lines.end(), small.begin(), small.end());
  lines = joinLines(absorbParts(std::move(lines), picture), picture);
  std::erase_if(lines, [](const Group& group) { return !isLine(group); });
  return lines;
}

}  // namespace

TextRegions findTextRegions(const png::BgrxView& image) {
  const PixelBox whole{0, 0, image.widthPx, image.heightPx};
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
  const std::vector<Group> lines = linesOf(std::move(glyphs), whole);
  if (lines.size() > kMaxLines) {
    return {{}, {}, {whole}};
  }
  for (const Group& line : lines) {
    (line.isSolid ? regions.large : regions.lines).push_back(line.box);
  }
  for (std::vector<PixelBox>* boxes : {&regions.lines, &regions.large}) {
    std::ranges::sort(*boxes, {}, [](const PixelBox& box) { return std::pair(box.top, box.left); });
  }
  return regions;
}

}  // namespace tarqo::ocr
