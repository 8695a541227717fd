// A GTK 3 application to be driven by tests: each activation of a control is one line on its
// output.
//
//   gtk3_app [--title TEXT] [--geometry WIDTHxHEIGHT+X+Y] [--tab NAME] [--nodes COUNT]
//            [--slow-start MS] [--block MS[,MS...]]
//
// On SIGUSR1 it starts anew in the same process, without options.
//
// Prints "ready" when its window is mapped and drawn. Lines of its standard input change it while
// it runs; gtk3_commands.h lists them.

#include <glib-unix.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "tests/apps/gtk3_commands.h"
#include "tests/apps/gtk3_log.h"
#include "tests/apps/gtk3_pages.h"
#include "tests/apps/gtk3_windows.h"

namespace tarqo::gtk3app {
namespace {

struct Options {
  std::string title = "Tarqo GTK 3";
  std::string tab;
  std::string geometry = "640x480";
  int nodes = 0;
  int slowStartMs = 0;
  std::vector<unsigned> blocksMs{1000};
};

void assignText(std::string& to, gchar* text) {
  if (text != nullptr) {
    to = text;
    g_free(text);
  }
}

/// Numbers with commas between them.
std::vector<unsigned> numbersIn(const std::string& text) {
  std::vector<unsigned> numbers;
  std::istringstream rest(text);
  for (std::string number; std::getline(rest, number, ',');) {
    numbers.push_back(static_cast<unsigned>(std::stoul(number)));
  }
  return numbers;
}

/// Reads the command line, and initialises GTK. Ends the process when an option is wrong.
Options readOptions(int argc, char** argv) {
  Options options;
  gchar* title = nullptr;
  gchar* tab = nullptr;
  gchar* geometry = nullptr;
  gchar* blocks = nullptr;
  const GOptionEntry entries[] = {
      {"title", 0, 0, G_OPTION_ARG_STRING, &title, "Title of the window", "TEXT"},
      {"tab", 0, 0, G_OPTION_ARG_STRING, &tab, "Page to show first", "NAME"},
      {"geometry", 0, 0, G_OPTION_ARG_STRING, &geometry, "Size and place", "WxH+X+Y"},
      {"nodes", 0, 0, G_OPTION_ARG_INT, &options.nodes, "Adds a page of so many nodes", "COUNT"},
      {"slow-start", 0, 0, G_OPTION_ARG_INT, &options.slowStartMs, "Wait before showing", "MS"},
      {"block", 0, 0, G_OPTION_ARG_STRING, &blocks, "How long \"Slow\" blocks, press by press",
       "MS,MS"},
      {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
  GError* error = nullptr;
  if (gtk_init_with_args(&argc, &argv, nullptr, entries, nullptr, &error) == FALSE) {
    std::fprintf(stderr, "gtk3_app: %s\n", error != nullptr ? error->message : "no display");
    std::exit(2);
  }
  assignText(options.title, title);
  assignText(options.tab, tab);
  assignText(options.geometry, geometry);
  std::string blocksText;
  assignText(blocksText, blocks);
  if (!blocksText.empty()) {
    options.blocksMs = numbersIn(blocksText);
  }
  return options;
}

void place(GtkWindow* window, const std::string& geometry) {
  int width = 0;
  int height = 0;
  int x = 0;
  int y = 0;
  const int read = std::sscanf(geometry.c_str(), "%dx%d+%d+%d", &width, &height, &x, &y);
  if (read >= 2) {
    gtk_window_set_default_size(window, width, height);
  }
  if (read == 4) {
    gtk_window_move(window, x, y);
  }
}

/// Sees the pointer before any widget does, and leaves it to them. A click is no drag.
void logDrags(GtkWidget* window) {
  GtkGesture* drag = gtk_gesture_drag_new(window);
  gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(drag), GTK_PHASE_CAPTURE);
  g_signal_connect(drag, "drag-end",
                   G_CALLBACK(+[](GtkGestureDrag*, double across, double down, gpointer) {
                     if (std::abs(across) + std::abs(down) > 4) {
                       logLine("dragged Window " + std::to_string(std::lround(across)) + " " +
                               std::to_string(std::lround(down)));
                     }
                   }),
                   nullptr);
}

GtkWidget* makeTabs(GtkWindow* window, const Options& options) {
  GtkWidget* tabs = gtk_notebook_new();
  int count = 0;
  int chosen = options.nodes > 0 ? 3 : 0;
  const auto add = [&](const char* name, GtkWidget* page) {
    gtk_notebook_append_page(GTK_NOTEBOOK(tabs), page, gtk_label_new(name));
    if (options.tab == name) {
      chosen = count;
    }
    ++count;
  };
  add("Controls", makeControlsPage(options.blocksMs));
  add("Data", makeDataPage());
  add("Windows", makeWindowsPage(window));
  if (options.nodes > 0) {
    add("Nodes", makeNodesPage(options.nodes));
  }
  // A page can be chosen only when it is shown.
  gtk_widget_show_all(tabs);
  gtk_notebook_set_current_page(GTK_NOTEBOOK(tabs), chosen);
  g_signal_connect(tabs, "switch-page",
                   G_CALLBACK(+[](GtkNotebook* self, GtkWidget* page, guint, gpointer) {
                     logLine(std::string("tab ") + gtk_notebook_get_tab_label_text(self, page));
                   }),
                   nullptr);
  return tabs;
}

/// Toolkits do not come back to an accessibility bus that was restarted; programs that are do.
gboolean startAnew(gpointer /*data*/) {
  gchar* program = g_file_read_link("/proc/self/exe", nullptr);
  execl(program, program, nullptr);
  std::exit(2);
}

int run(int argc, char** argv) {
  const Options options = readOptions(argc, argv);
  g_usleep(static_cast<gulong>(options.slowStartMs) * 1000);
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(window), options.title.c_str());
  place(GTK_WINDOW(window), options.geometry);
  GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_pack_start(GTK_BOX(column), makeMenuBar(GTK_WINDOW(window)), FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(column), makeTabs(GTK_WINDOW(window), options), TRUE, TRUE, 0);
  gtk_container_add(GTK_CONTAINER(window), column);
  logKeys(window);
  logDrags(window);
  onSignal(window, "destroy", [] { gtk_main_quit(); });
  // Below the priority of drawing, so what is mapped has been drawn as well.
  onSignal(window, "map-event", [isFirst = true]() mutable {
    if (isFirst) {
      isFirst = false;
      g_idle_add_full(
          G_PRIORITY_LOW,
          [](gpointer) -> gboolean {
            logLine("ready");
            return G_SOURCE_REMOVE;
          },
          nullptr, nullptr);
    }
  });
  g_unix_signal_add(SIGUSR1, startAnew, nullptr);
  readCommands(GTK_WINDOW(window));
  gtk_widget_show_all(window);
  gtk_main();
  return 0;
}

}  // namespace
}  // namespace tarqo::gtk3app

int main(int argc, char** argv) { return tarqo::gtk3app::run(argc, argv); }
