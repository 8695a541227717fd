// The "observe" method: the agent's one look at the target, with tree, pixels and times of the same
// window.

#include "ax/attribute_access.h"
#include "base/base64.h"
#include "base/failure.h"
#include "methods/methods.h"
#include "observe/capture.h"
#include "observe/snapshot.h"

namespace tarqo::methods {
namespace {

struct ObserveArguments {
  bool image;
  std::optional<std::string> previousNodeId;
  SnapshotOptions snapshot;
};

ObserveArguments observeArguments(const Json& args) {
  SnapshotOptions options;
  options.maxNodes = static_cast<std::size_t>(clampedMember(args, "maxNodes", 1500, {1, 10000}));
  options.maxDepth = static_cast<int>(clampedMember(args, "maxDepth", 40, {0, 100}));
  options.timeout = std::chrono::milliseconds(clampedMember(args, "timeoutMs", 4000, {100, 30000}));
  options.menuBar = booleanMember(args, "menubar").value_or(true);
  options.recognizeText = booleanMember(args, "ocr").value_or(true);
  options.alwaysRecognizeText = booleanMember(args, "forceOcr").value_or(false);
  options.states = booleanMember(args, "states").value_or(false);
  options.compact = booleanMember(args, "compact").value_or(false);
  return {.image = booleanMember(args, "image").value_or(true),
          .previousNodeId = textMember(args, "previousNodeId"),
          .snapshot = options};
}

double milliseconds(Duration duration) {
  return std::chrono::duration<double, std::milli>(duration).count();
}

Json omissions(bool withImage, const Snapshot& snapshot) {
  Json list = Json::array();
  list.push_back(withImage ? "Only the selected target window is captured; other windows and the "
                             "desktop are excluded."
                           : "No window image was captured (image: false).");
  if (snapshot.truncated) {
    list.push_back("The UI tree was truncated by the configured observation budget.");
  }
  if (snapshot.leftOut > 0) {
    list.push_back("Nodes without name, value and use that were left out (compact: true): " +
                   std::to_string(snapshot.leftOut) + ".");
  }
  return list;
}

Json recognitionJson(const Recognition& recognition) {
  if (recognition.failure) {
    return {{"status", "failed"},
            {"code", wireName(*recognition.failure)},
            {"durationMs", milliseconds(recognition.took)}};
  }
  return {{"status", "ok"},
          {"nodes", recognition.nodes},
          {"imageWidth", recognition.imageWidthPx},
          {"imageHeight", recognition.imageHeightPx},
          {"durationMs", milliseconds(recognition.took)}};
}

Json snapshotJson(Snapshot& snapshot) {
  Json nodes = Json::array();
  for (NodeRecord& record : snapshot.nodes) {
    nodes.push_back(nodeJson(std::move(record)));
  }
  Json result = {{"id", snapshot.id},
                 {"source", "macos"},
                 {"title", snapshot.title},
                 {"nodes", std::move(nodes)},
                 {"truncated", snapshot.truncated},
                 {"durationMs", milliseconds(snapshot.took)}};
  if (snapshot.recognition) {
    result["ocr"] = recognitionJson(*snapshot.recognition);
  }
  return result;
}

Json imageJson(Images& images, const WindowImage& picture) {
  const auto png = images.encodePng(picture.image);
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
          {"width", picture.image.widthPx},
          {"height", picture.image.heightPx},
          {"bounds", rectJSON(picture.bounds)}};
}

void requireSameWindow(Session& session, const Element& window, const Rect& bounds) {
  (void)session.target.requireApp();
  const auto current = session.target.primaryWindow();
  if (current != window || frame(session.platform.accessibility, *current) != bounds) {
    fail(failures::kWindowChanged);
  }
}

// The picture of the window that was read, where one is wanted, and that it is that window still.
void addImage(Session& session, const Snapshot& snapshot, bool withImage, Json& result) {
  const auto bounds = session.target.windowFrame();
  if (!bounds) {
    fail(failures::kWindowDisappeared);
  }
  const Element window = *session.target.window();
  // Text recognition takes seconds, in which the window may have moved and come to rest: the text
  // would be listed where it no longer is, whether or not the picture is wanted.
  if (snapshot.image && snapshot.image->bounds != *bounds) {
    fail(failures::kWindowChanged);
  }
  if (withImage) {
    const WindowImage picture = snapshot.image ? *snapshot.image : captureWindow(session, *bounds);
    result["image"] = imageJson(session.platform.images, picture);
    result["imageCapturedAt"] = picture.at;
  }
  requireSameWindow(session, window, *bounds);
}

// Without a snapshot the client has no nodes to name: those it had may be gone.
Snapshot snapshotOrNoNodes(Session& session, const SnapshotOptions& options) {
  try {
    return takeSnapshot(session, options);
  } catch (...) {
    session.nodes.clear();
    throw;
  }
}

}  // namespace

Json observe(Session& session, const Json& args) {
  (void)session.target.requireApp();
  const ObserveArguments wanted = observeArguments(args);
  if (wanted.image) {
    session.grants.requireScreenCapture();
  }
  Json result = {{"startedAt", session.timestampNow()}};
  std::optional<StoredNode> previous;
  if (wanted.previousNodeId) {
    previous = session.nodes.require(*wanted.previousNodeId, failures::kExpiredObserve);
  }
  std::optional<Element> windowBefore = session.target.window();
  Snapshot snapshot = snapshotOrNoNodes(session, wanted.snapshot);
  result["snapshotCapturedAt"] = session.timestampNow();
  try {
    if (previous) {
      result["renewedNodeId"] =
          renewedNodeId(session.platform.accessibility, *previous, snapshot.table);
    }
    addImage(session, snapshot, wanted.image, result);
    result["omissions"] = omissions(wanted.image, snapshot);
    result["snapshot"] = snapshotJson(snapshot);
  } catch (...) {
    // The ids that the client holds stay usable, in their window and for as long as before.
    session.target.setWindow(std::move(windowBefore));
    throw;
  }
  session.nodes.commit(std::move(snapshot.table), snapshot.readAt);
  result["capturedAt"] = session.timestampNow();
  return result;
}

}  // namespace tarqo::methods
