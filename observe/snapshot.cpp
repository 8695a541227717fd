#include "observe/snapshot.h"

#include <algorithm>
#include <utility>

#include "observe/compaction.h"
#include "observe/menu_walk.h"
#include "observe/recognized_text.h"
#include "observe/snapshot_id.h"
#include "observe/tree_walk.h"

namespace tarqo {
namespace {

// A tree without any text is of no use to the client; the window's own node does not count.
bool isThin(const std::vector<NodeRecord>& nodes) {
  return nodes.size() < 2 ||
         std::none_of(nodes.begin() + 1, nodes.end(), [](const NodeRecord& node) {
           return !node.name.empty() || !node.value.empty();
         });
}

void addTextLine(NodeList& list, const Element& window, TextLine line, bool clickable) {
  NodeRecord record;
  record.id = list.nextId();
  record.parentId = list.rootId;
  record.role = "text";
  record.rawRole = "AXStaticText";
  record.name = std::move(line.text);
  record.clickable = clickable;
  record.bounds = line.box;
  record.confidence = line.confidence;
  list.add(std::move(record), window);
}

// Lists the lines in reading order and gives their number. A line over a password field is never
// listed. A line inside something clickable is not itself clickable: the element there can be
// proven.
std::size_t addTextLines(NodeList& list, const Element& window, std::vector<TextLine> lines,
                         const WalkFrames& frames) {
  std::erase_if(lines, [&](const TextLine& line) {
    return std::any_of(frames.secure.begin(), frames.secure.end(),
                       [&](const Rect& secure) { return secure.intersects(line.box); });
  });
  sortForReading(lines);
  for (TextLine& line : lines) {
    // A line in a popup goes with the popup, so that it cannot pass for one of the window beneath.
    const auto popup =
        std::find_if(frames.popups.begin(), frames.popups.end(),
                     [&](const auto& each) { return each.first.contains(line.box.center()); });
    const Element& shownBy = popup != frames.popups.end() ? popup->second : window;
    const bool covered =
        std::any_of(frames.clickable.begin(), frames.clickable.end(),
                    [&](const Rect& frame) { return frame.contains(line.box.center()); });
    addTextLine(list, shownBy, std::move(line), !covered);
  }
  return lines.size();
}

Element requireWindowToSnapshot(Target& target) {
  if (auto window = target.primaryWindow()) {
    return *window;
  }
  if (target.boundSite()) {
    throw Failure(failures::kSiteLeft, {*target.boundSite()}, {{"seen", target.windowsSeen()}});
  }
  fail(failures::kNoWindowToSnapshot);
}

// Puts the picture into `image` as soon as it is taken, since it serves whatever becomes of the
// text in it. Null when the window has no place.
std::optional<Recognition> recognizedNodes(Session& session, const WalkFrames& frames,
                                           NodeList& list, std::optional<WindowImage>& image) {
  const auto bounds = session.target.windowFrame();
  if (!bounds) {
    return std::nullopt;
  }
  Clock& clock = session.platform.clock;
  const Instant start = clock.now();
  session.grants.requireScreenCapture();
  image = captureWindow(session, *bounds);
  const auto lines = recognizeText(session.platform.textRecognizer, image->image);
  Recognition recognition;
  recognition.nodes =
      addTextLines(list, *session.target.window(), onScreen(lines, *bounds), frames);
  recognition.imageWidthPx = image->image.widthPx;
  recognition.imageHeightPx = image->image.heightPx;
  recognition.took = clock.now() - start;
  return recognition;
}

// Where the tree has no text of its own, a failure to recognise any is the failure of the snapshot.
std::optional<Recognition> recognition(Session& session, const SnapshotOptions& options,
                                       const WalkFrames& frames, NodeList& list,
                                       std::optional<WindowImage>& image) {
  if (!options.recognizeText) {
    return std::nullopt;
  }
  if (isThin(list.records())) {
    return recognizedNodes(session, frames, list, image);
  }
  if (!options.alwaysRecognizeText) {
    return std::nullopt;
  }
  Clock& clock = session.platform.clock;
  const Instant start = clock.now();
  Recognition failed;
  try {
    return recognizedNodes(session, frames, list, image);
  } catch (const Failure& failure) {
    failed.failure = failure.code();
  } catch (const std::exception&) {
    failed.failure = FailureCode::ocrFailed;
  }
  failed.took = clock.now() - start;
  return failed;
}

std::string titleOf(Session& session, const Element& window) {
  std::string title = text(attribute(session.platform.accessibility, window, "AXTitle"));
  return title.empty() ? session.target.running()->localizedName.value_or("macOS") : title;
}

}  // namespace

Snapshot takeSnapshot(Session& session, const SnapshotOptions& options) {
  const Platform& platform = session.platform;
  const Instant start = platform.clock.now();
  const Element app = session.target.requireApp();
  const Element window = requireWindowToSnapshot(session.target);
  // What is observed is what input acts in: a dialog that came up since is the target window now.
  session.target.setWindow(window);

  NodeList list(makeSnapshotId(platform.random));
  WalkFrames frames;
  const WalkBudget budget{options.maxNodes, options.maxDepth, start + options.timeout,
                          options.states};
  TreeWalk(platform, budget, list, frames).walkWindow(app, window);
  Snapshot snapshot;
  snapshot.recognition = recognition(session, options, frames, list, snapshot.image);
  if (options.menuBar) {
    MenuWalk(platform, budget.maxNodes, options.states, list).walkMenuBar(app);
  }
  snapshot.readAt = platform.clock.now();
  if (options.compact) {
    snapshot.leftOut = leaveOutBareNodes(list);
  }
  snapshot.title = titleOf(session, window);
  snapshot.id = list.snapshotId();
  snapshot.truncated = list.truncated;
  snapshot.nodes = list.takeRecords();
  snapshot.table = list.takeTable();
  snapshot.took = platform.clock.now() - start;
  return snapshot;
}

}  // namespace tarqo
