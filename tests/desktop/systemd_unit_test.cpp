#include "desktop/systemd_unit.h"

#include <gmock/gmock.h>

namespace sonvel::desktop {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SystemdUnit, NamesItsApplication) {
  EXPECT_THAT(applicationIDsOfUnit("app-gnome-org.example.Player-4711.scope"),
              ElementsAre("org.example.Player", "gnome-org.example.Player"));
  EXPECT_THAT(applicationIDsOfUnit("app-org.example.Player-4711.scope"), ElementsAre("org.example.Player"));
  EXPECT_THAT(applicationIDsOfUnit(R"(app-gnome-web\x2dplayer-4711.scope)"),
              ElementsAre("web-player", "gnome-web-player"));
  EXPECT_THAT(applicationIDsOfUnit("app-flatpak-org.example.Player-815.scope"),
              ElementsAre("org.example.Player", "flatpak-org.example.Player"));
  EXPECT_THAT(applicationIDsOfUnit(R"(app-web\x2dplayer@5f0e8b.service)"), ElementsAre("web-player"));
  EXPECT_THAT(applicationIDsOfUnit("app-org.example.Player@autostart.service"),
              ElementsAre("org.example.Player"));
  EXPECT_THAT(applicationIDsOfUnit("app-kde-player.service"), ElementsAre("player", "kde-player"));
  EXPECT_THAT(applicationIDsOfUnit("dbus-:1.2-org.example.Player@0.service"),
              ElementsAre("org.example.Player"));
  EXPECT_THAT(applicationIDsOfUnit("snap.web-player.main.5cbc2e34-1b5c-4b5a-9d7c-0f2a8d3a6b11.scope"),
              ElementsAre("web-player_main"));
  EXPECT_THAT(applicationIDsOfUnit("snap.player.player-5cbc2e34-1b5c-4b5a-9d7c-0f2a8d3a6b11.scope"),
              ElementsAre("player_player"));
  EXPECT_THAT(applicationIDsOfUnit("snap.player.daemon.service"), ElementsAre("player_daemon"));
}

TEST(SystemdUnit, OfAnotherKindNamesNone) {
  for (const char* unit :
       {"", "session-2.scope", "vte-spawn-5cbc2e34.scope", "user@1000.service", "app.slice",
        "app-gnome-org.example.Player.slice", "app-.service", "app-4711.scope", "app-@autostart.service",
        "dbus-broker.service", "snap.player.scope", ".scope"})
    EXPECT_THAT(applicationIDsOfUnit(unit), IsEmpty()) << unit;
}

TEST(SystemdUnit, LeavesWhatIsNoEscapeAlone) {
  EXPECT_THAT(applicationIDsOfUnit(R"(app-a\x2-1.scope)"), ElementsAre(R"(a\x2)"));
  EXPECT_THAT(applicationIDsOfUnit(R"(app-a\xzz-1.scope)"), ElementsAre(R"(a\xzz)"));
}

} // namespace
} // namespace sonvel::desktop
