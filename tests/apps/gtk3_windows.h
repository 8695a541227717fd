// The menu bar of the GTK 3 test application, and the page whose buttons change its windows.
#pragma once

#include <gtk/gtk.h>

#include <string>

namespace tarqo::gtk3app {

/// A menu item "LABEL" that logs "menu PATH".
GtkWidget* makeMenuItem(const char* label, const char* path);

/// File (with three levels below it, and "Ask"), View with a check item, Help with the dialog
/// "About".
GtkWidget* makeMenuBar(GtkWindow* window);

/// Buttons that open dialogs and windows, and move, resize, rename, minimise and close `window`.
/// The handlers of "Ask" and of the field below it wait in a loop of their own for the dialog
/// "Ask", which has a field, and a button that asks once more.
GtkWidget* makeWindowsPage(GtkWindow* window);

/// Opens a window with the buttons "Greet" and "Close", which logs when it has opened and closed.
GtkWidget* openWindow(const std::string& title);

/// Logs "key NAME", with its modifiers before it ("key Control+Shift+A"), for every key press in
/// `window`.
void logKeys(GtkWidget* window);

}  // namespace tarqo::gtk3app
