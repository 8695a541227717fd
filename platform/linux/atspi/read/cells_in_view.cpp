#include "platform/linux/atspi/read/cells_in_view.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {
namespace {

/// No screen shows more of them.
constexpr std::size_t kMaxColumns = 64;
constexpr std::size_t kMaxRows = 256;

/// Places looked at on the way along a row or a column.
constexpr int kMaxSteps = 600;

/// How far the next place is from one where nothing is.
constexpr double kGap = 10;

/// How far inside an area, and beyond a cell, is looked: past frames and grid lines.
constexpr double kInset = 3;

/// A cell of GTK 3 reports less than it covers: not the space between the rows.
constexpr double kSlack = 4;

/// Rows looked along until one has a cell.
constexpr int kTriedRows = 8;

/// A table with more columns is a sheet, whose headers are no objects.
constexpr int kMaxHeaders = 64;

constexpr std::uint32_t kScreenCoordinates = 0;

double middle(double from, double to) { return std::floor((from + to) / 2); }

/// The search for the cells of one object. Lives as long as a call of it is unanswered.
class CellsInView : public std::enable_shared_from_this<CellsInView> {
 public:
  explicit CellsInView(std::shared_ptr<PropertyRequest> request) : request_(std::move(request)) {}

  void start() {
    ++request_->open;
    requestExtents(request_->ref, [this](const std::optional<Rect>& area) {
      if (!area) {
        return;
      }
      area_ = *area;
      if (request_->properties->has(Interface::table)) {
        requestHeaders();
      }
      // The middle row: above it there may be headers, which are divided like no other row.
      goAlong({area_.minX() + kInset, area_.center().y}, kMaxSteps, kTriedRows);
    });
  }

 private:
  using Found = std::function<void(const std::optional<Ref>&)>;
  using Place = std::function<void(const std::optional<Rect>&)>;

  /// Every call counts until its answer has been handled, which may send the next one.
  ReplyHandler counted(ReplyHandler handle) {
    ++pending_;
    return [self = shared_from_this(), handle = std::move(handle)](Reply reply) {
      handle(reply);
      if (--self->pending_ == 0) {
        self->finish();
      }
    };
  }

  void requestExtents(const Ref& ref, Place done) {
    Message message = request_->batch.make(ref, kComponent, "GetExtents");
    if (message) {
      sd_bus_message_append(message.get(), "u", kScreenCoordinates);
    }
    request_->batch.send(std::move(message), counted([done = std::move(done)](Reply reply) {
                           done(plausible(reply.ok ? readExtents(reply.message) : std::nullopt));
                         }));
  }

  void requestAt(Point point, Found done) {
    Message message = request_->batch.make(request_->ref, kComponent, "GetAccessibleAtPoint");
    if (message) {
      sd_bus_message_append(message.get(), "iiu", static_cast<std::int32_t>(point.x),
                            static_cast<std::int32_t>(point.y), kScreenCoordinates);
    }
    request_->batch.send(
        std::move(message), counted([this, done = std::move(done)](Reply reply) {
          const std::optional<Ref> found = reply.ok ? readRef(reply.message) : std::nullopt;
          done(found && !found->empty() && *found != request_->ref ? found : std::nullopt);
        }));
  }

  /// The part of the cell at a point that is in view; empty when there is no cell.
  void requestPlaceAt(Point point, Place done) {
    requestAt(point, [this, point, done = std::move(done)](const std::optional<Ref>& found) {
      if (!found) {
        done(std::nullopt);
        return;
      }
      requestExtents(*found, [this, point, done](const std::optional<Rect>& its) {
        const bool isThere = its && its->grownBy(kSlack).contains(point);
        done(isThere ? std::optional(its->intersection(area_)) : std::nullopt);
      });
    });
  }

  void goAlong(Point at, int stepsLeft, int rowsLeft) {
    if (at.x < area_.maxX() && columns_.size() < kMaxColumns && stepsLeft > 0) {
      requestPlaceAt(at, [this, at, stepsLeft, rowsLeft](const std::optional<Rect>& cell) {
        if (cell) {
          columns_.push_back(middle(cell->minX(), cell->maxX()));
        }
        const double next = cell ? std::max(cell->maxX(), at.x) + kInset : at.x + kGap;
        goAlong({next, at.y}, stepsLeft - 1, rowsLeft);
      });
    } else if (!columns_.empty()) {
      goDown({columns_.front(), area_.minY() + kInset}, kMaxSteps);
    } else if (rowsLeft > 1) {
      // Few rows may be all at the top.
      goAlong({area_.minX() + kInset, (area_.minY() + at.y) / 2}, kMaxSteps, rowsLeft - 1);
    }
  }

  void goDown(Point at, int stepsLeft) {
    if (at.y >= area_.maxY() || rows_ >= kMaxRows || stepsLeft == 0) {
      return;
    }
    requestPlaceAt(at, [this, at, stepsLeft](const std::optional<Rect>& cell) {
      if (cell) {
        requestRow(middle(cell->minY(), cell->maxY()));
      }
      goDown({at.x, cell ? std::max(cell->maxY(), at.y) + kInset : at.y + kGap}, stepsLeft - 1);
    });
  }

  void requestRow(double y) {
    const std::size_t first = cells_.size();
    cells_.resize(first + columns_.size());
    ++rows_;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      requestAt({columns_[i], y}, [this, slot = first + i](const std::optional<Ref>& found) {
        cells_[slot] = found.value_or(Ref{});
      });
    }
  }

  void requestHeaders() {
    const auto takeHeader = [this](Reply reply) {
      headers_.push_back((reply.ok ? readRef(reply.message) : std::nullopt).value_or(Ref{}));
    };
    const auto takeCount = [this, takeHeader](Reply reply) {
      const int count = (reply.ok ? readVariantInt(reply.message) : std::nullopt).value_or(0);
      for (int i = 0; count <= kMaxHeaders && i < count; ++i) {
        request_->batch.callWithNumber(request_->ref, {kTable, "GetColumnHeader"}, i,
                                       counted(takeHeader));
      }
    };
    request_->batch.property(request_->ref, kTable, "NColumns", counted(takeCount));
  }

  void finish() {
    std::vector<Ref>& children = request_->properties->children.emplace();
    std::unordered_set<Ref, RefHash> listed;
    for (const std::vector<Ref>* some : {&headers_, &cells_}) {
      std::ranges::copy_if(*some, std::back_inserter(children), [&listed](const Ref& ref) {
        return !ref.empty() && listed.insert(ref).second;
      });
    }
    answered(request_);
  }

  std::shared_ptr<PropertyRequest> request_;
  int pending_ = 0;
  Rect area_;
  std::vector<double> columns_;  ///< Where each is in the middle.
  std::size_t rows_ = 0;
  std::vector<Ref> headers_;
  std::vector<Ref> cells_;  ///< Row by row; empty where there is none.
};

}  // namespace

bool mayHaveTooManyChildren(const Properties& properties, Toolkit toolkit) {
  const bool holdsCells = properties.has(Interface::table) || properties.is(Role::table) ||
                          properties.is(Role::treeTable) || properties.is(Role::tree) ||
                          properties.is(Role::list) || properties.is(Role::listBox);
  switch (toolkit) {
    case Toolkit::chromium:  // What is at a point there may be deep inside a child.
    case Toolkit::gecko:     // The same.
    case Toolkit::gtk4:      // Has objects for what is near the view alone.
      return properties.has(State::managesDescendants);
    case Toolkit::gtk3:
    case Toolkit::qt:
    case Toolkit::other:
      break;
  }
  return properties.has(State::managesDescendants) || holdsCells;
}

void requestCellsInView(const std::shared_ptr<PropertyRequest>& request) {
  std::make_shared<CellsInView>(request)->start();
}

}  // namespace tarqo::lnx::atspi
