#include "desktop/systemd_unit.h"

#include <gtest/gtest.h>

namespace sonvel::desktop {
namespace {

TEST(SystemdUnit, NamesItsApplication) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"app-gnome-org.example.Player-4711.scope", {"org.example.Player", "gnome-org.example.Player"}},
      {"app-org.example.Player-4711.scope", {"org.example.Player"}},
      {R"(app-gnome-web\x2dplayer-4711.scope)", {"web-player", "gnome-web-player"}},
      {R"(app-web\x2dplayer@5f0e8b.service)", {"web-player"}},
      {"app-org.example.Player@autostart.service", {"org.example.Player"}},
      {"app-kde-player.service", {"player", "kde-player"}},
      {"dbus-:1.2-org.example.Player@0.service", {"org.example.Player"}},
      {"snap.web-player.main.5cbc2e34-1b5c-4b5a-9d7c-0f2a8d3a6b11.scope", {"web-player_main"}},
      {"snap.player.player-5cbc2e34-1b5c-4b5a-9d7c-0f2a8d3a6b11.scope", {"player_player"}},
      {"snap.player.daemon.service", {"player_daemon"}},
      {R"(app-a\x2-1.scope)", {R"(a\x2)"}},
      {R"(app-a\xzz-1.scope)", {R"(a\xzz)"}},
  };
  for (const auto& [unit, ids] : cases)
    EXPECT_EQ(applicationIDsOfUnit(unit), ids) << unit;
  for (const char* unit :
       {"", "session-2.scope", "vte-spawn-5cbc2e34.scope", "user@1000.service", "app.slice",
        "app-gnome-org.example.Player.slice", "app-.service", "app-4711.scope", "app-@autostart.service",
        "dbus-broker.service", "snap.player.scope", ".scope"})
    EXPECT_EQ(applicationIDsOfUnit(unit), std::vector<std::string>()) << unit;
}

} // namespace
} // namespace sonvel::desktop
