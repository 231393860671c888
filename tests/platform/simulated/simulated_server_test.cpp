#include "platform/simulated/simulated_server.h"

#include <gtest/gtest.h>

namespace sonvel::simulated {

TEST(SimulatedServer, CallsBackOnceForEachChange) {
  SimulatedServer server;
  EXPECT_EQ(server.rights(), AudioServer::Rights::unknown);
  EXPECT_EQ(server.connection(), AudioServer::Connection::connecting);
  int changes = 0;
  server.onChange([&] {
    ++changes;
    EXPECT_EQ(server.rights(), AudioServer::Rights::granted); // as it is after the change
  });
  server.setRights(AudioServer::Rights::granted);
  server.setRights(AudioServer::Rights::granted);
  server.setConnection(AudioServer::Connection::connected);
  EXPECT_EQ(server.connection(), AudioServer::Connection::connected);
  EXPECT_EQ(changes, 2);
  server.onChange(nullptr);
  server.setConnection(AudioServer::Connection::lost);
  EXPECT_EQ(changes, 2);
}

} // namespace sonvel::simulated
