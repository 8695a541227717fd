// What the GTK 3 test application reports to its driver, and how its widgets call back.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <string>
#include <string_view>

namespace tarqo::gtk3app {

/// Writes one line to standard output and, when the environment names a file in TARQO_APP_LOG, to
/// its end. Both hold the line when the call returns.
void logLine(const std::string& line);

/// `text` in double quotes, with quotes, backslashes and line ends escaped, so that it stays one
/// line.
std::string quoted(std::string_view text);

/// Runs `deed` at each `signal` of `object`, whatever else the signal passes. The deed lives as
/// long as the object.
void onSignal(gpointer object, const char* signal, std::function<void()> deed);

/// Runs `deed` at each event `signal` of `widget` and lets the widget handle the event as well.
void onEvent(GtkWidget* widget, const char* signal, std::function<void(const GdkEvent&)> deed);

}  // namespace tarqo::gtk3app
