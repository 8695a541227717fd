// The target's window as a flat, numbered list of nodes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "observe/capture.h"
#include "observe/node_record.h"
#include "session/session.h"

namespace tarqo {

struct SnapshotOptions {
  std::size_t maxNodes = 1500;
  int maxDepth = 40;
  Duration timeout = std::chrono::seconds(4);  ///< For the walk of the window.
  bool menuBar = true;
  bool states = false;
  bool compact = false;       ///< Leave out what has no name, no value and no use.
  bool recognizeText = true;  ///< Where the tree has no text of its own.
  bool alwaysRecognizeText = false;
};

/// What became of text recognition.
struct Recognition {
  std::optional<FailureCode> failure;  ///< The rest is unset then, but for the time.
  std::size_t nodes = 0;
  int imageWidthPx = 0;
  int imageHeightPx = 0;
  Duration took{};
};

struct Snapshot {
  std::string id;
  std::string title;
  std::vector<NodeRecord> nodes;
  NodeTable table;  ///< What the nodes stand for.
  bool truncated = false;
  std::size_t leftOut = 0;                 ///< Nodes that were left out to be compact.
  std::optional<Recognition> recognition;  ///< Absent when it did not run.
  std::optional<WindowImage> image;        ///< The picture that text was recognised in.
  Instant readAt;                          ///< When all nodes had been read.
  Duration took{};
};

/// Lists the target's primary window, which becomes its window. Costs some round trips a node,
/// within the limits of `options`; text recognition takes seconds more.
///
/// Throws what the gate throws, "no_window", and, where the tree has no text of its own, what
/// capturing and recognising throw. Worker thread.
[[nodiscard]] Snapshot takeSnapshot(Session& session, const SnapshotOptions& options);

}  // namespace tarqo
