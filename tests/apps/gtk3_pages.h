// The pages of the GTK 3 test application: its controls, its data, its many nodes.
#pragma once

#include <gtk/gtk.h>

#include <vector>

namespace tarqo::gtk3app {

/// A button that logs "clicked LABEL" and does nothing else.
GtkWidget* makeButton(const char* label);

/// Buttons, check boxes, entries, choices and a canvas. The button "Slow" blocks the application,
/// press by press as long as `blocksMs` says, at least one number whose last holds on, and then
/// logs "blocked MS".
GtkWidget* makeControlsPage(const std::vector<unsigned>& blocksMs);

/// A list, a table and a hundred scrolled lines.
GtkWidget* makeDataPage();

/// A scrolled grid of `count` widgets, labels and buttons in turns; each is one accessible.
GtkWidget* makeNodesPage(int count);

}  // namespace tarqo::gtk3app
