#include "tests/apps/gtk3_commands.h"

#include <glib-unix.h>
#include <unistd.h>

#include <array>
#include <deque>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "tests/apps/gtk3_changes.h"
#include "tests/apps/gtk3_log.h"

namespace tarqo::gtk3app {
namespace {

constexpr int kPollMs = 2;
constexpr int kPatienceMs = 3000;

struct Commands {
  Stage stage;
  StartChange own;
  std::string unread;
  std::deque<std::string> waiting;  ///< Lines that came while one was under way.
  bool busy = false;
};

void layOutAndSend() {
  GList* toplevels = gtk_window_list_toplevels();
  for (GList* each = toplevels; each != nullptr; each = each->next) {
    gtk_container_check_resize(GTK_CONTAINER(each->data));
  }
  g_list_free(toplevels);
  gdk_display_sync(gdk_display_get_default());
}

void runNext(Commands& commands);

struct UnderWay {
  Commands* commands;
  std::string name;
  Condition isDone;
  int leftMs;
};

void finish(const UnderWay& command, const char* how) {
  using Answer = std::pair<Commands*, std::string>;
  layOutAndSend();
  // Below the priority of all that may have arrived before.
  g_idle_add_full(
      G_PRIORITY_LOW + 1,
      [](gpointer data) -> gboolean {
        const std::unique_ptr<Answer> answer(static_cast<Answer*>(data));
        logLine(answer->second);
        answer->first->busy = false;
        runNext(*answer->first);
        return G_SOURCE_REMOVE;
      },
      std::make_unique<Answer>(command.commands, how + (" " + command.name)).release(), nullptr);
}

gboolean poll(gpointer data) {
  std::unique_ptr<UnderWay> command(static_cast<UnderWay*>(data));
  command->leftMs -= kPollMs;
  const bool isDone = command->isDone();
  if (!isDone && command->leftMs > 0) {
    (void)command.release();
    return G_SOURCE_CONTINUE;
  }
  finish(*command, isDone ? "done" : "failed");
  return G_SOURCE_REMOVE;
}

void runNext(Commands& commands) {
  if (commands.busy || commands.waiting.empty()) {
    return;
  }
  std::istringstream line(commands.waiting.front());
  commands.waiting.pop_front();
  const Words words{std::istream_iterator<std::string>(line), {}};
  commands.busy = true;
  Condition isDone = commands.own ? commands.own(words) : nullptr;
  if (!isDone) {
    isDone = startChange(commands.stage, words);
  }
  UnderWay command{&commands, words.empty() ? "" : words[0], std::move(isDone), kPatienceMs};
  if (!command.isDone) {
    finish(command, "failed");
    return;
  }
  layOutAndSend();
  g_timeout_add(kPollMs, poll, std::make_unique<UnderWay>(std::move(command)).release());
}

gboolean readLines(gint descriptor, GIOCondition /*condition*/, gpointer data) {
  Commands& commands = *static_cast<Commands*>(data);
  std::array<char, 512> bytes{};
  const ssize_t count = read(descriptor, bytes.data(), bytes.size());
  if (count <= 0) {
    return G_SOURCE_REMOVE;
  }
  commands.unread.append(bytes.data(), static_cast<std::size_t>(count));
  for (std::size_t end = commands.unread.find('\n'); end != std::string::npos;
       end = commands.unread.find('\n')) {
    commands.waiting.push_back(commands.unread.substr(0, end));
    commands.unread.erase(0, end + 1);
  }
  runNext(commands);
  return G_SOURCE_CONTINUE;
}

}  // namespace

void readCommands(GtkWindow* window, StartChange own) {
  const auto commands = std::make_shared<Commands>();
  commands->stage.window = window;
  commands->own = std::move(own);
  onSignal(window, "destroy", [commands] { commands->waiting.clear(); });  // Owns them.
  g_unix_fd_add(STDIN_FILENO, G_IO_IN, readLines, commands.get());
}

}  // namespace tarqo::gtk3app
