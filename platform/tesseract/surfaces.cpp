#include "platform/tesseract/surfaces.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <numeric>
#include <span>
#include <utility>

namespace tarqo::ocr {
namespace {

/// Neighbours whose channels differ by no more belong to one surface: above what JPEG makes of a
/// flat area in a remote screen, far below the step from ground to a glyph.
constexpr int kFlatStep = 12;
/// Smaller surfaces are the inside of letters or of icons.
constexpr int kMinSurfacePx = 1000;
/// A flat shape of at most this height, and of at most twice its height in width, that nothing
/// stands on is a letter or an icon: large letters are no less flat than the ground.
constexpr int kMaxShapePx = 120;
constexpr int kMaxShapeAspect = 2;
/// ... unless it fills its box, as an empty button or a colour swatch does. Of letters only slender
/// strokes do.
constexpr double kRectangleFill = 0.95;
constexpr int kMinStrokeAspect = 3;
/// Lower ink may be a speck of the smoothed edge between two surfaces.
constexpr int kMinGlyphPx = 5;
/// Ink with less of its outline on one surface divides surfaces.
constexpr double kOutlineOnOneSurface = 0.8;

class DisjointSets {
 public:
  int add() {
    parents_.push_back(static_cast<int>(parents_.size()));
    return parents_.back();
  }
  int rootOf(int item) {
    while (at(item) != item) {
      at(item) = at(at(item));
      item = at(item);
    }
    return item;
  }
  void unite(int a, int b) {
    const auto [low, high] = std::minmax({rootOf(a), rootOf(b)});
    at(high) = low;
  }

 private:
  int& at(int item) { return parents_[static_cast<std::size_t>(item)]; }

  std::vector<int> parents_;
};

/// Pixels of one row that belong together.
struct Run {
  int begin = 0;
  int end = 0;
  int set = 0;
  bool isSolid = false;  ///< Of ink: holds a shape as large as a surface.
};
/// The runs of one row, from left to right.
using RowOfRuns = std::vector<Run>;

using Row = std::span<const std::uint8_t>;

Row rowOf(const png::BgrxView& image, int y) {
  return image.bytes.subspan(static_cast<std::size_t>(y) * image.strideBytes,
                             static_cast<std::size_t>(image.widthPx) * 4);
}

bool isFlat(Row a, int x, Row b, int otherX) {
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const auto at = [channel](Row row, int column) {
      return static_cast<int>(row[static_cast<std::size_t>(column) * 4 + channel]);
    };
    if (std::abs(at(a, x) - at(b, otherX)) > kFlatStep) {
      return false;
    }
  }
  return true;
}

/// Calls `deed` for each pair of runs of two rows that share columns, or lie `reach` columns apart.
template <typename Deed>
void forTouching(RowOfRuns& upper, RowOfRuns& lower, int reach, const Deed& deed) {
  auto first = upper.begin();
  for (Run& run : lower) {
    while (first != upper.end() && first->end + reach <= run.begin) {
      ++first;
    }
    for (auto other = first; other != upper.end() && other->begin < run.end + reach; ++other) {
      deed(*other, run);
    }
  }
}

/// The surfaces of a picture, and everything too small to be one, as runs of flat colour.
class FlatRuns {
 public:
  explicit FlatRuns(const png::BgrxView& image) {
    rows_.resize(static_cast<std::size_t>(std::max(image.heightPx, 0)));
    for (int y = 0; y < image.heightPx; ++y) {
      RowOfRuns& runs = rows_[static_cast<std::size_t>(y)];
      splitRow(rowOf(image, y), image.widthPx, runs);
      if (y > 0) {
        linkRows(image, y, runs);
      }
    }
    measure();
  }

  [[nodiscard]] std::vector<RowOfRuns>& rows() { return rows_; }
  [[nodiscard]] bool isSurface(const Run& run) const { return isLarge(run) && !isShape(run); }
  /// A shape found by `findShapes`.
  [[nodiscard]] bool isShape(const Run& run) const { return setOf(run).isShape; }

  /// Reclassifies surfaces that look like a shape and carry no ink. Returns whether there were any.
  bool findShapes(const std::vector<InkPart>& ink) {
    for (const InkPart& part : ink) {
      if (part.surface >= 0 && !part.divides && part.box.height() >= kMinGlyphPx) {
        measures_[static_cast<std::size_t>(part.surface)].isGround = true;
      }
    }
    bool found = false;
    for (Measure& set : measures_) {
      set.isShape = set.areaPx >= kMinSurfacePx && !set.isGround && looksLikeShape(set);
      found = found || set.isShape;
    }
    return found;
  }

 private:
  /// Of a set of runs.
  struct Measure {
    PixelBox box;
    int areaPx = 0;
    bool isGround = false;
    bool isShape = false;
  };

  static bool looksLikeShape(const Measure& set) {
    const int width = set.box.width();
    const int height = set.box.height();
    const auto [low, high] = std::minmax({width, height});
    return height <= kMaxShapePx && width <= kMaxShapeAspect * height &&
           (set.areaPx < kRectangleFill * width * height || high >= kMinStrokeAspect * low);
  }

  [[nodiscard]] const Measure& setOf(const Run& run) const {
    return measures_[static_cast<std::size_t>(run.set)];
  }
  [[nodiscard]] bool isLarge(const Run& run) const { return setOf(run).areaPx >= kMinSurfacePx; }

  void splitRow(Row row, int widthPx, RowOfRuns& runs) {
    for (int x = 0; x < widthPx; ++x) {
      if (x == 0 || !isFlat(row, x, row, x - 1)) {
        runs.push_back({x, x, sets_.add()});
      }
      runs.back().end = x + 1;
    }
  }

  void linkRows(const png::BgrxView& image, int y, RowOfRuns& runs) {
    const Row row = rowOf(image, y);
    const Row above = rowOf(image, y - 1);
    forTouching(rows_[static_cast<std::size_t>(y) - 1], runs, 0, [&](Run& upper, Run& lower) {
      if (sets_.rootOf(upper.set) == sets_.rootOf(lower.set)) {
        return;
      }
      const int end = std::min(upper.end, lower.end);
      for (int x = std::max(upper.begin, lower.begin); x < end; ++x) {
        if (isFlat(row, x, above, x)) {
          sets_.unite(upper.set, lower.set);
          return;
        }
      }
    });
  }

  void measure() {
    for (std::size_t y = 0; y < rows_.size(); ++y) {
      for (Run& run : rows_[y]) {
        run.set = sets_.rootOf(run.set);
        measures_.resize(std::max(measures_.size(), static_cast<std::size_t>(run.set) + 1));
        Measure& set = measures_[static_cast<std::size_t>(run.set)];
        const PixelBox box{run.begin, static_cast<int>(y), run.end, static_cast<int>(y) + 1};
        if (set.areaPx == 0) {
          set.box = box;
        }
        set.box.add(box);
        set.areaPx += run.end - run.begin;
      }
    }
  }

  std::vector<RowOfRuns> rows_;
  DisjointSets sets_;
  std::vector<Measure> measures_;  ///< By set.
};

/// Joins what is not surface to parts, and counts on which surfaces each borders.
class InkFinder {
 public:
  explicit InkFinder(FlatRuns& flat) : flat_(flat) {
    for (const RowOfRuns& runs : flat.rows()) {
      rows_.push_back(inkOf(runs));
      if (rows_.size() > 1) {
        // Reaching one column further lets corners touch.
        forTouching(
            rows_[rows_.size() - 2], rows_.back(), 1,
            [this](const Run& upper, const Run& lower) { sets_.unite(upper.set, lower.set); });
      }
    }
  }

  [[nodiscard]] std::vector<InkPart> parts() {
    for (std::size_t y = 0; y < rows_.size(); ++y) {
      for (Run& run : rows_[y]) {
        addRun(static_cast<int>(y), run);
      }
      borderOnRow(rows_[y], flat_.rows()[y], 1);
      if (y > 0) {
        borderOnRow(rows_[y], flat_.rows()[y - 1], 0);
      }
      if (y + 1 < rows_.size()) {
        borderOnRow(rows_[y], flat_.rows()[y + 1], 0);
      }
    }
    std::vector<InkPart> found;
    found.reserve(parts_.size());
    for (const Part& part : parts_) {
      found.push_back(finished(part));
    }
    return found;
  }

 private:
  struct Part {
    InkPart ink;
    std::map<int, int> outline;  ///< How many pixels border on which surface.
  };

  RowOfRuns inkOf(const RowOfRuns& runs) {
    RowOfRuns ink;
    for (const Run& run : runs) {
      if (flat_.isSurface(run)) {
        continue;
      }
      if (ink.empty() || ink.back().end != run.begin) {
        ink.push_back({run.begin, run.begin, sets_.add()});
      }
      ink.back().end = run.end;
      ink.back().isSolid = ink.back().isSolid || flat_.isShape(run);
    }
    return ink;
  }

  void addRun(int y, const Run& run) {
    const PixelBox box{run.begin, y, run.end, y + 1};
    const auto root = static_cast<std::size_t>(sets_.rootOf(run.set));
    partOfSet_.resize(std::max(partOfSet_.size(), root + 1), -1);
    if (partOfSet_[root] < 0) {
      partOfSet_[root] = static_cast<int>(parts_.size());
      parts_.push_back({{box}, {}});
    }
    Part& part = partOf(run);
    part.ink.box.add(box);
    part.ink.areaPx += run.end - run.begin;
    part.ink.isSolid = part.ink.isSolid || run.isSolid;
  }

  /// Counts the surfaces that runs of ink touch in a row: beside them, with a reach of 1, or right
  /// above or below.
  void borderOnRow(RowOfRuns& ink, RowOfRuns& flat, int reach) {
    forTouching(flat, ink, reach, [&](const Run& ground, const Run& run) {
      if (!flat_.isSurface(ground)) {
        return;
      }
      const int shared = std::min(ground.end, run.end) - std::max(ground.begin, run.begin);
      partOf(run).outline[ground.set] += std::max(shared, 1);
    });
  }

  Part& partOf(const Run& run) {
    const auto root = static_cast<std::size_t>(sets_.rootOf(run.set));
    return parts_[static_cast<std::size_t>(partOfSet_[root])];
  }

  static InkPart finished(const Part& part) {
    InkPart ink = part.ink;
    int whole = 0;
    int most = 0;
    for (const auto& [surface, count] : part.outline) {
      whole += count;
      if (count > most) {
        most = count;
        ink.surface = surface;
      }
    }
    ink.divides = most < kOutlineOnOneSurface * whole;
    return ink;
  }

  FlatRuns& flat_;
  std::vector<RowOfRuns> rows_;
  DisjointSets sets_;
  std::vector<int> partOfSet_;  ///< By root of the set.
  std::vector<Part> parts_;
};

}  // namespace

void PixelBox::add(const PixelBox& other) {
  left = std::min(left, other.left);
  top = std::min(top, other.top);
  right = std::max(right, other.right);
  bottom = std::max(bottom, other.bottom);
}

std::vector<InkPart> findInk(const png::BgrxView& image) {
  FlatRuns flat(image);
  std::vector<InkPart> ink = InkFinder(flat).parts();
  return flat.findShapes(ink) ? InkFinder(flat).parts() : ink;
}

}  // namespace tarqo::ocr
