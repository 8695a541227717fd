// What a backend brings along to be held to the promises of platform/*.h.
//
// One executable is built for each backend: the suite, and a file that defines
// `makeContractBackend`.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace tarqo::contract {

/// An application that the suite knows. It has one window, in whose tree are
///   - a static text that says "Status: idle", and "Status: saved N" after the Nth press of
///   - the button "Save";
///   - the button "Disabled", which is disabled;
///   - the text field "Name", empty and editable;
///   - a password field;
/// and a menu bar whose menu "File" has at least one item with a title.
class ContractTarget {
 public:
  virtual ~ContractTarget() = default;

  [[nodiscard]] virtual Pid pid() const = 0;

  /// Stops answering requests, and goes on answering.
  virtual void hang() = 0;
  virtual void resume() = 0;

  /// Ends the process, and waits for its end.
  virtual void end() = 0;

  /// The keys that went down in its window so far, by name, with the modifiers that they came with:
  /// "key Return", "key Control+Shift+Return". None when it does not tell.
  [[nodiscard]] virtual std::optional<std::vector<std::string>> keys() { return std::nullopt; }
};

struct Command {
  std::string program;
  std::vector<std::string> arguments;
};

/// Ends with every process of the target that still runs, however it was started.
class ContractBackend {
 public:
  virtual ~ContractBackend() = default;

  /// The backend, its main loop running where it needs one.
  [[nodiscard]] virtual Backend& platformBackend() = 0;

  /// The bundle identifier of the target.
  [[nodiscard]] virtual std::string targetBundleId() const = 0;

  /// Starts the target with its window at about that frame and with that title, and waits until it
  /// is shown. Its process ends with the object.
  [[nodiscard]] virtual std::unique_ptr<ContractTarget> startTarget(const std::string& title,
                                                                    const Rect& frame) = 0;

  /// The user presses the left Shift key, or lets go of it; false when nobody can stand for them.
  virtual bool holdShift(bool /*isDown*/) { return false; }

  /// A program that exits with that status at once.
  [[nodiscard]] virtual Command exitingWith(int status) const = 0;

  /// A program that runs until it is terminated.
  [[nodiscard]] virtual Command running() const = 0;

  /// A program that writes `text` to a file and exits.
  [[nodiscard]] virtual Command writing(const std::string& text, const std::string& path) const = 0;
};

[[nodiscard]] std::unique_ptr<ContractBackend> makeContractBackend();

}  // namespace tarqo::contract
