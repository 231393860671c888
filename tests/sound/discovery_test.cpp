#include "session/listener.h"
#include "session/player.h"
#include "session/tone_client.h"
#include "sound/controlled_sound.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace sonvel::sound {

namespace {

using namespace session;

/// A session in which some programs have desktop entries. As GIO looks for their folders once, each test
/// needs a process of its own.
class Discovery : public testing::Test {
 protected:
  static std::filesystem::path makeDataFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "sonvel-entries-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    std::filesystem::create_directories(std::filesystem::path(name) / "applications");
    return name;
  }

  ~Discovery() override { std::filesystem::remove_all(dataFolder_); }

  /// Installs an entry for the copy of a program that players of the session run under this name.
  void installEntry(const std::string& id, const std::string& name, const std::string& binaryName) {
    std::ofstream entry(dataFolder_ / "applications" / (id + ".desktop"));
    entry << "[Desktop Entry]\nType=Application\nName=" << name << "\nName[de]=" << name << " auf Deutsch\n"
          << "Exec=" << session_.programPath(binaryName).string() << " %U\n";
  }

  /// What discovery makes of a process, once it plays.
  AudioApp find(pid_t pid) { return sound().findApp(pid).value_or(AudioApp{.name = "not found"}); }

  ControlledSound& sound() {
    if (!sound_) sound_.emplace(session_);
    return *sound_;
  }

  std::filesystem::path dataFolder_ = makeDataFolder();
  PrivateSession session_{{.dataDirectories = {dataFolder_}}};

 private:
  std::optional<ControlledSound> sound_;
};

constexpr Tone kTone{.frequency = 1000, .amplitude = 0.2};

} // namespace

TEST_F(Discovery, NativeClientIsNamedAfterItsEntry) {
  installEntry("org.example.Records", "Records", "records");
  const Player player(session_, PlayerKind::pwPlay, kTone, {.binaryName = "records"});
  const AudioApp app = find(player.pid());
  EXPECT_EQ(app.bundleID, "org.example.Records");
  EXPECT_EQ(app.parentBundleID, "org.example.Records");
  EXPECT_EQ(app.name, "Records");
}

TEST_F(Discovery, NameIsInTheUsersLanguage) {
  installEntry("org.example.Records", "Records", "records");
  setenv("LC_ALL", "C.UTF-8", 1); // in the plain C locale the language would not count
  setenv("LANGUAGE", "de", 1);
  const Player player(session_, PlayerKind::pwPlay, kTone, {.binaryName = "records"});
  EXPECT_EQ(find(player.pid()).name, "Records auf Deutsch");
}

TEST_F(Discovery, PulseAudioClientIsNamedAfterItsEntryAndHasItsOwnPID) {
  installEntry("org.example.Jukebox", "Jukebox", "jukebox");
  const Player player(session_, PlayerKind::paplay, kTone, {.binaryName = "jukebox"});
  const AudioApp app = find(player.pid());
  EXPECT_EQ(app.pid, player.pid());
  EXPECT_EQ(app.bundleID, "org.example.Jukebox");
  EXPECT_EQ(app.name, "Jukebox");
}

TEST_F(Discovery, HelperProcessIsNamedAfterTheProgramThatItBelongsTo) {
  installEntry("org.example.Browser", "Browser", "browser");
  ToneClient client(
      session_, {.binaryName = "browser", .helper = true, .properties = {{"application.name", "helper"}}});
  client.open("tab", {.tone = kTone});
  ASSERT_NE(client.pid(), client.parentPid());
  const AudioApp app = find(client.pid());
  EXPECT_EQ(app.bundleID, "org.example.Browser");
  EXPECT_EQ(app.name, "Browser");
}

TEST_F(Discovery, ProgramWithoutEntryIsNamedAfterWhatItClaims) {
  ToneClient client(session_, {.binaryName = "tinker", .properties = {{"application.name", "Tinker Box"}}});
  client.open("tone", {.tone = kTone});
  const AudioApp app = find(client.pid());
  EXPECT_EQ(app.bundleID, "tinker");
  EXPECT_EQ(app.name, "Tinker Box");

  ToneClient named(session_,
                   {.properties = {{"application.name", "Named"}, {"application.id", "org.example.Named"}}});
  named.open("tone", {.tone = kTone});
  EXPECT_EQ(find(named.pid()).bundleID, "org.example.Named");
}

TEST_F(Discovery, ProgramThatClaimsToBePartOfTheSoundSystemIsListed) {
  ToneClient client(session_, {.binaryName = "wireplumber",
                               .properties = {{"application.name", "Rogue\n\u202e"},
                                              {"application.id", "com.quellmarsh.sonvel"},
                                              {"pipewire.access.portal.app_id", "com.quellmarsh.sonvel"}}});
  client.open("tone", {.tone = kTone});
  const AudioApp app = find(client.pid());
  EXPECT_EQ(app.bundleID, "wireplumber");
  EXPECT_EQ(app.name, "Rogue");
}

} // namespace sonvel::sound
