// Switches for what the system may do wrong: any call made to fail, the nth of its name or every
// one.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace standin {

/// What a call does instead of its work.
struct Fault {
  enum class Kind { none, fails, throws };
  Kind kind = Kind::none;
  std::optional<int> code;  ///< Of the error that it fails with.

  [[nodiscard]] bool fails() const { return kind == Kind::fails; }
  /// The error that it fails with, or that which the call usually fails with.
  template <typename Error>
  [[nodiscard]] Error error(Error usual) const {
    return code ? static_cast<Error>(*code) : usual;
  }
};

/// Thrown out of a call that is to throw.
struct SystemException : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Any thread.
class Faults {
 public:
  static Faults& instance();
  void reset();

  /// From now on every call of that name: a C function, or "[Class message:]".
  void set(const std::string& call, Fault fault);
  /// The call with that number from now on, of whatever name, from 1.
  void setNth(long number, Fault fault);

  /// Notes the call, and tells what it shall do; throws when that is to throw.
  Fault next(const std::string& call);
  /// Whether any switch is set or the calls are counted, so that `next` need be asked.
  [[nodiscard]] bool asks() const;
  /// Counts the calls from now on.
  void count();
  [[nodiscard]] long calls() const;
  /// How often each was called since `count`.
  [[nodiscard]] std::map<std::string, long> counted() const;

 private:
  mutable std::mutex lock_;
  std::map<std::string, Fault> byName_;
  std::optional<std::pair<long, Fault>> nth_;
  bool counting_ = false;
  long calls_ = 0;
  std::map<std::string, long> counted_;
};

}  // namespace standin
