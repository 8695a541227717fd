// The agent's one look at the target: tree, pixels and times of the same window.

#include <cmath>
#include <tuple>

#include "base/base64.h"
#include "base/failure.h"
#include "session/session.h"

namespace tarqo {
namespace {

constexpr double kSameTextDistance = 12;

double distance(Point a, Point b) { return std::hypot(a.x - b.x, a.y - b.y); }

Json omissions(bool withImage, bool truncated) {
  Json list = Json::array();
  list.push_back(withImage ? "Only the selected target window is captured; other windows and the "
                             "desktop are excluded."
                           : "No window image was captured (image: false).");
  if (truncated) {
    list.push_back("The UI tree was truncated by the configured observation budget.");
  }
  return list;
}

}  // namespace

Session::Stored Session::requireCurrentNode(const std::string& previousNodeId) {
  const Stored* stored = nodes_.find(previousNodeId);
  if (stored == nullptr || platform_.clock.now() - snapshotAt_ >= kSnapshotLifetime) {
    fail(failures::kExpiredObserve);
  }
  return *stored;
}

// The id that `previous` has in the snapshot just taken.
std::string Session::renewedNodeId(const Stored& previous) {
  if (previous.box) {
    for (const auto& [id, stored] : nodes_.entries()) {
      if (stored.box && stored.name == previous.name &&
          distance(stored.box->center(), previous.box->center()) <= kSameTextDistance) {
        return id;
      }
    }
    fail(failures::kTextMoved);
  }
  const Description now = describe(platform_.accessibility, previous.element);
  if (now.role == previous.role && now.name == previous.name &&
      now.identifier == previous.identifier) {
    for (const auto& [id, stored] : nodes_.entries()) {
      if (stored.element == previous.element) {
        return id;
      }
    }
  }
  fail(failures::kElementChanged);
}

Session::Observation Session::windowImage(const Rect& bounds) {
  Image image = captureWindow(bounds);
  return {std::move(image), bounds, timestampNow()};
}

Json Session::encodedImage(const Observation& observation) {
  const auto png = platform_.images.encodePng(observation.image);
  if (const auto* error = std::get_if<PngError>(&png)) {
    switch (*error) {
      case PngError::noEncoder:
        fail(failures::kNoImageEncoder);
      case PngError::failed:
        fail(failures::kPngFailed);
    }
  }
  return {{"mimeType", "image/png"},
          {"base64", base64(std::get<std::string>(png))},
          {"width", observation.image.widthPx},
          {"height", observation.image.heightPx},
          {"bounds", rectJSON(observation.bounds)}};
}

void Session::requireSameWindow(const Element& window, const Rect& bounds) {
  const auto current = primaryWindow(requireApp());
  if (current != window || frame(platform_.accessibility, *current) != bounds) {
    fail(failures::kWindowChanged);
  }
}

// What follows the snapshot: the node that was followed, and the picture of the same window.
void Session::completeObservation(Json& result, const std::optional<Stored>& previous,
                                  bool withImage) {
  if (previous) {
    result["renewedNodeId"] = renewedNodeId(*previous);
  }
  const auto bounds = window_ ? frame(platform_.accessibility, *window_) : std::nullopt;
  if (!bounds) {
    fail(failures::kWindowDisappeared);
  }
  const Element window = *window_;
  // Text recognition takes seconds, in which the window may have moved and come to rest: the text
  // would be listed where it no longer is, whether or not the picture is wanted.
  if (observationImage_ && observationImage_->bounds != *bounds) {
    fail(failures::kWindowChanged);
  }
  if (withImage) {
    const Observation observation = observationImage_ ? *observationImage_ : windowImage(*bounds);
    result["image"] = encodedImage(observation);
    result["imageCapturedAt"] = observation.at;
  }
  requireSameWindow(window, *bounds);
}

Json Session::observe(const Json& args) {
  (void)requireApp();
  const bool withImage = booleanMember(args, "image").value_or(true);
  if (withImage) {
    grants_.requireScreenCapture();
  }
  Json result = {{"startedAt", timestampNow()}};
  std::optional<Stored> previous;
  if (const auto previousNodeId = textMember(args, "previousNodeId")) {
    previous = requireCurrentNode(*previousNodeId);
  }
  const std::tuple before(nodes_, snapshotAt_, window_);
  result["snapshot"] = snapshot(args);
  result["snapshotCapturedAt"] = timestampNow();
  try {
    completeObservation(result, previous, withImage);
  } catch (...) {
    // The ids that the client holds stay usable, in their window and for as long as before.
    std::tie(nodes_, snapshotAt_, window_) = before;
    throw;
  }
  result["omissions"] = omissions(withImage, result["snapshot"]["truncated"].get<bool>());
  result["capturedAt"] = timestampNow();
  return result;
}

}  // namespace tarqo
