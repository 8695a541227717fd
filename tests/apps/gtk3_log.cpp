#include "tests/apps/gtk3_log.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <utility>

namespace tarqo::gtk3app {
namespace {

using Deed = std::function<void()>;
using EventDeed = std::function<void(const GdkEvent&)>;

/// Ties a callable to the life of a signal connection; freed by `destroyOwned`.
template <typename T>
gpointer owned(T callable) {
  return std::make_unique<T>(std::move(callable)).release();
}

template <typename T>
void destroyOwned(gpointer data, GClosure* /*closure*/) {
  const std::unique_ptr<T> holder(static_cast<T*>(data));
}

// Connected "swapped": the data comes first, and what the signal passes after it is not looked at.
void runDeed(gpointer data) { (*static_cast<Deed*>(data))(); }

gboolean runEventDeed(GtkWidget* /*widget*/, GdkEvent* event, gpointer data) {
  (*static_cast<EventDeed*>(data))(*event);
  return GDK_EVENT_PROPAGATE;
}

}  // namespace

void logLine(const std::string& line) {
  std::cout << line << std::endl;
  if (const char* path = std::getenv("TARQO_APP_LOG"); path != nullptr) {
    std::ofstream(path, std::ios::app) << line + "\n";
  }
}

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '\n') {
      result += "\\n";
      continue;
    }
    if (c == '"' || c == '\\') {
      result += '\\';
    }
    result += c;
  }
  return result + "\"";
}

void onSignal(gpointer object, const char* signal, std::function<void()> deed) {
  g_signal_connect_data(object, signal, G_CALLBACK(runDeed), owned<Deed>(std::move(deed)),
                        destroyOwned<Deed>, G_CONNECT_SWAPPED);
}

void onEvent(GtkWidget* widget, const char* signal, std::function<void(const GdkEvent&)> deed) {
  g_signal_connect_data(widget, signal, G_CALLBACK(runEventDeed), owned<EventDeed>(std::move(deed)),
                        destroyOwned<EventDeed>, static_cast<GConnectFlags>(0));
}

}  // namespace tarqo::gtk3app
