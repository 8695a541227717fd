#include "tests/platform/mac/standin/faults.h"

namespace standin {

Faults& Faults::instance() {
  static Faults* const faults = new Faults();
  return *faults;
}

void Faults::reset() {
  const std::lock_guard guard(lock_);
  byName_.clear();
  nth_.reset();
  counting_ = false;
  calls_ = 0;
  counted_.clear();
}

void Faults::set(const std::string& call, Fault fault) {
  const std::lock_guard guard(lock_);
  byName_[call] = fault;
}

void Faults::setNth(long number, Fault fault) {
  const std::lock_guard guard(lock_);
  calls_ = 0;
  nth_.emplace(number, fault);
}

bool Faults::asks() const {
  const std::lock_guard guard(lock_);
  return counting_ || nth_ || !byName_.empty();
}

void Faults::count() {
  const std::lock_guard guard(lock_);
  counting_ = true;
  calls_ = 0;
  counted_.clear();
}

long Faults::calls() const {
  const std::lock_guard guard(lock_);
  return calls_;
}

std::map<std::string, long> Faults::counted() const {
  const std::lock_guard guard(lock_);
  return counted_;
}

Fault Faults::next(const std::string& call) {
  Fault fault;
  {
    const std::lock_guard guard(lock_);
    ++calls_;
    if (counting_) {
      ++counted_[call];
    }
    const auto named = byName_.find(call);
    if (named != byName_.end()) {
      fault = named->second;
    } else if (nth_ && nth_->first == calls_) {
      fault = nth_->second;
    }
  }
  if (fault.kind == Fault::Kind::throws) {
    throw SystemException("the system's own error in " + call);
  }
  return fault;
}

}  // namespace standin
