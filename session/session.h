// The session: the one target application, its window, and the nodes of the last observation.
//
// One instance for the life of the process. Its methods are implemented in the folder of their
// subject: session/ (connecting, windows, notifications, the gate), observe/, input/. Worker thread
// only; the journal alone is also written from the main loop's thread. The public methods take the
// request's "args" and give its "result", or throw a `Failure`.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ax/description.h"
#include "base/failure.h"
#include "base/json.h"
#include "host/grants.h"
#include "platform/platform.h"
#include "session/journal.h"
#include "session/node_table.h"

namespace tarqo {

struct NodeList;
struct WalkFrames;

class Session {
 public:
  using Stored = StoredNode;

  /// The notifications the helper subscribes to.
  static constexpr std::array<std::string_view, 17> WATCHED{"AXMenuOpened",
                                                            "AXMenuClosed",
                                                            "AXMenuItemSelected",
                                                            "AXFocusedUIElementChanged",
                                                            "AXValueChanged",
                                                            "AXTitleChanged",
                                                            "AXLayoutChanged",
                                                            "AXRowCountChanged",
                                                            "AXSelectedRowsChanged",
                                                            "AXSelectedChildrenChanged",
                                                            "AXCreated",
                                                            "AXUIElementDestroyed",
                                                            "AXWindowCreated",
                                                            "AXWindowResized",
                                                            "AXWindowMoved",
                                                            "AXApplicationActivated",
                                                            "AXSelectedTextChanged"};

  /// A window narrower or lower than this many points counts as not shown.
  static constexpr double minimumWindowSide = 120;

  /// Where the target window is in the window server's list. `number` belongs to `exact`.
  struct WindowPlacement {
    enum class Kind {
      exact,    ///< At its frame, with nothing of another application over it.
      covered,  ///< Another application's window intersects it from above.
      missing   ///< Hidden, minimised, too small, off every display, or not in the list.
    };
    Kind kind = Kind::missing;
    WindowNumber number = 0;
  };

  Session(const Platform& platform, HostFinder& hosts, Grants& grants);

  // session/
  [[nodiscard]] Json connect(const Json& args);
  [[nodiscard]] Json settle(const Json& args);

  // observe/
  [[nodiscard]] Json observe(const Json& args);
  [[nodiscard]] Json geometry();

  // input/
  [[nodiscard]] Json click(const Json& args);
  [[nodiscard]] Json hover(const Json& args);
  [[nodiscard]] Json showMenu(const Json& args);
  [[nodiscard]] Json input(const Json& args);

 private:
  /// Proves anew, when called, that an event may go out; fails when it may not.
  using Proof = std::function<void()>;

  /// A window image taken by text recognition, kept for the observation it belongs to.
  struct Observation {
    Image image;
    Rect bounds;
    std::string at;
  };

  /// What became of a press through accessibility. Only what is `refused` or `unanswered` may be
  /// followed by the pointer.
  enum class Press {
    refused,     ///< Not offered, or the application did not take it.
    unanswered,  ///< Taken by a system that says no more, and nothing happened that could be heard.
    pending,     ///< Sent, and the application has not finished with it.
    answered
  };

  // session/: the gate. Throws "session_locked", "ax_not_trusted", "app_closed".
  Element requireApp();

  // session/: connecting and windows.
  RunningApplication launch(const std::string& bundleId);
  void bindSite(const std::string& bundleId, const Json& args, bool mayLaunch);
  Json connectResult(const std::string& bundleId);
  std::optional<Element> primaryWindow(const Element& app);
  std::optional<Element> reopenWindow(const std::string& bundleId, const Element& app);
  /// Waits up to 1.5 s, then 0.12 s more. Throws "app_closed", "focus_failed".
  void activate(const Element& app);
  std::vector<Element> windowsOf(const Element& app);
  std::vector<Element> siteWindows(const Element& app);
  Json windowsSeen(const Element& app);
  bool isFrontmost();

  // session/: notifications.
  /// Starts listening to a process; for when nobody listens.
  void listen(Pid pid);
  void watch(const Element& element);
  /// Performs an action, and writes an acknowledgement of it into the journal.
  Performed performed(const Element& element, std::string_view action);
  /// Waits until `windowMs` after `since`, less when something answers.
  bool pressAnswered(Instant since, double windowMs = 350);

  // observe/
  Json snapshot(const Json& args);
  Element requireWindowToSnapshot(const Element& app);
  std::optional<Json> recognitionStatus(const Json& args, const Element& window,
                                        const WalkFrames& frames, NodeList& list);
  std::optional<Json> recognizedNodes(const Element& window, const WalkFrames& frames,
                                      NodeList& list);
  bool isMinimized(const Element& window);
  bool isAppHidden();
  bool isOnScreen(const Rect& frame);
  WindowPlacement windowPlacement(const Rect& frame);
  WindowPlacement settledPlacement(const Rect& bounds);
  /// Waits for placement and for each technique; see the constants in capture.cpp.
  Image captureWindow(const Rect& bounds);
  std::optional<Image> captureWith(CaptureTechnique technique, WindowNumber window,
                                   const Rect& bounds);
  std::optional<Image> captureWindowImage(WindowNumber window);
  std::optional<Image> captureDisplay(const Rect& bounds);
  std::vector<RecognizedLine> recognizeText(const Image& image);
  Stored requireCurrentNode(const std::string& previousNodeId);
  std::string renewedNodeId(const Stored& previous);
  Observation windowImage(const Rect& bounds);
  Json encodedImage(const Observation& observation);
  void completeObservation(Json& result, const std::optional<Stored>& previous, bool withImage);
  void requireSameWindow(const Element& window, const Rect& frame);

  // input/: the proofs before an event.
  void verifyIdentity(const Stored& stored);
  void verifyInsideApp(Point point) { verifyInsideApp(std::span(&point, 1)); }
  /// The same of several points at one moment.
  void verifyInsideApp(std::span<const Point> points);
  void verifyPointer(Point point, const Element& target);
  void requireInputTarget(const Stored& stored);
  /// Waits up to 1.5 s for the target to be in front; never brings it there.
  void requireFrontmost();
  /// Waits for nothing: for the keys of one text, between which the target may quit or lose its
  /// place.
  void requireStillFrontmost();
  /// Fails "target_busy" while a key would hang the target for good.
  void requireKeysHarmless();
  std::string coveredMessage(Point point, const Element& hit, const Element& target);
  const std::optional<std::string>& ownApp();
  bool isOwnApp(Pid pid);
  Stored requireFreshNode(const std::string& nodeId, const FailureText& expired);
  /// That the node is still what was observed, and that it lies under `point`.
  void verifyNodeAt(Point point, const Stored& stored);
  Json clickRecognizedText(const Stored& stored, const Element& app);
  Json clickElement(const Stored& stored, const Element& app, std::int64_t count);
  Press pressByAccessibility(const Element& element);
  void verifyAndActivate(const Stored& stored, const Element& app);
  Rect requireVisibleFrame(const Element& element);
  Json inputToRecognizedText(const std::string& kind, const Stored& stored, const Element& app,
                             const Json& args);
  Json inputToElement(const std::string& kind, const Stored& stored, const Element& app,
                      const Json& args);
  Json keyOrScroll(const std::string& kind, const Stored& stored, Point point, const Json& args);
  Json typeInto(const Stored& stored, const Json& args);
  void pressReturnIn(const Stored& stored, bool focusFirst);

  // input/: events. What acts goes out by `postToTarget`, right after the proof of what it acts on.
  void post(EventSource* source, const InputEvent& event);
  /// Fails with `elsewhere`, and posts nothing, when another process would get the event.
  void postToTarget(const CreatedEvent& event, const FailureText& elsewhere);
  void release(EventSource* source, const MouseEvent& up, const CreatedEvent& spare);
  void pressOnce(EventSource* source, const MouseEvent& down, const MouseEvent& up,
                 const Proof& proof);
  /// How many clicks were made: fewer than `count`, but one at least, when the first changed what
  /// the proof is about.
  int press(Point point, int count, const Proof& proof);
  void rightPress(Point point, const Proof& proof);
  void glide(Point point, EventSource* source, Duration settle);
  void typeUnicode(const std::string& typed);
  void pressNamedKey(const Json& args);
  void postKey(std::uint16_t code, Modifiers modifiers);
  void postPair(EventSource* source, const InputEvent& down, const InputEvent& up,
                std::pair<Duration, Duration> pace);
  void scroll(const Stored& stored, Point point, const Json& args);
  Rect requireGestureArea();
  void turnWheel(Point point, std::int32_t pixels, const Proof& proof);
  void drag(Point start, std::span<const Point> way, Duration slice);
  void spotlightPull(const Rect& area);
  void trackpadSwipe(const Rect& area, double dx);

  [[nodiscard]] std::string timestampNow();

  const Platform& platform_;
  HostFinder& hosts_;
  Grants& grants_;

  std::optional<RunningApplication> running_;
  std::optional<Element> app_;
  std::optional<Element> window_;
  std::optional<std::string> boundSite_;
  NodeTable nodes_;
  Instant snapshotAt_ = kDistantPast;
  std::optional<Observation> observationImage_;
  Instant actedAt_ = kDistantPast;
  Journal journal_;
  /// Declared after the journal it writes to, so that it falls silent first.
  std::unique_ptr<Observer> observer_;
  /// None until first asked for; then the bundle that holds the helper, or none in it.
  std::optional<std::optional<std::string>> ownApp_;
};

/// How old an observation may be for one of its nodes to be acted on or followed.
inline constexpr Duration kSnapshotLifetime = std::chrono::seconds(60);

/// What a call on the target's accessibility may take.
inline constexpr Duration kMessagingTimeout = std::chrono::milliseconds(300);

/// Stands in the journal for an action that the target acknowledged: toolkits that announce nothing
/// when a button is pressed still say that they did it.
inline constexpr std::string_view kActionAcknowledged = "AXActionAcknowledged";

}  // namespace tarqo
