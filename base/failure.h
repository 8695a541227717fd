// The one error of the helper: a code that a program acts on, and a sentence that says what to do.
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "base/json.h"

namespace tarqo {

/// A failure whose sentence needs nothing filled in. Each stands once, in the table below.
struct FailureText {
  std::string_view code;
  std::string_view message;
};

/// Thrown by operations, turned into the response's "error" by the server. `detail` is an object of
/// further members of that "error"; its members "code" and "message" are never shown.
class Failure : public std::exception {
 public:
  Failure(std::string_view code, std::string message, Json detail = Json::object())
      : code_(code), message_(std::move(message)), detail_(std::move(detail)) {}
  explicit Failure(const FailureText& text) : Failure(text.code, std::string(text.message)) {}

  [[nodiscard]] const std::string& code() const { return code_; }
  [[nodiscard]] const std::string& message() const { return message_; }
  [[nodiscard]] const Json& detail() const { return detail_; }
  void addDetail(const std::string& key, Json value) { detail_[key] = std::move(value); }
  [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::string code_;
  std::string message_;
  Json detail_;
};

[[noreturn]] inline void fail(std::string_view code, std::string message) {
  throw Failure(code, std::move(message));
}

[[noreturn]] inline void fail(const FailureText& text) { throw Failure(text); }

namespace failures {

inline constexpr FailureText kNotARequest{"invalid_request", "Expected one JSON request per line"};
inline constexpr FailureText kUnknownMethod{"invalid_request", "Unknown native method"};

inline constexpr FailureText kSessionLocked{
    "session_locked",
    "Unlock the macOS desktop before observing or controlling the target application."};
inline constexpr FailureText kAppClosedReconnect{
    "app_closed", "The application closed; reconnect before continuing."};
inline constexpr FailureText kAppClosed{"app_closed", "The application closed"};

inline constexpr FailureText kBundleIdRequired{"invalid_argument", "bundleId is required"};
inline constexpr FailureText kFocusFailed{"focus_failed",
                                          "Could not bring the target application to the front"};

inline constexpr FailureText kNoWindowToSnapshot{
    "no_window", "The application has no accessible window. Open a window and retry."};
inline constexpr FailureText kNoWindow{"no_window", "The application has no accessible window."};
inline constexpr FailureText kWindowDisappeared{"no_window",
                                                "The target window disappeared during capture."};

inline constexpr FailureText kWindowNotVisible{
    "window_not_visible",
    "The target window is not shown at its place (Stage Manager side strip, minimized or hidden), "
    "so its pixels cannot be read. Bring it to the front, then look again."};
inline constexpr FailureText kWindowCovered{
    "window_covered",
    "Another application's window is in front of the target window's area, so reading its pixels "
    "would read that window. Bring the target window to the front, then look again."};
inline constexpr FailureText kWindowCaptureFailed{
    "window_capture_failed",
    "macOS could not capture the target window's screen area. Check Screen Recording permission "
    "and desktop lock state."};

inline constexpr FailureText kExpiredObserve{
    "stale_snapshot", "This node reference expired. Observe and select a current node."};
inline constexpr FailureText kTextMoved{
    "stale_target", "That text is no longer at the same place. Observe and select it again."};
inline constexpr FailureText kElementChanged{
    "stale_target",
    "The original target element changed or disappeared. Observe and select it again."};
inline constexpr FailureText kNoImageEncoder{"image_encoding_failed",
                                             "Could not encode the captured target window."};
inline constexpr FailureText kPngFailed{"image_encoding_failed", "PNG encoding failed."};
inline constexpr FailureText kWindowChanged{
    "stale_snapshot", "The target window changed during capture. Observe again."};

inline constexpr FailureText kPointCovered{
    "target_covered", "Another application's window covers the click position"};
inline constexpr FailureText kPointOutsideWindow{
    "not_visible", "Target has no visible position inside its window; take a fresh snapshot"};
inline constexpr FailureText kHitTestFailed{
    "hit_test_failed", "Cannot verify the element currently at the click position"};
inline constexpr FailureText kNotFrontmost{
    "target_covered",
    "The application did not come to the front, so keys would go elsewhere. Bring it forward "
    "(open_target) and try again."};
inline constexpr FailureText kKeysHarmful{
    "target_busy",
    "The application is still inside an earlier press, and a key would hang it now. Observe again "
    "and finish with click what it shows."};
inline constexpr FailureText kIdentityChanged{
    "stale_snapshot", "The captured element changed. Take a new snapshot before acting."};
inline constexpr FailureText kNotClickable{"not_clickable",
                                           "The element is disabled, protected, or not clickable"};

inline constexpr FailureText kNodeIdRequired{"invalid_argument",
                                             "A node ID from a current snapshot is required"};
inline constexpr FailureText kExpiredClick{
    "stale_snapshot", "This node reference expired. Take a new snapshot before clicking."};
inline constexpr FailureText kNoFrame{"not_visible", "The element no longer has a visible frame"};
inline constexpr FailureText kExpiredHover{
    "stale_snapshot", "This node reference expired. Take a new snapshot before hovering."};
inline constexpr FailureText kExpiredShowMenu{
    "stale_snapshot", "This node reference expired. Take a new snapshot before opening its menu."};
inline constexpr FailureText kMenuRefused{"not_clickable",
                                          "The application refused this menu command"};

inline constexpr FailureText kExpiredInput{"stale_snapshot", "Use a current node reference."};
inline constexpr FailureText kInputTargetChanged{"stale_target",
                                                 "The input target changed or is protected."};
inline constexpr FailureText kInputNotVisible{"not_visible", "Input target is not visible."};
inline constexpr FailureText kInputUnsupported{
    "input_unsupported", "The target does not support accessibility text input."};
inline constexpr FailureText kInputRefused{"input_failed",
                                           "The target did not accept accessibility text input."};
inline constexpr FailureText kUnboundedText{"invalid_argument",
                                            "Provide bounded text without control characters."};
inline constexpr FailureText kUnknownKey{"invalid_argument", "Unknown key."};
inline constexpr FailureText kUnknownModifier{"invalid_argument", "Unknown modifier."};
inline constexpr FailureText kNoKeyEvent{"input_failed", "Could not create a key event."};
inline constexpr FailureText kUnboundedScroll{"invalid_argument", "Provide bounded scroll input."};
// An unknown kind of input has no sentence of its own: clients know it by this one.
inline constexpr FailureText kUnknownInput{"invalid_argument",
                                           "Provide bounded vertical scroll input."};
inline constexpr FailureText kNoScrollEvent{"input_failed", "Could not create a scroll event."};
inline constexpr FailureText kSwipeTooSmall{"input_failed", "Swipe target is too small."};

}  // namespace failures
}  // namespace tarqo
