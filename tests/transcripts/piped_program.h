// A program that is talked to line by line over its standard streams.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarqo::transcripts {

class PipedProgram {
 public:
  /// Whether the program's ends of the pipes wait for the test's.
  enum class Pipes { waiting, notWaiting };

  /// Starts the program; throws `std::runtime_error` when that fails. Its standard error is the
  /// test's own.
  explicit PipedProgram(const std::vector<std::string>& commandLine, Pipes pipes = Pipes::waiting);
  PipedProgram(const PipedProgram&) = delete;
  PipedProgram& operator=(const PipedProgram&) = delete;
  /// Ends its input and waits for its end.
  ~PipedProgram();

  /// Writes a line and waits for one; null when the program has ended without one.
  [[nodiscard]] std::optional<std::string> ask(const std::string& line);

  /// Ends its input, waits for its end, and gives its exit status; -1 when a signal ended it.
  int finish();

  [[nodiscard]] pid_t pid() const { return pid_; }

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { (void)std::fclose(file); }
  };
  using File = std::unique_ptr<std::FILE, CloseFile>;

  File input_;
  File output_;
  pid_t pid_ = 0;
};

}  // namespace tarqo::transcripts
