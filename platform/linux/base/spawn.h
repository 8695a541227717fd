// Starts programs as children that share nothing with the helper: the standard streams are the null
// device, no other file is open, no signal is blocked or ignored. No shell is involved.
//
// Any thread. Waits until the program runs or has been refused, which takes about a millisecond.
#pragma once

#include <string>
#include <vector>

#include "platform/process_id.h"

namespace tarqo::lnx {

struct SpawnRequest {
  std::string program;                   ///< Absolute.
  std::vector<std::string> arguments;    ///< The program's name first.
  std::vector<std::string> environment;  ///< "NAME=value" each.
  std::string folder;                    ///< To work in; the helper's own when empty.
  bool ownSession = false;               ///< Apart from the terminal and its signals.
  /// The name of a variable to be set to the child's own process id; no variable when empty.
  std::string pidVariable;
};

/// The child, or why it could not be started.
struct Spawned {
  Pid pid = 0;    ///< 0 when the program could not be started.
  int error = 0;  ///< The `errno` of that.
};

/// The program for a name, found by PATH, or for a path: where a launch finds it, links resolved.
/// Empty when there is no such program.
[[nodiscard]] std::string resolvedProgram(const std::string& program);

/// Starts a program. The caller must make sure that the child is waited for.
[[nodiscard]] Spawned spawn(const SpawnRequest& request);

/// The helper's own environment, "NAME=value" each, without the variables of these names.
[[nodiscard]] std::vector<std::string> environmentWithout(const std::vector<std::string>& names);

/// How a child ended.
struct ChildEnd {
  bool exited = false;  ///< By itself, with `status`; else by the signal `status`.
  int status = 0;
};

/// Whether a child has ended, and how. Collects it: for a second call the child is unknown, which
/// counts as an exit with status 0.
[[nodiscard]] bool hasEnded(Pid child, ChildEnd& end);

/// Closes every file from that number on. Safe in the child of a process with threads.
void closeFilesFrom(int first);

/// Waits, without limit, until a child has ended.
void awaitEnd(Pid child);

}  // namespace tarqo::lnx
