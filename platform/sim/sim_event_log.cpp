#include "platform/sim/sim_event_log.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace tarqo::sim {

void EventLog::note(Topic topic, std::string line) {
  entries_.push_back({topic, clock_.elapsed(), std::move(line)});
}

std::vector<std::string> EventLog::lines() const {
  std::vector<std::string> result;
  result.reserve(entries_.size());
  for (const Entry& entry : entries_) {
    result.push_back(entry.line);
  }
  return result;
}

std::vector<std::string> EventLog::lines(Topic topic) const {
  std::vector<std::string> result;
  for (const Entry& entry : entries_) {
    if (entry.topic == topic) {
      result.push_back(entry.line);
    }
  }
  return result;
}

std::vector<std::string> EventLog::timedLines(Topic topic) const {
  std::vector<std::string> result;
  for (const Entry& entry : entries_) {
    if (entry.topic == topic) {
      const auto at = std::chrono::duration_cast<std::chrono::milliseconds>(entry.at);
      result.push_back(std::to_string(at.count()) + " " + entry.line);
    }
  }
  return result;
}

std::size_t EventLog::count(std::string_view start) const {
  return static_cast<std::size_t>(std::count_if(
      entries_.begin(), entries_.end(),
      [&](const Entry& entry) { return std::string_view(entry.line).starts_with(start); }));
}

std::string numberText(double number) {
  char buffer[64];
  const double rounded = std::round(number * 1000) / 1000;
  const int length = std::snprintf(buffer, sizeof buffer, "%.12g", rounded);
  return {buffer, static_cast<std::size_t>(length)};
}

}  // namespace tarqo::sim
