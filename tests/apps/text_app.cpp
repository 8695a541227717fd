// An application that shows text as nothing but pixels: one drawing area that reports no
// accessibility tree what stands in it, as games, remote screens and canvases do.
//
//   text_app [--title TEXT] [--geometry WIDTHxHEIGHT+X+Y] [--lines COUNT]
//
// When it is drawn it prints the lines of the page, or the first COUNT of them, each with the
// rectangle of its ink in pixels from the top left of the window's content, as
// `text X Y WIDTH HEIGHT "..."`, and then "ready". A click on line N, counted from 0, prints
// "clicked N".
//
// Lines of its standard input change it while it runs, as gtk3_commands.h says, and these:
//
//   write N TEXT       another text in line N; "_" stands for a blank
//   exchange N M       the texts of two lines
//   blank N            no text in line N

#include <gtk/gtk.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "tests/apps/gtk3_changes.h"
#include "tests/apps/gtk3_commands.h"
#include "tests/apps/gtk3_log.h"
#include "tests/apps/text_page.h"

namespace tarqo::textpage {
namespace {

using gtk3app::Condition;
using gtk3app::logLine;
using gtk3app::quoted;
using gtk3app::Words;

struct Options {
  std::string title = "Tarqo Text";
  std::string geometry;
  int lines = 0;  ///< 0 means all.
};

void assignText(std::string& to, gchar* text) {
  if (text != nullptr) {
    to = text;
    g_free(text);
  }
}

/// Reads the command line, and initialises GTK. Ends the process when an option is wrong.
Options readOptions(int argc, char** argv) {
  Options options;
  gchar* title = nullptr;
  gchar* geometry = nullptr;
  const GOptionEntry entries[] = {
      {"title", 0, 0, G_OPTION_ARG_STRING, &title, "Title of the window", "TEXT"},
      {"geometry", 0, 0, G_OPTION_ARG_STRING, &geometry, "Size and place", "WxH+X+Y"},
      {"lines", 0, 0, G_OPTION_ARG_INT, &options.lines, "Only the first so many lines", "COUNT"},
      {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
  GError* error = nullptr;
  if (gtk_init_with_args(&argc, &argv, nullptr, entries, nullptr, &error) == FALSE) {
    std::fprintf(stderr, "text_app: %s\n", error != nullptr ? error->message : "no display");
    std::exit(2);
  }
  assignText(options.title, title);
  assignText(options.geometry, geometry);
  return options;
}

/// The page in its window.
struct Page {
  GtkWidget* area = nullptr;
  std::vector<Line> texts;
  std::vector<DrawnLine> lines;  ///< Empty before it is drawn.
  int draws = 0;                 ///< How often it was drawn.
};

void place(GtkWindow* window, const std::string& geometry) {
  int width = kWidthPx;
  int height = kHeightPx;
  int x = 0;
  int y = 0;
  const int read = std::sscanf(geometry.c_str(), "%dx%d+%d+%d", &width, &height, &x, &y);
  gtk_window_set_default_size(window, width, height);
  if (read == 4) {
    gtk_window_move(window, x, y);
  }
}

void logLines(const Page& page) {
  for (const DrawnLine& line : page.lines) {
    logLine("text " + std::to_string(line.x) + " " + std::to_string(line.y) + " " +
            std::to_string(line.width) + " " + std::to_string(line.height) + " " +
            quoted(line.text));
  }
  logLine("ready");
}

gboolean onDraw(GtkWidget* /*area*/, cairo_t* cairo, gpointer data) {
  auto& page = *static_cast<Page*>(data);
  const bool isFirst = page.lines.empty();
  page.lines = draw(cairo, page.texts);
  ++page.draws;
  if (isFirst) {
    // Below the priority of drawing: reported when it can be seen.
    g_idle_add_full(
        G_PRIORITY_LOW,
        [](gpointer drawn) -> gboolean {
          logLines(*static_cast<Page*>(drawn));
          return G_SOURCE_REMOVE;
        },
        data, nullptr);
  }
  return TRUE;
}

gboolean onPress(GtkWidget* /*area*/, GdkEventButton* event, gpointer data) {
  const auto& lines = static_cast<Page*>(data)->lines;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const DrawnLine& line = lines[i];
    if (event->type == GDK_BUTTON_PRESS && event->x >= line.x && event->x < line.x + line.width &&
        event->y >= line.y && event->y < line.y + line.height) {
      logLine("clicked " + std::to_string(i));
    }
  }
  return TRUE;
}

/// The line that a word numbers; null when there is no such line.
Line* lineOf(Page& page, const std::string& word) {
  const auto number = std::strtoul(word.c_str(), nullptr, 10);
  return number < page.texts.size() ? &page.texts[number] : nullptr;
}

bool changeText(Page& page, const Words& words) {
  Line* line = words.size() > 1 ? lineOf(page, words[1]) : nullptr;
  if (line == nullptr) {
    return false;
  }
  if (words[0] == "blank" && words.size() == 2) {
    line->text.clear();
  } else if (words[0] == "write" && words.size() == 3) {
    line->text = words[2];
    std::ranges::replace(line->text, '_', ' ');
  } else if (Line* other = words.size() == 3 ? lineOf(page, words[2]) : nullptr;
             words[0] == "exchange" && other != nullptr) {
    std::swap(line->text, other->text);
  } else {
    return false;
  }
  return true;
}

Condition startTextChange(Page& page, const Words& words) {
  if (!changeText(page, words)) {
    return nullptr;
  }
  gtk_widget_queue_draw(page.area);
  return [&page, before = page.draws] { return page.draws > before; };
}

int run(int argc, char** argv) {
  const Options options = readOptions(argc, argv);
  Page page;
  page.texts = pageLines();
  if (options.lines > 0) {
    page.texts.resize(std::min(page.texts.size(), static_cast<std::size_t>(options.lines)));
  }
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(window), options.title.c_str());
  place(GTK_WINDOW(window), options.geometry);
  GtkWidget* area = gtk_drawing_area_new();
  gtk_widget_add_events(area, GDK_BUTTON_PRESS_MASK | GDK_BUTTON_RELEASE_MASK | GDK_SCROLL_MASK);
  g_signal_connect(area, "draw", G_CALLBACK(onDraw), &page);
  g_signal_connect(area, "button-press-event", G_CALLBACK(onPress), &page);
  gtk_container_add(GTK_CONTAINER(window), area);
  page.area = area;
  gtk3app::onSignal(window, "destroy", [] { gtk_main_quit(); });
  gtk3app::readCommands(GTK_WINDOW(window),
                        [&page](const Words& words) { return startTextChange(page, words); });
  gtk_widget_show_all(window);
  gtk_main();
  return 0;
}

}  // namespace
}  // namespace tarqo::textpage

int main(int argc, char** argv) { return tarqo::textpage::run(argc, argv); }
