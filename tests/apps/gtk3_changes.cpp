#include "tests/apps/gtk3_changes.h"

#include <gdk/gdkx.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tests/apps/gtk3_pages.h"
#include "tests/apps/gtk3_watch.h"
#include "tests/apps/gtk3_windows.h"

namespace tarqo::gtk3app {
namespace {

struct Change {
  const char* name;
  std::size_t arguments;
  Condition (*start)(Stage&, const Words&);
};

bool always() { return true; }

Condition when(bool isPossible) { return isPossible ? Condition(always) : nullptr; }

void collect(GtkWidget* widget, gpointer all) {
  static_cast<std::vector<GtkWidget*>*>(all)->push_back(widget);
  if (GTK_IS_CONTAINER(widget)) {
    gtk_container_forall(GTK_CONTAINER(widget), collect, all);
  }
}

std::vector<GtkWidget*> allWidgets() {
  std::vector<GtkWidget*> all;
  GList* toplevels = gtk_window_list_toplevels();
  for (GList* each = toplevels; each != nullptr; each = each->next) {
    collect(GTK_WIDGET(each->data), &all);
  }
  g_list_free(toplevels);
  return all;
}

/// The widget of that name; a label only where nothing else has it, since controls hold one.
GtkWidget* find(std::string name) {
  std::ranges::replace(name, '_', ' ');
  GtkWidget* label = nullptr;
  for (GtkWidget* widget : allWidgets()) {
    const gchar* known = atk_object_get_name(gtk_widget_get_accessible(widget));
    if (known == nullptr || name != known || GTK_IS_WINDOW(widget)) {
      continue;
    }
    if (!GTK_IS_LABEL(widget)) {
      return widget;
    }
    label = widget;
  }
  return label;
}

/// The newest window of that title.
GtkWindow* windowTitled(const std::string& title) {
  GtkWindow* newest = nullptr;
  for (GtkWidget* widget : allWidgets()) {
    if (GTK_IS_WINDOW(widget) && title == (gtk_window_get_title(GTK_WINDOW(widget)) != nullptr
                                               ? gtk_window_get_title(GTK_WINDOW(widget))
                                               : "")) {
      newest = GTK_WINDOW(widget);
    }
  }
  return newest;
}

int number(const std::string& word) { return std::atoi(word.c_str()); }

bool isInState(GtkWindow* window, GdkWindowState state) {
  return (gdk_window_get_state(gtk_widget_get_window(GTK_WIDGET(window))) & state) != 0;
}

/// The values of a property that the window manager sets, which GDK gives as wide as a pointer.
/// Empty when it is not there.
std::vector<std::uintptr_t> propertyOf(GdkWindow* window, const char* name, const char* typeName) {
  GdkAtom type = GDK_NONE;
  gint bytes = 0;
  guchar* data = nullptr;
  if (gdk_property_get(window, gdk_atom_intern(name, FALSE), gdk_atom_intern(typeName, FALSE), 0,
                       G_MAXINT, FALSE, &type, nullptr, &bytes, &data) == FALSE) {
    return {};
  }
  const std::span values(reinterpret_cast<std::uintptr_t*>(data),
                         static_cast<std::size_t>(bytes) / sizeof(std::uintptr_t));
  std::vector<std::uintptr_t> copy(values.begin(), values.end());
  g_free(data);
  return copy;
}

/// What the window manager says; GDK does not follow it.
bool isKeptAbove(GtkWindow* window) {
  const auto states =
      propertyOf(gtk_widget_get_window(GTK_WIDGET(window)), "_NET_WM_STATE", "ATOM");
  return std::ranges::find(
             states, GPOINTER_TO_SIZE(gdk_atom_intern_static_string("_NET_WM_STATE_ABOVE"))) !=
         states.end();
}

/// It has the focus, and the window manager says so: it does only when it has heard of the focus.
bool isActive(GtkWindow* window) {
  const auto active = propertyOf(gdk_get_default_root_window(), "_NET_ACTIVE_WINDOW", "WINDOW");
  return gtk_window_is_active(window) != FALSE && active.size() == 1 &&
         active[0] == gdk_x11_window_get_xid(gtk_widget_get_window(GTK_WIDGET(window)));
}

int placeInRow(GtkWidget* widget) {
  gint place = 0;
  gtk_container_child_get(GTK_CONTAINER(gtk_widget_get_parent(widget)), widget, "position", &place,
                          nullptr);
  return place;
}

bool isInRow(GtkWidget* widget) {
  return widget != nullptr && GTK_IS_BOX(gtk_widget_get_parent(widget));
}

void putInRow(GtkWidget* row, GtkWidget* widget, int place) {
  gtk_container_add(GTK_CONTAINER(row), widget);
  gtk_box_reorder_child(GTK_BOX(row), widget, place);
  gtk_widget_show(widget);
}

// The window.

Condition move(Stage& stage, const Words& words) {
  const int x = number(words[1]);
  const int y = number(words[2]);
  gtk_window_move(stage.window, x, y);
  return [window = stage.window, x, y] {
    gint nowX = 0;
    gint nowY = 0;
    gtk_window_get_position(window, &nowX, &nowY);
    return nowX == x && nowY == y;
  };
}

Condition resize(Stage& stage, const Words& words) {
  const int width = number(words[1]);
  const int height = number(words[2]);
  gtk_window_resize(stage.window, width, height);
  return [widget = GTK_WIDGET(stage.window), width, height] {
    return gtk_widget_get_allocated_width(widget) == width &&
           gtk_widget_get_allocated_height(widget) == height;
  };
}

Condition raise(Stage& stage, const Words& /*words*/) {
  // The server's time, since window managers do not let go of the focus for an older one.
  gtk_window_present_with_time(
      stage.window, gdk_x11_get_server_time(gtk_widget_get_window(GTK_WIDGET(stage.window))));
  return [window = stage.window] { return isActive(window); };
}

Condition minimise(Stage& stage, const Words& /*words*/) {
  gtk_window_iconify(stage.window);
  return [window = stage.window] { return isInState(window, GDK_WINDOW_STATE_ICONIFIED); };
}

Condition above(Stage& stage, const Words& words) {
  const bool isOn = words[1] == "on";
  gtk_window_set_keep_above(stage.window, isOn ? TRUE : FALSE);
  return [window = stage.window, isOn] { return isKeptAbove(window) == isOn; };
}

// Other windows.

Condition open(Stage& /*stage*/, const Words& words) {
  GtkWidget* window = openWindow(words[1]);
  const int x = number(words[2]);
  const int y = number(words[3]);
  gtk_window_move(GTK_WINDOW(window), x, y);
  return [window, x, y] {
    gint nowX = 0;
    gint nowY = 0;
    gtk_window_get_position(GTK_WINDOW(window), &nowX, &nowY);
    return nowX == x && nowY == y && isActive(GTK_WINDOW(window));
  };
}

Condition close(Stage& /*stage*/, const Words& words) {
  GtkWindow* window = windowTitled(words[1]);
  if (window != nullptr) {
    gtk_widget_destroy(GTK_WIDGET(window));
  }
  return when(window != nullptr);
}

Condition cover(Stage& stage, const Words& words) {
  if (stage.cover != nullptr) {
    return nullptr;
  }
  stage.cover = gtk_window_new(GTK_WINDOW_POPUP);
  gtk_container_add(GTK_CONTAINER(stage.cover), makeButton("Covering"));
  gtk_window_move(GTK_WINDOW(stage.cover), number(words[1]), number(words[2]));
  gtk_widget_set_size_request(stage.cover, number(words[3]), number(words[4]));
  gtk_widget_show_all(stage.cover);
  return always;
}

Condition uncover(Stage& stage, const Words& /*words*/) {
  if (stage.cover == nullptr) {
    return nullptr;
  }
  gtk_widget_destroy(std::exchange(stage.cover, nullptr));
  return always;
}

Condition dismiss(Stage& /*stage*/, const Words& /*words*/) {
  for (GtkWidget* widget : allWidgets()) {
    if (GTK_IS_COMBO_BOX(widget)) {
      gtk_combo_box_popdown(GTK_COMBO_BOX(widget));
    } else if (GTK_IS_MENU(widget)) {
      gtk_menu_popdown(GTK_MENU(widget));
    }
  }
  return always;
}

// What is in the window.

Condition tab(Stage& /*stage*/, const Words& words) {
  for (GtkWidget* widget : allWidgets()) {
    if (!GTK_IS_NOTEBOOK(widget)) {
      continue;
    }
    auto* tabs = GTK_NOTEBOOK(widget);
    for (int i = 0; i < gtk_notebook_get_n_pages(tabs); ++i) {
      GtkWidget* page = gtk_notebook_get_nth_page(tabs, i);
      if (words[1] == gtk_notebook_get_tab_label_text(tabs, page)) {
        gtk_notebook_set_current_page(tabs, i);
        return always;
      }
    }
  }
  return nullptr;
}

Condition rename(Stage& /*stage*/, const Words& words) {
  GtkWidget* widget = find(words[1]);
  if (widget == nullptr) {
    return nullptr;
  }
  const char* name = words[2].c_str();
  if (GTK_IS_BUTTON(widget)) {
    gtk_button_set_label(GTK_BUTTON(widget), name);
  } else if (GTK_IS_MENU_ITEM(widget)) {
    gtk_menu_item_set_label(GTK_MENU_ITEM(widget), name);
  } else if (GTK_IS_LABEL(widget)) {
    gtk_label_set_text(GTK_LABEL(widget), name);
  } else {
    atk_object_set_name(gtk_widget_get_accessible(widget), name);
  }
  return always;
}

Condition enable(Stage& /*stage*/, const Words& words) {
  GtkWidget* widget = find(words[1]);
  if (widget != nullptr) {
    gtk_widget_set_sensitive(widget, words[0] == "enable" ? TRUE : FALSE);
  }
  return when(widget != nullptr);
}

Condition show(Stage& /*stage*/, const Words& words) {
  GtkWidget* widget = find(words[1]);
  if (widget != nullptr) {
    gtk_widget_set_visible(widget, words[0] == "show" ? TRUE : FALSE);
  }
  return when(widget != nullptr);
}

Condition swap(Stage& /*stage*/, const Words& words) {
  GtkWidget* one = find(words[1]);
  GtkWidget* other = find(words[2]);
  if (!isInRow(one) || !isInRow(other) ||
      gtk_widget_get_parent(one) != gtk_widget_get_parent(other)) {
    return nullptr;
  }
  const int placeOfOne = placeInRow(one);
  const int placeOfOther = placeInRow(other);
  auto* row = GTK_BOX(gtk_widget_get_parent(one));
  gtk_box_reorder_child(row, one, placeOfOther);
  gtk_box_reorder_child(row, other, placeOfOne);
  return always;
}

Condition detach(Stage& stage, const Words& words) {
  GtkWidget* widget = find(words[1]);
  if (!isInRow(widget) || stage.detached != nullptr) {
    return nullptr;
  }
  stage.row = gtk_widget_get_parent(widget);
  stage.place = placeInRow(widget);
  stage.detached = widget;
  g_object_ref(widget);
  gtk_container_remove(GTK_CONTAINER(stage.row), widget);
  return always;
}

Condition attach(Stage& stage, const Words& /*words*/) {
  if (stage.detached == nullptr) {
    return nullptr;
  }
  GtkWidget* widget = std::exchange(stage.detached, nullptr);
  putInRow(stage.row, widget, stage.place);
  g_object_unref(widget);
  return always;
}

Condition replace(Stage& /*stage*/, const Words& words) {
  GtkWidget* widget = find(words[1]);
  if (!isInRow(widget)) {
    return nullptr;
  }
  GtkWidget* row = gtk_widget_get_parent(widget);
  const int place = placeInRow(widget);
  gtk_widget_destroy(widget);
  putInRow(row, makeButton(words[1].c_str()), place);
  return always;
}

Condition scroll(Stage& /*stage*/, const Words& words) {
  GtkWidget* widget = find(words[1]);
  GtkWidget* area =
      widget != nullptr ? gtk_widget_get_ancestor(widget, GTK_TYPE_SCROLLED_WINDOW) : nullptr;
  if (area != nullptr) {
    gtk_adjustment_set_value(gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(area)),
                             number(words[2]));
  }
  return when(area != nullptr);
}

Condition watch(Stage& /*stage*/, const Words& /*words*/) {
  watchEvents();
  return always;
}

Condition sync(Stage& /*stage*/, const Words& /*words*/) { return always; }

constexpr std::array kChanges{
    Change{"move", 2, move},         Change{"resize", 2, resize},   Change{"raise", 0, raise},
    Change{"minimise", 0, minimise}, Change{"above", 1, above},     Change{"open", 3, open},
    Change{"close", 1, close},       Change{"cover", 4, cover},     Change{"uncover", 0, uncover},
    Change{"dismiss", 0, dismiss},   Change{"tab", 1, tab},         Change{"rename", 2, rename},
    Change{"enable", 1, enable},     Change{"disable", 1, enable},  Change{"show", 1, show},
    Change{"hide", 1, show},         Change{"swap", 2, swap},       Change{"detach", 1, detach},
    Change{"attach", 0, attach},     Change{"replace", 1, replace}, Change{"scroll", 2, scroll},
    Change{"watch", 0, watch},       Change{"sync", 0, sync},
};

}  // namespace

Condition startChange(Stage& stage, const Words& words) {
  for (const Change& change : kChanges) {
    if (!words.empty() && words[0] == change.name && words.size() == change.arguments + 1) {
      return change.start(stage, words);
    }
  }
  return nullptr;
}

}  // namespace tarqo::gtk3app
