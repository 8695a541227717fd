// What the tests of the recogniser share.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

#include "platform/linux/linux_clock.h"

namespace tarqo::ocr {

/// Tesseract takes real time.
inline Clock& realClock() {
  static lnx::LinuxClock clock;
  return clock;
}

/// A folder that is removed at the end.
class Folder {
 public:
  Folder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "text-test.XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace tarqo::ocr
