#include "tests/apps/gtk3_pages.h"

#include <algorithm>
#include <array>
#include <string>

#include "tests/apps/gtk3_log.h"
#include "tests/apps/gtk3_windows.h"

namespace tarqo::gtk3app {
namespace {

void append(GtkWidget* container, GtkWidget* child) {
  gtk_container_add(GTK_CONTAINER(container), child);
}

GtkWidget* makeBox(GtkOrientation orientation) {
  GtkWidget* box = gtk_box_new(orientation, 6);
  gtk_container_set_border_width(GTK_CONTAINER(box), 6);
  return box;
}

/// A row of a label and what it labels.
GtkWidget* labelled(const char* text, GtkWidget* widget) {
  GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  GtkWidget* label = gtk_label_new_with_mnemonic(text);
  gtk_label_set_mnemonic_widget(GTK_LABEL(label), widget);
  append(row, label);
  append(row, widget);
  return row;
}

void setText(GtkWidget* label, const std::string& text) {
  gtk_label_set_text(GTK_LABEL(label), text.c_str());
}

GtkWidget* makeScrolled(const char* name, GtkWidget* content) {
  GtkWidget* scrolled = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_scrolled_window_set_shadow_type(GTK_SCROLLED_WINDOW(scrolled), GTK_SHADOW_IN);
  gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(scrolled), FALSE);
  append(scrolled, content);
  GtkAdjustment* adjustment = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scrolled));
  onSignal(adjustment, "value-changed", [name = std::string(name), adjustment] {
    logLine("scrolled " + name + " " +
            std::to_string(static_cast<int>(gtk_adjustment_get_value(adjustment))));
  });
  return scrolled;
}

GtkWidget* makeToggle(GtkWidget* toggle, const std::string& name) {
  onSignal(toggle, "toggled", [toggle, name] {
    const bool isOn = gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(toggle)) != FALSE;
    logLine("toggled " + name + (isOn ? " on" : " off"));
  });
  return toggle;
}

GtkWidget* makeEntry(GtkWidget* entry, const std::string& name, const char* placeholder) {
  atk_object_set_name(gtk_widget_get_accessible(entry), name.c_str());
  gtk_entry_set_placeholder_text(GTK_ENTRY(entry), placeholder);
  onSignal(entry, "changed", [entry, name] {
    logLine("text " + name + " " + quoted(gtk_entry_get_text(GTK_ENTRY(entry))));
  });
  onSignal(entry, "activate", [name] { logLine("activated " + name); });
  return entry;
}

/// Buttons whose presses show in different ways: in a label, in nothing, late, by a removal.
GtkWidget* makeButtonRow(GtkWidget* status, const std::vector<unsigned>& blocksMs) {
  GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  GtkWidget* save = makeButton("Save");
  onSignal(save, "clicked", [status, count = 0]() mutable {
    setText(status, "Status: saved " + std::to_string(++count));
  });
  GtkWidget* slow = makeButton("Slow");
  onSignal(slow, "clicked", [blocksMs, press = std::size_t{0}]() mutable {
    const unsigned blockMs = blocksMs.at(std::min(press++, blocksMs.size() - 1));
    g_usleep(blockMs * 1000UL);
    logLine("blocked " + std::to_string(blockMs));
  });
  GtkWidget* victim = makeButton("Victim");
  GtkWidget* remove = makeButton("Remove");
  onSignal(remove, "clicked", [status, victim, isThere = true]() mutable {
    if (isThere) {
      isThere = false;
      gtk_widget_destroy(victim);
      setText(status, "Status: removed");
    }
  });
  GtkWidget* disabled = makeButton("Disabled");
  gtk_widget_set_sensitive(disabled, FALSE);
  GtkWidget* hover = makeButton("Hover me");
  onEvent(hover, "enter-notify-event", [](const GdkEvent&) { logLine("hovered Hover me"); });
  for (GtkWidget* button : {save, makeButton("Quiet"), disabled, slow, remove, victim, hover}) {
    append(row, button);
  }
  return row;
}

GtkWidget* makeChoices(GtkWidget* status) {
  GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  GtkWidget* agree = makeToggle(gtk_check_button_new_with_label("Agree"), "Agree");
  onSignal(agree, "toggled", [status, agree] {
    const bool isOn = gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(agree)) != FALSE;
    setText(status, isOn ? "Status: agreed" : "Status: not agreed");
  });
  GtkWidget* red = gtk_radio_button_new_with_label(nullptr, "Red");
  GtkWidget* blue = gtk_radio_button_new_with_label_from_widget(GTK_RADIO_BUTTON(red), "Blue");
  GtkWidget* size = gtk_combo_box_text_new();
  for (const char* name : {"Small", "Medium", "Large"}) {
    gtk_combo_box_text_append_text(GTK_COMBO_BOX_TEXT(size), name);
  }
  gtk_combo_box_set_active(GTK_COMBO_BOX(size), 0);
  onSignal(size, "changed", [size] {
    gchar* text = gtk_combo_box_text_get_active_text(GTK_COMBO_BOX_TEXT(size));
    logLine("selected Size " + std::string(text));
    g_free(text);
  });
  onSignal(size, "notify::popup-shown", [size] {
    gboolean isShown = FALSE;
    g_object_get(size, "popup-shown", &isShown, nullptr);
    logLine(isShown != FALSE ? "opened Size" : "closed Size");
  });
  append(row, agree);
  append(row, makeToggle(gtk_check_button_new_with_label("Plain"), "Plain"));
  append(row, makeToggle(red, "Red"));
  append(row, makeToggle(blue, "Blue"));
  append(row, makeToggle(gtk_toggle_button_new_with_label("Bold"), "Bold"));
  append(row, labelled("Si_ze", size));
  return row;
}

GtkWidget* makeEntries() {
  GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
  append(column, labelled("_Name", makeEntry(gtk_entry_new(), "Name", "Full name")));
  GtkWidget* password = gtk_entry_new();
  gtk_entry_set_visibility(GTK_ENTRY(password), FALSE);
  gtk_entry_set_input_purpose(GTK_ENTRY(password), GTK_INPUT_PURPOSE_PASSWORD);
  append(column, labelled("_Password", makeEntry(password, "Password", "")));
  append(column, makeEntry(gtk_search_entry_new(), "Search", "Search files"));
  GtkWidget* volume = gtk_scale_new_with_range(GTK_ORIENTATION_HORIZONTAL, 0, 100, 5);
  atk_object_set_name(gtk_widget_get_accessible(volume), "Volume");
  gtk_widget_set_size_request(volume, 200, -1);
  onSignal(volume, "value-changed", [volume] {
    logLine("changed Volume " +
            std::to_string(static_cast<int>(gtk_range_get_value(GTK_RANGE(volume)))));
  });
  append(column, labelled("_Volume", volume));
  return column;
}

GtkWidget* makeNotes() {
  GtkWidget* notes = gtk_text_view_new();
  atk_object_set_name(gtk_widget_get_accessible(notes), "Notes");
  GtkTextBuffer* buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(notes));
  onSignal(buffer, "changed", [buffer] {
    GtkTextIter start;
    GtkTextIter end;
    gtk_text_buffer_get_bounds(buffer, &start, &end);
    gchar* text = gtk_text_buffer_get_text(buffer, &start, &end, FALSE);
    logLine("text Notes " + quoted(text));
    g_free(text);
  });
  GtkWidget* scrolled = makeScrolled("Notes", notes);
  gtk_widget_set_size_request(scrolled, 240, 70);
  return scrolled;
}

std::string place(double x, double y) {
  return " " + std::to_string(static_cast<int>(x)) + " " + std::to_string(static_cast<int>(y));
}

void popUpMenu(GtkWidget* attachment, const GdkEvent& event) {
  GtkWidget* menu = gtk_menu_new();
  gtk_menu_attach_to_widget(GTK_MENU(menu), attachment, nullptr);
  for (const char* label : {"Copy", "Paste"}) {
    const std::string path = std::string("Context/") + label;
    gtk_menu_shell_append(GTK_MENU_SHELL(menu), makeMenuItem(label, path.c_str()));
  }
  gtk_widget_show_all(menu);
  logLine("context Canvas");
  gtk_menu_popup_at_pointer(GTK_MENU(menu), &event);
}

/// An area that reports raw pointer events, and opens a menu at the right button.
GtkWidget* makeCanvas() {
  GtkWidget* canvas = gtk_event_box_new();
  append(canvas, gtk_label_new("Canvas"));
  gtk_widget_set_size_request(canvas, 200, 70);
  gtk_widget_set_hexpand(canvas, TRUE);
  gtk_widget_add_events(canvas, GDK_BUTTON_PRESS_MASK | GDK_BUTTON_RELEASE_MASK |
                                    GDK_BUTTON_MOTION_MASK | GDK_SCROLL_MASK);
  onEvent(canvas, "button-press-event", [canvas](const GdkEvent& event) {
    if (event.type == GDK_2BUTTON_PRESS) {
      logLine("double-clicked Canvas");
    } else if (event.type == GDK_BUTTON_PRESS) {
      logLine("pressed Canvas " + std::to_string(event.button.button) +
              place(event.button.x, event.button.y));
      if (event.button.button == GDK_BUTTON_SECONDARY) {
        popUpMenu(canvas, event);
      }
    }
  });
  onEvent(canvas, "button-release-event", [](const GdkEvent& event) {
    logLine("released Canvas " + std::to_string(event.button.button) +
            place(event.button.x, event.button.y));
  });
  onEvent(canvas, "motion-notify-event", [](const GdkEvent& event) {
    logLine("dragged Canvas" + place(event.motion.x, event.motion.y));
  });
  onEvent(canvas, "scroll-event", [](const GdkEvent& event) {
    static constexpr std::array kDirections = {"up", "down", "left", "right", "smooth"};
    logLine(std::string("wheel Canvas ") + kDirections.at(event.scroll.direction));
  });
  return canvas;
}

GtkWidget* makeList() {
  GtkWidget* list = gtk_list_box_new();
  atk_object_set_name(gtk_widget_get_accessible(list), "Fruits");
  for (const char* name : {"Apple", "Banana", "Cherry"}) {
    append(list, gtk_label_new(name));
  }
  g_signal_connect(
      list, "row-activated", G_CALLBACK(+[](GtkListBox*, GtkListBoxRow* row, gpointer) {
        GtkWidget* label = gtk_bin_get_child(GTK_BIN(row));
        logLine(std::string("selected Fruits ") + gtk_label_get_text(GTK_LABEL(label)));
      }),
      nullptr);
  return list;
}

GtkWidget* makeTable() {
  GtkListStore* store = gtk_list_store_new(3, G_TYPE_STRING, G_TYPE_STRING, G_TYPE_STRING);
  constexpr int kRows = 40;
  for (int i = 1; i <= kRows; ++i) {
    const std::string file = "file" + std::to_string(i) + ".txt";
    const std::string size = std::to_string(i * 100) + " KB";
    gtk_list_store_insert_with_values(store, nullptr, -1, 0, file.c_str(), 1, "Text", 2,
                                      size.c_str(), -1);
  }
  GtkWidget* table = gtk_tree_view_new_with_model(GTK_TREE_MODEL(store));
  g_object_unref(store);
  atk_object_set_name(gtk_widget_get_accessible(table), "Files");
  int column = 0;
  for (const char* title : {"File", "Kind", "Size"}) {
    gtk_tree_view_insert_column_with_attributes(
        GTK_TREE_VIEW(table), -1, title, gtk_cell_renderer_text_new(), "text", column, nullptr);
    ++column;
  }
  GtkTreeSelection* selection = gtk_tree_view_get_selection(GTK_TREE_VIEW(table));
  onSignal(selection, "changed", [selection] {
    GtkTreeModel* model = nullptr;
    GtkTreeIter row;
    if (gtk_tree_selection_get_selected(selection, &model, &row) != FALSE) {
      gchar* file = nullptr;
      gtk_tree_model_get(model, &row, 0, &file, -1);
      logLine(std::string("selected Files ") + file);
      g_free(file);
    }
  });
  onSignal(table, "row-activated", [] { logLine("activated Files"); });
  GtkWidget* scrolled = makeScrolled("Files", table);
  gtk_widget_set_size_request(scrolled, 300, 160);
  return scrolled;
}

}  // namespace

GtkWidget* makeButton(const char* label) {
  GtkWidget* button = gtk_button_new_with_label(label);
  onSignal(button, "clicked", [line = std::string("clicked ") + label] { logLine(line); });
  return button;
}

GtkWidget* makeControlsPage(const std::vector<unsigned>& blocksMs) {
  GtkWidget* page = makeBox(GTK_ORIENTATION_VERTICAL);
  GtkWidget* status = gtk_label_new("Status: idle");
  gtk_widget_set_halign(status, GTK_ALIGN_START);
  append(page, status);
  append(page, makeButtonRow(status, blocksMs));
  append(page, makeChoices(status));
  append(page, makeEntries());
  GtkWidget* bottom = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  append(bottom, makeNotes());
  append(bottom, makeCanvas());
  append(page, bottom);
  return page;
}

GtkWidget* makeDataPage() {
  GtkWidget* page = makeBox(GTK_ORIENTATION_HORIZONTAL);
  append(page, makeList());
  append(page, makeTable());
  GtkWidget* lines = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  constexpr int kLines = 100;
  for (int i = 1; i <= kLines; ++i) {
    append(lines, gtk_label_new(("Line " + std::to_string(i)).c_str()));
  }
  GtkWidget* scrolled = makeScrolled("Lines", lines);
  gtk_widget_set_size_request(scrolled, 160, -1);
  append(page, scrolled);
  return page;
}

GtkWidget* makeNodesPage(int count) {
  GtkWidget* grid = gtk_grid_new();
  constexpr int kColumns = 10;
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i + 1);
    GtkWidget* node = i % 2 == 0 ? gtk_label_new(("Label " + number).c_str())
                                 : makeButton(("Button " + number).c_str());
    gtk_grid_attach(GTK_GRID(grid), node, i % kColumns, i / kColumns, 1, 1);
  }
  return makeScrolled("Nodes", grid);
}

}  // namespace tarqo::gtk3app
