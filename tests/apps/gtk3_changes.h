// The changes behind the commands of the GTK 3 test application (gtk3_commands.h lists them).
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <string>
#include <vector>

namespace tarqo::gtk3app {

using Words = std::vector<std::string>;
using Condition = std::function<bool()>;
/// Starts the change that the words name. Gives the check that it has come about; null when the
/// words are wrong, or the change cannot be made now.
using StartChange = std::function<Condition(const Words&)>;

/// What changes work on, and what undoes them.
struct Stage {
  GtkWindow* window = nullptr;
  GtkWidget* cover = nullptr;
  GtkWidget* detached = nullptr;
  GtkWidget* row = nullptr;  ///< Where `detached` was.
  int place = 0;
};

/// Starts a change of gtk3_commands.h, as a StartChange does.
Condition startChange(Stage& stage, const Words& words);

}  // namespace tarqo::gtk3app
