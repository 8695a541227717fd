// Recognisers of text for several cores. What is read is in pieces that do not depend on each
// other, and Tesseract by itself is quickest on one thread: so each core reads with a recogniser of
// its own.
//
// One thread at a time.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/tesseract/tesseract.h"

namespace tarqo::ocr {

class Readers {
 public:
  /// At most `most` recognisers; as many as there are cores, up to four, when it is 0. Each takes
  /// some 25 MB, from when it is first needed. `dataFolder` as in `Tesseract`.
  explicit Readers(std::string dataFolder, std::size_t most = 0);

  /// Loads the first recogniser, as `Tesseract::prepare`.
  [[nodiscard]] std::optional<std::string> prepare();

  using Work = std::function<void(Tesseract& reader, std::size_t index)>;

  /// Calls `work` once for each index below `count`, in about this order, on the calling thread and
  /// on others that have ended when this returns. No recogniser is loaded for a few indices.
  /// What `work` throws is thrown here, after the others have ended. Requires `prepare`.
  void forEach(std::size_t count, const Work& work);

 private:
  [[nodiscard]] std::size_t preparedFor(std::size_t count);

  std::string dataFolder_;
  std::size_t most_;
  std::vector<std::unique_ptr<Tesseract>> readers_;  ///< Never empty.
};

}  // namespace tarqo::ocr
