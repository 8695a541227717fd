#include "tests/apps/gtk3_watch.h"

#include <gtk/gtk.h>

#include <string>

#include "tests/apps/gtk3_log.h"

namespace tarqo::gtk3app {
namespace {

const char* kindOf(const GdkEvent& event) {
  switch (static_cast<int>(event.type)) {
    case GDK_BUTTON_PRESS:
      return "press";
    case GDK_BUTTON_RELEASE:
      return "release";
    case GDK_KEY_PRESS:
      return "key";
    case GDK_SCROLL:
      return "scroll";
    default:
      return nullptr;
  }
}

std::string nameOf(GtkWidget* widget) {
  const gchar* name =
      widget != nullptr ? atk_object_get_name(gtk_widget_get_accessible(widget)) : nullptr;
  return name != nullptr ? name : "";
}

/// A place in a widget, and the innermost name of what shows there.
struct Place {
  GtkWidget* in = nullptr;
  int x = 0;
  int y = 0;
  std::string name;
};

void lookInside(GtkWidget* widget, gpointer data) {
  auto& place = *static_cast<Place*>(data);
  int x = 0;
  int y = 0;
  if (gtk_widget_get_mapped(widget) == FALSE ||
      gtk_widget_translate_coordinates(place.in, widget, place.x, place.y, &x, &y) == FALSE ||
      x < 0 || y < 0 || x >= gtk_widget_get_allocated_width(widget) ||
      y >= gtk_widget_get_allocated_height(widget)) {
    return;
  }
  if (const std::string name = nameOf(widget); !name.empty()) {
    place.name = name;
  }
  if (GTK_IS_CONTAINER(widget)) {
    gtk_container_forall(GTK_CONTAINER(widget), lookInside, data);
  }
}

/// What a user would say that an event went to: what the pointer is on, or what has the focus.
std::string receiverOf(GdkEvent* event) {
  GtkWidget* receiver = gtk_get_event_widget(event);
  if (receiver == nullptr) {
    return "nothing";
  }
  GtkWidget* window = gtk_widget_get_toplevel(receiver);
  if (event->type == GDK_KEY_PRESS) {
    return nameOf(GTK_IS_WINDOW(window) ? gtk_window_get_focus(GTK_WINDOW(window)) : nullptr);
  }
  double x = 0;
  double y = 0;
  gdk_event_get_root_coords(event, &x, &y);
  int left = 0;
  int top = 0;
  gdk_window_get_origin(gtk_widget_get_window(window), &left, &top);
  Place place{window, static_cast<int>(x) - left, static_cast<int>(y) - top, nameOf(window)};
  gtk_container_forall(GTK_CONTAINER(window), lookInside, &place);
  return place.name;
}

void logAndHandle(GdkEvent* event, gpointer /*data*/) {
  if (const char* kind = kindOf(*event); kind != nullptr) {
    logLine(std::string("event ") + kind + " " + receiverOf(event));
  }
  gtk_main_do_event(event);
}

}  // namespace

void watchEvents() { gdk_event_handler_set(logAndHandle, nullptr, nullptr); }

}  // namespace tarqo::gtk3app
