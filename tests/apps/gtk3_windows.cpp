#include "tests/apps/gtk3_windows.h"

#include <string>

#include "tests/apps/gtk3_log.h"
#include "tests/apps/gtk3_pages.h"

namespace tarqo::gtk3app {
namespace {

void append(GtkWidget* menu, GtkWidget* item) { gtk_menu_shell_append(GTK_MENU_SHELL(menu), item); }

/// An item with a menu of its own. Returns that menu.
GtkWidget* appendSubmenu(GtkWidget* menu, const char* label) {
  GtkWidget* item = gtk_menu_item_new_with_label(label);
  GtkWidget* submenu = gtk_menu_new();
  gtk_menu_item_set_submenu(GTK_MENU_ITEM(item), submenu);
  append(menu, item);
  return submenu;
}

void openDialog(GtkWindow* parent, const char* title, const char* message) {
  GtkWidget* dialog = gtk_message_dialog_new(parent, GTK_DIALOG_MODAL, GTK_MESSAGE_QUESTION,
                                             GTK_BUTTONS_OK_CANCEL, "%s", message);
  gtk_window_set_title(GTK_WINDOW(dialog), title);
  onSignal(dialog, "show", [] { logLine("dialog opened"); });
  g_signal_connect(
      dialog, "response", G_CALLBACK(+[](GtkWidget* self, gint response, gpointer) {
        logLine(std::string("dialog answered ") + (response == GTK_RESPONSE_OK ? "OK" : "Cancel"));
        gtk_widget_destroy(self);
      }),
      nullptr);
  gtk_widget_show_all(dialog);
}

/// Opens a dialog with a field, and comes back when it is answered: until then the application runs
/// in here.
void ask(GtkWindow* parent) {
  GtkWidget* dialog =
      gtk_dialog_new_with_buttons("Ask", parent, GTK_DIALOG_MODAL, "Cancel", GTK_RESPONSE_CANCEL,
                                  "OK", GTK_RESPONSE_OK, nullptr);
  GtkWidget* answer = gtk_entry_new();
  atk_object_set_name(gtk_widget_get_accessible(answer), "Answer");
  onSignal(answer, "changed",
           [answer] { logLine("text Answer " + quoted(gtk_entry_get_text(GTK_ENTRY(answer)))); });
  GtkWidget* again = gtk_button_new_with_label("Ask again");
  onSignal(again, "clicked", [dialog] { ask(GTK_WINDOW(dialog)); });
  GtkWidget* content = gtk_dialog_get_content_area(GTK_DIALOG(dialog));
  gtk_container_add(GTK_CONTAINER(content), answer);
  gtk_container_add(GTK_CONTAINER(content), again);
  gtk_dialog_set_default_response(GTK_DIALOG(dialog), GTK_RESPONSE_OK);
  gtk_entry_set_activates_default(GTK_ENTRY(answer), TRUE);
  logKeys(dialog);
  onSignal(dialog, "map-event", [] { logLine("dialog opened"); });
  gtk_widget_show_all(dialog);
  const gint response = gtk_dialog_run(GTK_DIALOG(dialog));
  gtk_widget_destroy(dialog);
  logLine(std::string("dialog answered ") + (response == GTK_RESPONSE_OK ? "OK" : "Cancel"));
}

/// A button that logs its press and then does `deed`.
GtkWidget* doing(const char* label, std::function<void()> deed) {
  GtkWidget* button = makeButton(label);
  onSignal(button, "clicked", std::move(deed));
  return button;
}

}  // namespace

GtkWidget* makeMenuItem(const char* label, const char* path) {
  GtkWidget* item = gtk_menu_item_new_with_label(label);
  onSignal(item, "activate", [line = std::string("menu ") + path] { logLine(line); });
  return item;
}

GtkWidget* makeMenuBar(GtkWindow* window) {
  GtkWidget* bar = gtk_menu_bar_new();
  GtkWidget* file = appendSubmenu(bar, "File");
  append(file, makeMenuItem("New", "File/New"));
  append(file, makeMenuItem("Open…", "File/Open…"));
  GtkWidget* asking = makeMenuItem("Ask", "File/Ask");
  onSignal(asking, "activate", [window] { ask(window); });
  append(file, asking);
  GtkWidget* exporting = appendSubmenu(file, "Export");
  append(exporting, makeMenuItem("PDF", "File/Export/PDF"));
  GtkWidget* image = appendSubmenu(exporting, "Image");
  append(image, makeMenuItem("PNG", "File/Export/Image/PNG"));
  GtkWidget* jpeg = appendSubmenu(image, "JPEG");
  append(jpeg, makeMenuItem("High", "File/Export/Image/JPEG/High"));
  append(jpeg, makeMenuItem("Low", "File/Export/Image/JPEG/Low"));
  GtkWidget* print = makeMenuItem("Print", "File/Print");
  gtk_widget_set_sensitive(print, FALSE);
  append(file, print);
  append(file, gtk_separator_menu_item_new());
  GtkWidget* quit = makeMenuItem("Quit", "File/Quit");
  onSignal(quit, "activate", [] { gtk_main_quit(); });
  append(file, quit);

  GtkWidget* view = appendSubmenu(bar, "View");
  GtkWidget* toolbar = gtk_check_menu_item_new_with_label("Toolbar");
  onSignal(toolbar, "toggled", [toolbar] {
    const bool isOn = gtk_check_menu_item_get_active(GTK_CHECK_MENU_ITEM(toolbar)) != FALSE;
    logLine(std::string("menu View/Toolbar ") + (isOn ? "on" : "off"));
  });
  append(view, toolbar);

  GtkWidget* help = appendSubmenu(bar, "Help");
  GtkWidget* about = makeMenuItem("About", "Help/About");
  onSignal(about, "activate", [window] { openDialog(window, "About", "A test application"); });
  append(help, about);
  return bar;
}

GtkWidget* makeWindowsPage(GtkWindow* window) {
  GtkWidget* page = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
  gtk_container_set_border_width(GTK_CONTAINER(page), 6);
  GtkWidget* buttons[] = {
      doing("Open dialog", [window] { openDialog(window, "Question", "Shall we go on?"); }),
      doing("Open window", [] { openWindow("Second"); }),
      doing("Open twin", [window] { openWindow(gtk_window_get_title(window)); }),
      doing("Move window",
            [window] {
              gint x = 0;
              gint y = 0;
              gtk_window_get_position(window, &x, &y);
              gtk_window_move(window, x + 40, y + 30);
            }),
      doing("Resize window",
            [window] {
              gint width = 0;
              gint height = 0;
              gtk_window_get_size(window, &width, &height);
              gtk_window_resize(window, width + 50, height + 40);
            }),
      doing("Rename window", [window] { gtk_window_set_title(window, "Renamed"); }),
      doing("Minimize window", [window] { gtk_window_iconify(window); }),
      doing("Close window", [window] { gtk_window_close(window); }),
      doing("Ask", [window] { ask(window); })};
  for (GtkWidget* button : buttons) {
    gtk_widget_set_halign(button, GTK_ALIGN_START);
    gtk_container_add(GTK_CONTAINER(page), button);
  }
  GtkWidget* field = gtk_entry_new();
  atk_object_set_name(gtk_widget_get_accessible(field), "Asks when set");
  onSignal(field, "changed", [field, window] {
    if (gtk_entry_get_text_length(GTK_ENTRY(field)) > 0) {
      ask(window);
    }
  });
  gtk_container_add(GTK_CONTAINER(page), field);
  return page;
}

GtkWidget* openWindow(const std::string& title) {
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(window), title.c_str());
  gtk_window_set_default_size(GTK_WINDOW(window), 320, 200);
  GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
  gtk_container_add(GTK_CONTAINER(column), gtk_label_new(("This is " + title).c_str()));
  gtk_container_add(GTK_CONTAINER(column), makeButton("Greet"));
  GtkWidget* close = makeButton("Close");
  onSignal(close, "clicked", [window] { gtk_window_close(GTK_WINDOW(window)); });
  gtk_container_add(GTK_CONTAINER(column), close);
  gtk_container_add(GTK_CONTAINER(window), column);
  logKeys(window);
  onSignal(window, "destroy", [title] { logLine("window closed " + title); });
  onSignal(window, "map-event", [title] { logLine("window opened " + title); });
  gtk_widget_show_all(window);
  return window;
}

void logKeys(GtkWidget* window) {
  onEvent(window, "key-press-event", [](const GdkEvent& event) {
    std::string line = "key ";
    const auto addModifier = [&](GdkModifierType mask, const char* name) {
      if ((event.key.state & mask) != 0) {
        line += name;
      }
    };
    addModifier(GDK_CONTROL_MASK, "Control+");
    addModifier(GDK_MOD1_MASK, "Alt+");
    addModifier(GDK_SHIFT_MASK, "Shift+");
    addModifier(GDK_SUPER_MASK, "Super+");
    const gchar* name = gdk_keyval_name(event.key.keyval);
    logLine(line + (name != nullptr ? name : "unknown"));
  });
}

}  // namespace tarqo::gtk3app
