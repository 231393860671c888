#include "panel/desktop_session.h"

#include "session/eventually.h"

#include <fstream>
#include <stdexcept>
#include <stdlib.h>

namespace sonvel::testing {

namespace fs = std::filesystem;

namespace {

constexpr auto kProgramName = "Sonvel";

session::Environment merged(session::Environment base, const session::Environment& more) {
  for (const auto& [name, value] : more)
    base[name] = value;
  return base;
}

session::SessionOptions withFolder(session::SessionOptions options, const fs::path& folder) {
  options.dataDirectories.push_back(folder);
  return options;
}

/// Makes this process one of the session, so that its screen reader finds the buses.
const session::PrivateSession& entered(const session::PrivateSession& sound) {
  sound.apply();
  return sound;
}

} // namespace

InstalledApplications::InstalledApplications() {
  std::string name = (fs::temp_directory_path() / "sonvel-applications-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  folder_ = name;
  fs::create_directories(folder_ / "applications");
  fs::create_directories(folder_ / "icons");
}

InstalledApplications::~InstalledApplications() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

void InstalledApplications::install(const std::string& id, const std::string& name, const fs::path& program,
                                    const std::string& iconColor) const {
  const fs::path icon = folder_ / "icons" / (id + ".svg");
  std::ofstream(icon) << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 48 48\">"
                      << R"(<rect x="3" y="3" width="42" height="42" rx="11" fill=")" << iconColor << "\"/>"
                      << R"(<path d="M19 14v20l16-10z" fill="#ffffff"/></svg>)";
  std::ofstream(folder_ / "applications" / (id + ".desktop"))
      << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=" << program.string()
      << " %U\nIcon=" << icon.string() << "\n";
}

DesktopSession::DesktopSession(DesktopOptions options)
    : options_(std::move(options))
    , sound_(withFolder(options_.sound, applications_.folder()))
    , accessibilityBus_(entered(sound_).command("/usr/libexec/at-spi-bus-launcher", {"--launch-immediately"}))
    , desktop_(SONVEL_TRAY_HOST, {}, merged(sound_.environment(), {{"QT_QPA_PLATFORM", "offscreen"}})) {
  if (!session::eventually([&] { return fs::exists(sound_.socketPath().parent_path() / "at-spi" / "bus"); }))
    throw std::runtime_error("no accessibility bus");
  if (!desktop_.awaitLine("ready")) throw std::runtime_error("no tray");
  if (!options_.hasTray) desktop_.send("no tray");
  if (options_.hasScreenReader) screenReader_ = std::make_unique<AssistiveTechnology>();
}

DesktopSession::~DesktopSession() = default;

session::Environment DesktopSession::environment() const {
  auto environment = merged(sound_.environment(), display_.environment());
  if (options_.hasScreenReader) environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1";
  if (options_.scale != 1.0) environment["QT_SCALE_FACTOR"] = std::to_string(options_.scale);
  return environment;
}

session::ChildProcess DesktopSession::startSonvel() const {
  return start(SONVEL_PROGRAM);
}

session::ChildProcess DesktopSession::start(const std::string& program) const {
  return session::ChildProcess({.program = program,
                                .arguments = {fs::path(program).filename().string()},
                                .environment = environment()});
}

bool DesktopSession::awaitTrayIcon() {
  while (const auto line = desktop_.nextLine())
    if (line->starts_with("item ") && line->ends_with(kProgramName)) return true;
  return false;
}

void DesktopSession::clickTrayIcon() {
  desktop_.send("activate");
}

void DesktopSession::setDark(bool isDark) {
  desktop_.send(isDark ? "scheme dark" : "scheme light");
}

void DesktopSession::takePicture(const fs::path& file) const {
  session::ChildProcess picture({.program = SONVEL_SCREEN_PICTURE,
                                 .arguments = {"screen-picture", file.string()},
                                 .environment = environment()});
  if (picture.wait() != 0) throw std::runtime_error("no picture");
}

std::optional<Control> DesktopSession::control(const std::string& name) const {
  return screenReader_->find(kProgramName, name);
}

bool DesktopSession::shows(const std::string& name) const {
  return control(name).has_value();
}

bool DesktopSession::hides(const std::string& name) const {
  return session::eventually([&] {
    for (const auto& control : screenReader_->controls(kProgramName))
      if (control.name() == name) return false;
    return true;
  });
}

bool DesktopSession::setValue(const std::string& name, double value) const {
  const auto found = control(name);
  return found && found->setValue(value);
}

bool DesktopSession::press(const std::string& name) const {
  const auto found = control(name);
  return found && found->press();
}

std::string DesktopSession::describe() const {
  std::string text;
  for (const auto& control : screenReader_->controls(kProgramName)) {
    text += control.role() + " \"" + control.name() + '"';
    if (const auto value = control.value()) text += " " + std::to_string(*value);
    text += '\n';
  }
  return text;
}

} // namespace sonvel::testing
