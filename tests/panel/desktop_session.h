#pragma once

#include "panel/assistive_technology.h"
#include "panel/line_process.h"
#include "panel/virtual_display.h"
#include "session/listener.h"
#include "session/player.h"
#include "session/private_session.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace sonvel::testing {

/// A folder of desktop entries and icons; it goes with this object.
class InstalledApplications {
 public:
  InstalledApplications();
  ~InstalledApplications();
  InstalledApplications(const InstalledApplications&) = delete;
  InstalledApplications& operator=(const InstalledApplications&) = delete;

  [[nodiscard]] const std::filesystem::path& folder() const noexcept { return folder_; }

  /// An entry `id` for the program at `program`, with an icon of one colour (as "#3366cc").
  void install(const std::string& id, const std::string& name, const std::filesystem::path& program,
               const std::string& iconColor) const;

 private:
  std::filesystem::path folder_;
};

struct DesktopOptions {
  bool hasTray = true;
  bool hasScreenReader = true; ///< else nothing can be asked of the screen, and programs don't speak to one
  double scale = 1.0;          ///< device pixels for each point
  session::SessionOptions sound = {};
};

/// A whole desktop that nobody sits at: sound, a display, a tray, settings and a screen reader. The real
/// Sonvel is started in it and worked as people work it. One in a process.
class DesktopSession {
 public:
  explicit DesktopSession(DesktopOptions options = {});
  ~DesktopSession();
  DesktopSession(const DesktopSession&) = delete;
  DesktopSession& operator=(const DesktopSession&) = delete;

  [[nodiscard]] session::PrivateSession& sound() noexcept { return sound_; }

  [[nodiscard]] const InstalledApplications& applications() const noexcept { return applications_; }

  /// Of the display's server, as in DISPLAY.
  [[nodiscard]] const std::string& displayName() const noexcept { return display_.name(); }

  /// Starts Sonvel. Another one while the first runs is the second start of the program.
  [[nodiscard]] session::ChildProcess startSonvel() const;
  /// Starts any other program.
  [[nodiscard]] session::ChildProcess start(const std::string& program) const;

  /// Blocks until Sonvel's icon is in the tray; false when it doesn't come.
  [[nodiscard]] bool awaitTrayIcon();
  void clickTrayIcon();

  /// Of all programs that ask the desktop.
  void setDark(bool isDark);

  /// What is on the screen of Sonvel's, as a picture without the empty screen around it.
  void takePicture(const std::filesystem::path& file) const;

  /// The control of this name in the panel; none when it doesn't come.
  [[nodiscard]] std::optional<Control> control(const std::string& name) const;
  /// Whether a control of this name is, or is no longer, in the panel before long.
  [[nodiscard]] bool shows(const std::string& name) const;
  [[nodiscard]] bool hides(const std::string& name) const;

  /// False when there is no such control, or it doesn't do it.
  bool setValue(const std::string& name, double value) const;
  bool press(const std::string& name) const;
  /// The names of all that is on the screen of Sonvel's, a line for each.
  [[nodiscard]] std::string describe() const;

 private:
  session::Environment environment() const;

  DesktopOptions options_;
  InstalledApplications applications_;
  session::PrivateSession sound_;
  VirtualDisplay display_;
  session::ChildProcess accessibilityBus_;
  LineProcess desktop_; ///< the tray and the settings
  std::unique_ptr<AssistiveTechnology> screenReader_;
};

} // namespace sonvel::testing
