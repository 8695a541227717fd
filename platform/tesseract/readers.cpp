#include "platform/tesseract/readers.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace tarqo::ocr {
namespace {

constexpr std::size_t kMostCores = 4;

/// A further recogniser takes as long to load as it needs for a few lines.
constexpr std::size_t kEach = 4;

/// What several threads take their work from, and where they leave what went wrong.
class Queue {
 public:
  Queue(std::size_t count, const Readers::Work& work) : count_(count), work_(work) {}

  void workWith(Tesseract& reader) noexcept {
    try {
      for (std::size_t index = next_++; index < count_; index = next_++) {
        work_(reader, index);
      }
    } catch (...) {
      next_ = count_;
      const std::lock_guard lock(mutex_);
      error_ = std::current_exception();
    }
  }

  void rethrow() const {
    if (error_) {
      std::rethrow_exception(error_);
    }
  }

 private:
  const std::size_t count_;
  const Readers::Work& work_;
  std::atomic<std::size_t> next_ = 0;
  std::mutex mutex_;
  std::exception_ptr error_;
};

}  // namespace

Readers::Readers(std::string dataFolder, std::size_t most)
    : dataFolder_(std::move(dataFolder)),
      most_(most > 0
                ? most
                : std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMostCores)) {
  readers_.push_back(std::make_unique<Tesseract>(dataFolder_));
}

std::optional<std::string> Readers::prepare() { return readers_.front()->prepare(); }

/// How many recognisers are ready for so much work; one that cannot be loaded is done without.
std::size_t Readers::preparedFor(std::size_t count) {
  while (readers_.size() < std::min(count / kEach, most_)) {
    auto another = std::make_unique<Tesseract>(dataFolder_);
    if (another->prepare()) {
      break;
    }
    readers_.push_back(std::move(another));
  }
  return std::min(count, readers_.size());
}

void Readers::forEach(std::size_t count, const Work& work) {
  const std::size_t used = preparedFor(count);
  Queue queue(count, work);
  {
    std::vector<std::jthread> threads;
    threads.reserve(used);
    for (std::size_t i = 1; i < used; ++i) {
      try {
        threads.emplace_back([&queue, &reader = *readers_[i]] { queue.workWith(reader); });
      } catch (const std::system_error&) {
        break;  // The system has no thread left: those there are do all of it.
      }
    }
    queue.workWith(*readers_.front());
  }
  queue.rethrow();
}

}  // namespace tarqo::ocr
