#include "session/session_files.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace sonvel::session {

namespace {

namespace fs = std::filesystem;

void writeFile(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream file(path);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("can't write " + path.string());
}

std::string sinkObject(const std::string& name, int priority) {
  std::string object = "  { factory = adapter args = {\n";
  for (const auto& [key, value] : sinkProperties(name, name, priority))
    object += "      " + key + " = \"" + value + "\"\n";
  return object + "  } }\n";
}

std::string pipewireConfiguration(int quantum) {
  const std::string frames = std::to_string(quantum);
  return "context.properties = {\n"
         "  default.clock.rate = 48000\n"
         "  default.clock.allowed-rates = [ 48000 ]\n"
         "  default.clock.quantum = " +
         frames +
         "\n"
         "  default.clock.min-quantum = " +
         frames +
         "\n"
         "  default.clock.max-quantum = " +
         frames +
         "\n"
         // inside virtual machines these win over the above
         "  vm.overrides = { default.clock.min-quantum = " +
         frames +
         " }\n"
         "}\n"
         "context.objects = [\n" +
         sinkObject("Speakers", 1500) + sinkObject("Headphones", 1000) + "]\n";
}

// The system's configuration with arguments for its access module: what is set in a file of its own comes too
// late for a module.
std::string configurationWithAccess(const std::string& arguments) {
  std::ifstream file("/usr/share/pipewire/pipewire.conf");
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::string start = "args = {";
  const auto module = text.find("{ name = libpipewire-module-access");
  const auto place = module == std::string::npos ? module : text.find(start, module);
  if (place == std::string::npos) throw std::runtime_error("the system's pipewire.conf has no access module");
  return text.insert(place + start.size(), "\n" + arguments + "\n");
}

// A session bus with no folder of services: nothing starts that we didn't start.
std::string busConfiguration(const fs::path& runtime) {
  return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
         " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
         "<busconfig>\n"
         "  <type>session</type>\n"
         "  <listen>unix:path=" +
         (runtime / "bus").string() +
         "</listen>\n"
         "  <auth>EXTERNAL</auth>\n"
         "  <policy context=\"default\">\n"
         "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
         "    <allow eavesdrop=\"true\"/>\n"
         "    <allow own=\"*\"/>\n"
         "  </policy>\n"
         "</busconfig>\n";
}

} // namespace

SessionFolders::SessionFolders(const fs::path& root)
    : runtime(root / "run")
    , config(root / "config")
    , state(root / "state")
    , data(root / "data")
    , cache(root / "cache")
    , home(root / "home")
    , logs(root / "log")
    , programs(root / "bin")
    , tones(root / "tones") {}

void writeSessionFiles(const SessionFolders& folders, int quantum, const std::string& accessArguments) {
  for (const fs::path& folder : {folders.runtime, folders.config, folders.state, folders.data, folders.cache,
                                 folders.home, folders.logs, folders.programs, folders.tones})
    fs::create_directories(folder);
  fs::permissions(folders.runtime, fs::perms::owner_all);

  writeFile(folders.config / "bus.conf", busConfiguration(folders.runtime));
  writeFile(folders.config / "pipewire/pipewire.conf.d/50-session.conf", pipewireConfiguration(quantum));
  if (!accessArguments.empty())
    writeFile(folders.config / "pipewire/pipewire.conf", configurationWithAccess(accessArguments));
  writeFile(folders.config / "wireplumber/main.lua.d/51-no-hardware.lua",
            "alsa_monitor.enabled = false\n"
            "v4l2_monitor.enabled = false\n"
            "libcamera_monitor.enabled = false\n"
            "default_access.properties[\"enable-flatpak-portal\"] = false\n");
  writeFile(folders.config / "wireplumber/bluetooth.lua.d/51-no-hardware.lua",
            "bluez_monitor.enabled = false\n");
}

std::map<std::string, std::string> sinkProperties(const std::string& name, const std::string& description,
                                                  int priority) {
  return {{"factory.name", "support.null-audio-sink"},
          {"node.name", name},
          {"node.description", description},
          {"media.class", "Audio/Sink"},
          {"audio.position", "FL,FR"},
          {"audio.rate", "48000"},
          {"priority.session", std::to_string(priority)},
          {"object.linger", "true"}};
}

} // namespace sonvel::session
