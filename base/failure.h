// The one error of the helper: a code that a program acts on, and a sentence that says what to do.
#pragma once

#include <exception>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "base/json.h"

namespace tarqo {

/// Every code that a response can carry.
enum class FailureCode {
  invalidRequest,
  invalidArgument,
  nativeError,
  sessionLocked,
  axNotTrusted,
  screenCaptureDenied,
  screenCaptureStale,
  appClosed,
  appNotFound,
  appNotRunning,
  launchFailed,
  focusFailed,
  noWindow,
  windowNotVisible,
  windowCovered,
  windowCaptureFailed,
  imageEncodingFailed,
  ocrFailed,
  staleSnapshot,
  staleTarget,
  notVisible,
  notClickable,
  targetCovered,
  targetBusy,
  hitTestFailed,
  inputUnsupported,
  inputFailed,
};

/// A code as responses spell it: "session_locked".
[[nodiscard]] std::string_view wireName(FailureCode code);

/// A failure as it stands in the table below. "{}" in its sentence stands for what is known only
/// when it happens.
struct FailureText {
  FailureCode code;
  std::string_view sentence;
};

/// The sentence with `fillings` in the place of each "{}", in their order; as many as it has.
[[nodiscard]] std::string filled(std::string_view sentence,
                                 std::initializer_list<std::string_view> fillings);

/// Thrown by operations, turned into the response's "error" by the server. `detail` is an object of
/// further members of that "error"; its members "code" and "message" are never shown.
class Failure : public std::exception {
 public:
  explicit Failure(const FailureText& text, std::initializer_list<std::string_view> fillings = {},
                   Json detail = Json::object())
      : code_(text.code), message_(filled(text.sentence, fillings)), detail_(std::move(detail)) {}

  [[nodiscard]] FailureCode code() const { return code_; }
  [[nodiscard]] const std::string& message() const { return message_; }
  [[nodiscard]] const Json& detail() const { return detail_; }
  void addDetail(const std::string& key, Json value) { detail_[key] = std::move(value); }
  /// A further sentence of the message.
  void addSentence(std::string_view sentence);
  [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

 private:
  FailureCode code_;
  std::string message_;
  Json detail_;
};

[[noreturn]] inline void fail(const FailureText& text,
                              std::initializer_list<std::string_view> fillings = {}) {
  throw Failure(text, fillings);
}

/// Every failure, by the occasion.
namespace failures {

inline constexpr FailureText kNotARequest{FailureCode::invalidRequest,
                                          "Expected one JSON request per line"};
inline constexpr FailureText kUnknownMethod{FailureCode::invalidRequest, "Unknown native method"};
inline constexpr FailureText kRequestTooLarge{FailureCode::nativeError,
                                              "The request line is too long to be held in memory."};
inline constexpr FailureText kOutOfMemory{FailureCode::nativeError,
                                          "The request needs more memory than the system has."};
inline constexpr FailureText kUnnamedError{FailureCode::nativeError,
                                           "Something failed that has no name."};
/// Any other error, in its own words.
inline constexpr FailureText kNativeError{FailureCode::nativeError, "{}"};

inline constexpr FailureText kSessionLocked{
    FailureCode::sessionLocked,
    "Unlock the macOS desktop before observing or controlling the target application."};
/// What the system says stands in the way of a grant.
inline constexpr FailureText kAccessibilityObstacle{FailureCode::axNotTrusted, "{}"};
inline constexpr FailureText kAccessibilityNotGranted{
    FailureCode::axNotTrusted,
    "Accessibility is not granted to {}. macOS attributes this helper's grant to the app that "
    "launched the MCP server, so enable {} under System Settings → Privacy & Security → "
    "Accessibility, then run again."};
inline constexpr FailureText kCaptureObstacle{FailureCode::screenCaptureDenied, "{}"};
inline constexpr FailureText kCaptureNotGranted{
    FailureCode::screenCaptureDenied,
    "Screen Recording is not granted to {}. macOS attributes this helper's grant to the app that "
    "launched the MCP server, so enable {} under System Settings → Privacy & Security → Screen & "
    "System Audio Recording, then run again."};
inline constexpr FailureText kCaptureStale{
    FailureCode::screenCaptureStale,
    "Screen Recording lists {} as allowed, but the grant does not apply to the running build. "
    "Switch {} off and on again in System Settings → Privacy & Security → Screen & System Audio "
    "Recording, then retry."};
inline constexpr FailureText kAppClosedReconnect{
    FailureCode::appClosed, "The application closed; reconnect before continuing."};
inline constexpr FailureText kAppClosed{FailureCode::appClosed, "The application closed"};

inline constexpr FailureText kBundleIdRequired{FailureCode::invalidArgument,
                                               "bundleId is required"};
inline constexpr FailureText kAppNotFound{FailureCode::appNotFound,
                                          "No installed application for {}"};
inline constexpr FailureText kAppNotRunning{FailureCode::appNotRunning,
                                            "Application is not running: {}"};
inline constexpr FailureText kLaunchFailed{FailureCode::launchFailed, "{}"};
inline constexpr FailureText kNoSiteWindow{FailureCode::noWindow, "No window of {} shows {}."};
inline constexpr FailureText kNoSiteWindowOpened{
    FailureCode::noWindow, "No window of {} shows {}, and one could not be opened."};
inline constexpr FailureText kSiteLeft{
    FailureCode::noWindow,
    "No window shows {} any more: the page left the site, or its window closed."};
inline constexpr FailureText kFocusFailed{FailureCode::focusFailed,
                                          "Could not bring the target application to the front"};

inline constexpr FailureText kNoWindowToSnapshot{
    FailureCode::noWindow, "The application has no accessible window. Open a window and retry."};
inline constexpr FailureText kNoWindow{FailureCode::noWindow,
                                       "The application has no accessible window."};
inline constexpr FailureText kWindowDisappeared{FailureCode::noWindow,
                                                "The target window disappeared during capture."};
inline constexpr FailureText kTextRecognitionFailed{FailureCode::ocrFailed, "{}"};

inline constexpr FailureText kWindowNotVisible{
    FailureCode::windowNotVisible,
    "The target window is not shown at its place (Stage Manager side strip, minimized or hidden), "
    "so its pixels cannot be read. Bring it to the front, then look again."};
inline constexpr FailureText kWindowCovered{
    FailureCode::windowCovered,
    "Another application's window is in front of the target window's area, so reading its pixels "
    "would read that window. Bring the target window to the front, then look again."};
inline constexpr FailureText kWindowCaptureFailed{
    FailureCode::windowCaptureFailed,
    "macOS could not capture the target window's screen area. Check Screen Recording permission "
    "and desktop lock state."};

inline constexpr FailureText kExpiredObserve{
    FailureCode::staleSnapshot, "This node reference expired. Observe and select a current node."};
inline constexpr FailureText kTextMoved{
    FailureCode::staleTarget,
    "That text is no longer at the same place. Observe and select it again."};
inline constexpr FailureText kElementChanged{
    FailureCode::staleTarget,
    "The original target element changed or disappeared. Observe and select it again."};
inline constexpr FailureText kNoImageEncoder{FailureCode::imageEncodingFailed,
                                             "Could not encode the captured target window."};
inline constexpr FailureText kPngFailed{FailureCode::imageEncodingFailed, "PNG encoding failed."};
inline constexpr FailureText kWindowChanged{
    FailureCode::staleSnapshot, "The target window changed during capture. Observe again."};

inline constexpr FailureText kPointCovered{
    FailureCode::targetCovered, "Another application's window covers the click position"};
inline constexpr FailureText kPointOutsideWindow{
    FailureCode::notVisible,
    "Target has no visible position inside its window; take a fresh snapshot"};
inline constexpr FailureText kHitTestFailed{
    FailureCode::hitTestFailed, "Cannot verify the element currently at the click position"};
inline constexpr FailureText kOtherElementHit{
    FailureCode::targetCovered,
    "The position ({},{}) holds {}, not the captured {}; take a fresh snapshot"};
inline constexpr FailureText kNotFrontmost{
    FailureCode::targetCovered,
    "The application did not come to the front, so keys would go elsewhere. Bring it forward "
    "(open_target) and try again."};
inline constexpr FailureText kKeysGoToOtherWindow{
    FailureCode::targetCovered,
    "Another window of the application gets the keys now: {}. Observe again and act on what it "
    "shows."};
inline constexpr FailureText kKeysHarmful{
    FailureCode::targetBusy,
    "The application is still inside an earlier press, and a key would hang it now. Observe again "
    "and finish with click what it shows."};
inline constexpr FailureText kTargetSlow{
    FailureCode::targetBusy,
    "The application answers too slowly for this to be proven. Wait with settle, then observe "
    "again."};
inline constexpr FailureText kIdentityChanged{
    FailureCode::staleSnapshot, "The captured element changed. Take a new snapshot before acting."};
inline constexpr FailureText kNotClickable{FailureCode::notClickable,
                                           "The element is disabled, protected, or not clickable"};

inline constexpr FailureText kNodeIdRequired{FailureCode::invalidArgument,
                                             "A node ID from a current snapshot is required"};
inline constexpr FailureText kExpiredClick{
    FailureCode::staleSnapshot,
    "This node reference expired. Take a new snapshot before clicking."};
inline constexpr FailureText kNoFrame{FailureCode::notVisible,
                                      "The element no longer has a visible frame"};
inline constexpr FailureText kExpiredHover{
    FailureCode::staleSnapshot,
    "This node reference expired. Take a new snapshot before hovering."};
inline constexpr FailureText kExpiredShowMenu{
    FailureCode::staleSnapshot,
    "This node reference expired. Take a new snapshot before opening its menu."};
inline constexpr FailureText kMenuRefused{FailureCode::notClickable,
                                          "The application refused this menu command"};

inline constexpr FailureText kExpiredInput{FailureCode::staleSnapshot,
                                           "Use a current node reference."};
inline constexpr FailureText kInputTargetChanged{FailureCode::staleTarget,
                                                 "The input target changed or is protected."};
inline constexpr FailureText kInputNotVisible{FailureCode::notVisible,
                                              "Input target is not visible."};
inline constexpr FailureText kInputUnsupported{
    FailureCode::inputUnsupported, "The target does not support accessibility text input."};
inline constexpr FailureText kInputRefused{FailureCode::inputFailed,
                                           "The target did not accept accessibility text input."};
inline constexpr FailureText kUnboundedText{FailureCode::invalidArgument,
                                            "Provide bounded text without control characters."};
inline constexpr FailureText kUnknownKey{FailureCode::invalidArgument, "Unknown key."};
inline constexpr FailureText kUnknownModifier{FailureCode::invalidArgument, "Unknown modifier."};
inline constexpr FailureText kNoKeyEvent{FailureCode::inputFailed, "Could not create a key event."};
inline constexpr FailureText kUnboundedScroll{FailureCode::invalidArgument,
                                              "Provide bounded scroll input."};
// An unknown kind of input has no sentence of its own: clients know it by this one.
inline constexpr FailureText kUnknownInput{FailureCode::invalidArgument,
                                           "Provide bounded vertical scroll input."};
inline constexpr FailureText kNoScrollEvent{FailureCode::inputFailed,
                                            "Could not create a scroll event."};
inline constexpr FailureText kSwipeTooSmall{FailureCode::inputFailed, "Swipe target is too small."};

}  // namespace failures
}  // namespace tarqo
