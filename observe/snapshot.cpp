// The target's window as a flat, numbered list of nodes.

#include <algorithm>

#include "base/failure.h"
#include "observe/menu_walk.h"
#include "observe/recognized_text.h"
#include "observe/snapshot_id.h"
#include "observe/tree_walk.h"
#include "session/session.h"

namespace tarqo {
namespace {

constexpr std::int64_t kDefaultMaxNodes = 1500;
constexpr std::int64_t kDefaultMaxDepth = 40;
constexpr std::int64_t kDefaultWalkMs = 4000;

std::int64_t clampedArgument(const Json& args, const char* key, std::int64_t otherwise,
                             std::pair<std::int64_t, std::int64_t> range) {
  return std::clamp(integerMember(args, key).value_or(otherwise), range.first, range.second);
}

WalkBudget walkBudget(const Json& args, Instant start) {
  WalkBudget budget;
  budget.maxNodes =
      static_cast<std::size_t>(clampedArgument(args, "maxNodes", kDefaultMaxNodes, {1, 10000}));
  budget.maxDepth = static_cast<int>(clampedArgument(args, "maxDepth", kDefaultMaxDepth, {0, 100}));
  budget.deadline = start + std::chrono::milliseconds(
                                clampedArgument(args, "timeoutMs", kDefaultWalkMs, {100, 30000}));
  return budget;
}

double millisecondsBetween(Instant start, Instant end) {
  return std::chrono::duration<double, std::milli>(end - start).count();
}

// A tree without any text tells the client nothing; the window's own node does not count.
bool isThin(const Json& nodes) {
  return nodes.size() < 2 || std::none_of(nodes.begin() + 1, nodes.end(), [](const Json& node) {
           return !node["name"].get_ref<const std::string&>().empty() || node.contains("value");
         });
}

void emitTextLine(NodeList& list, const Element& window, const TextLine& line, bool clickable) {
  list.emit({{"id", list.nextId()},
             {"parentId", list.rootId},
             {"role", "text"},
             {"name", line.text},
             {"enabled", true},
             {"clickable", clickable},
             {"bounds", rectJSON(line.box)},
             {"confidence", line.confidence}},
            {window, "AXStaticText", line.text, "", clickable, line.box});
}

// Lists the lines in reading order and gives their number. A line over a password field is never
// told. A line inside something clickable is not itself clickable: the element there can be proven.
std::size_t emitTextLines(NodeList& list, const Element& window, std::vector<TextLine> lines,
                          const WalkFrames& frames) {
  std::erase_if(lines, [&](const TextLine& line) {
    return std::any_of(frames.secure.begin(), frames.secure.end(),
                       [&](const Rect& secure) { return secure.intersects(line.box); });
  });
  sortForReading(lines);
  for (const TextLine& line : lines) {
    const bool covered =
        std::any_of(frames.clickable.begin(), frames.clickable.end(),
                    [&](const Rect& frame) { return frame.contains(line.box.center()); });
    emitTextLine(list, window, line, !covered);
  }
  return lines.size();
}

}  // namespace

Element Session::requireWindowToSnapshot(const Element& app) {
  if (auto window = primaryWindow(app)) {
    return *window;
  }
  if (boundSite_) {
    throw Failure("no_window",
                  "No window shows " + *boundSite_ +
                      " any more: the page left the site, or its window closed.",
                  {{"seen", windowsSeen(app)}});
  }
  fail(failures::kNoWindowToSnapshot);
}

std::optional<Json> Session::recognizedNodes(const Element& window, const WalkFrames& frames,
                                             NodeList& list) {
  const auto bounds = frame(platform_.accessibility, window);
  if (!bounds) {
    return std::nullopt;
  }
  const Instant start = platform_.clock.now();
  grants_.requireScreenCapture();
  observationImage_ = windowImage(*bounds);
  const Image& image = observationImage_->image;
  const std::size_t count =
      emitTextLines(list, window, onScreen(recognizeText(image), *bounds), frames);
  return Json{{"status", "ok"},
              {"nodes", count},
              {"imageWidth", image.widthPx},
              {"imageHeight", image.heightPx},
              {"durationMs", millisecondsBetween(start, platform_.clock.now())}};
}

// What became of text recognition; none when it did not run. Where the tree has no text of its own,
// a failure to recognise any is the failure of the snapshot.
std::optional<Json> Session::recognitionStatus(const Json& args, const Element& window,
                                               const WalkFrames& frames, NodeList& list) {
  if (!booleanMember(args, "ocr").value_or(true)) {
    return std::nullopt;
  }
  if (isThin(list.nodes)) {
    return recognizedNodes(window, frames, list);
  }
  if (!booleanMember(args, "forceOcr").value_or(false)) {
    return std::nullopt;
  }
  const Instant start = platform_.clock.now();
  const auto failed = [&](const std::string& code) {
    return Json{{"status", "failed"},
                {"code", code},
                {"durationMs", millisecondsBetween(start, platform_.clock.now())}};
  };
  try {
    return recognizedNodes(window, frames, list);
  } catch (const Failure& failure) {
    return failed(failure.code());
  } catch (const std::exception&) {
    return failed("ocr_failed");
  }
}

Json Session::snapshot(const Json& args) {
  observationImage_.reset();
  nodes_.clear();
  Clock& clock = platform_.clock;
  const Instant start = clock.now();
  const Element app = requireApp();
  const Element window = requireWindowToSnapshot(app);
  // What is observed is what input acts in: a dialog that came up since is the target window now.
  window_ = window;
  const WalkBudget budget = walkBudget(args, start);

  NodeList list{makeSnapshotId(platform_.random), Json::array(), nodes_};
  WalkFrames frames;
  TreeWalk walk(platform_, budget, list, frames);
  walk.walkWindow(app, window);
  const std::optional<Json> ocr = recognitionStatus(args, window, frames, list);
  if (booleanMember(args, "menubar").value_or(true)) {
    MenuWalk(platform_, budget.maxNodes, list).walkMenuBar(app);
  }
  snapshotAt_ = clock.now();

  std::string title = text(attribute(platform_.accessibility, window, "AXTitle"));
  if (title.empty()) {
    title = running_->localizedName.value_or("macOS");
  }
  Json result = {{"id", list.snapshotId},
                 {"source", "macos"},
                 {"title", std::move(title)},
                 {"nodes", std::move(list.nodes)},
                 {"truncated", list.truncated}};
  if (ocr) {
    result["ocr"] = *ocr;
  }
  result["durationMs"] = millisecondsBetween(start, clock.now());
  return result;
}

}  // namespace tarqo
