#include "base/failure.h"

namespace tarqo {

std::string_view wireName(FailureCode code) {
  switch (code) {
    case FailureCode::invalidRequest:
      return "invalid_request";
    case FailureCode::invalidArgument:
      return "invalid_argument";
    case FailureCode::nativeError:
      return "native_error";
    case FailureCode::sessionLocked:
      return "session_locked";
    case FailureCode::axNotTrusted:
      return "ax_not_trusted";
    case FailureCode::screenCaptureDenied:
      return "screen_capture_denied";
    case FailureCode::screenCaptureStale:
      return "screen_capture_stale";
    case FailureCode::appClosed:
      return "app_closed";
    case FailureCode::appNotFound:
      return "app_not_found";
    case FailureCode::appNotRunning:
      return "app_not_running";
    case FailureCode::launchFailed:
      return "launch_failed";
    case FailureCode::focusFailed:
      return "focus_failed";
    case FailureCode::noWindow:
      return "no_window";
    case FailureCode::windowNotVisible:
      return "window_not_visible";
    case FailureCode::windowCovered:
      return "window_covered";
    case FailureCode::windowCaptureFailed:
      return "window_capture_failed";
    case FailureCode::imageEncodingFailed:
      return "image_encoding_failed";
    case FailureCode::ocrFailed:
      return "ocr_failed";
    case FailureCode::staleSnapshot:
      return "stale_snapshot";
    case FailureCode::staleTarget:
      return "stale_target";
    case FailureCode::notVisible:
      return "not_visible";
    case FailureCode::notClickable:
      return "not_clickable";
    case FailureCode::targetCovered:
      return "target_covered";
    case FailureCode::targetBusy:
      return "target_busy";
    case FailureCode::hitTestFailed:
      return "hit_test_failed";
    case FailureCode::inputUnsupported:
      return "input_unsupported";
    case FailureCode::inputFailed:
      return "input_failed";
  }
  return "native_error";
}

std::string filled(std::string_view sentence, std::initializer_list<std::string_view> fillings) {
  constexpr std::string_view kPlace = "{}";
  std::string text;
  for (const std::string_view filling : fillings) {
    const std::size_t place = sentence.find(kPlace);
    text += sentence.substr(0, place);
    text += filling;
    sentence.remove_prefix(place + kPlace.size());
  }
  text += sentence;
  return text;
}

void Failure::addSentence(std::string_view sentence) {
  message_ += message_.ends_with('.') ? " " : ". ";
  message_ += sentence;
}

}  // namespace tarqo
