#include "pipewire/permissions.h"

#include <gtest/gtest.h>
#include <pipewire/core.h>

#include <vector>

namespace sonvel::pipewire {

namespace {

constexpr GlobalID kMetadata = 36;
constexpr GlobalID kSomething = 50;

struct Case {
  const char* name;
  std::vector<pw_permission> list;
  bool allows;
};

const std::vector<Case> kCases{
    {"all", {{PW_ID_ANY, PW_PERM_ALL}}, true},
    {"nothing yet", {{PW_ID_ANY, 0}}, false},
    {"an empty list", {}, false},
    {"look, but don't touch", {{PW_ID_ANY, PW_PERM_R | PW_PERM_X}}, false},
    {"streams can't be sent anywhere", {{PW_ID_ANY, PW_PERM_RWX}}, false},
    {"new objects stay hidden", {{PW_ID_ANY, PW_PERM_ALL & ~PW_PERM_R}}, false},
    {"nothing can be called", {{PW_ID_ANY, PW_PERM_ALL & ~PW_PERM_X}}, false},
    {"devices can't be changed", {{PW_ID_ANY, PW_PERM_ALL & ~PW_PERM_W}, {kMetadata, PW_PERM_RWX}}, true},
    {"the metadata can't be written", {{PW_ID_ANY, PW_PERM_ALL}, {kMetadata, PW_PERM_R | PW_PERM_X}}, false},
    {"nothing can be made", {{PW_ID_ANY, PW_PERM_ALL}, {PW_ID_CORE, PW_PERM_R}}, false},
    {"one object is hidden", {{PW_ID_ANY, PW_PERM_ALL}, {kSomething, 0}}, true},
    {"one object is allowed", {{PW_ID_ANY, PW_PERM_R | PW_PERM_X}, {kSomething, PW_PERM_ALL}}, false},
};

} // namespace

TEST(Permissions, AllowTapsIfStreamsCanBeSeenAndSentSomewhere) {
  for (const auto& [name, list, allows] : kCases)
    EXPECT_EQ(allowTaps(permissionsFrom(list), kMetadata), allows) << name;
}

TEST(Permissions, MissingSessionManagerTakesNone) {
  const std::vector<pw_permission> list{{PW_ID_ANY, PW_PERM_ALL & ~PW_PERM_W}};
  EXPECT_TRUE(allowTaps(permissionsFrom(list), std::nullopt));
  EXPECT_FALSE(allowTaps(permissionsFrom(list), kMetadata));
}

} // namespace sonvel::pipewire
