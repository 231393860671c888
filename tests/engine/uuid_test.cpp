#include "engine/uuid.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace sonvel {
namespace {

TEST(UUID, IsRandomAndInCanonicalForm) {
  std::set<std::string> uuids;
  for (int i = 0; i < 200; ++i) {
    const auto uuid = randomUUID();
    EXPECT_THAT(uuid,
                testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    uuids.insert(uuid);
  }
  EXPECT_EQ(uuids.size(), 200U);
}

} // namespace
} // namespace sonvel
