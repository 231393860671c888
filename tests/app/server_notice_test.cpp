#include "app/server_notice.h"
#include "model/qt_executor.h"
#include "simulated/simulated_server.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <optional>
#include <thread>
#include <vector>

namespace sonvel {

namespace {

using Connection = AudioServer::Connection;
using Rights = AudioServer::Rights;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ServerNoticeTest : public ::testing::Test {
 protected:
  // Each connection in turn, on a thread of the audio system; that thread has ended then.
  void become(const std::vector<Connection>& connections) {
    std::thread([&] {
      for (const auto connection : connections)
        server_.setConnection(connection);
    }).join();
  }

  int argc_ = 0;
  QCoreApplication application_{argc_, nullptr};
  simulated::SimulatedServer server_;
  QtExecutor mainThread_;
  std::vector<QString> heard_;
  std::vector<std::thread::id> threads_;
  std::optional<ServerNotice> notice_{std::in_place, server_, mainThread_, [this](const QString& text) {
                                        heard_.push_back(text);
                                        threads_.push_back(std::this_thread::get_id());
                                      }};
};

TEST_F(ServerNoticeTest, SaysOnTheMainThreadWhatTheUserSeesChange) {
  const std::pair<Connection, const char*> cases[] = {
      {Connection::connecting, "Waiting for the sound service to start."},
      {Connection::connected, ""},
      {Connection::lost, "The sound service has stopped. Sonvel goes on by itself when it is back."}};
  for (const auto& [connection, text] : cases) {
    EXPECT_EQ(serverNotice(connection, Rights::granted), text);
    EXPECT_EQ(serverNotice(connection, Rights::restricted), "") << "the permission card says it";
  }
  become({Connection::connected, Connection::lost, Connection::connecting}); // before anybody has looked
  server_.setRights(Rights::granted);
  QCoreApplication::processEvents();
  EXPECT_THAT(heard_, IsEmpty());
  become({Connection::connected});
  EXPECT_THAT(heard_, IsEmpty());
  QCoreApplication::processEvents();
  become({Connection::lost});
  QCoreApplication::processEvents();
  EXPECT_THAT(heard_, ElementsAre("", serverNotice(Connection::lost, Rights::granted)));
  EXPECT_EQ(notice_->text(), heard_.back());
  EXPECT_THAT(threads_, ::testing::Each(std::this_thread::get_id()));
}

TEST_F(ServerNoticeTest, IsSilentAfterItsEnd) {
  become({Connection::connected}); // is on its way
  notice_.reset();
  become({Connection::lost}); // finds nobody
  QCoreApplication::processEvents();
  EXPECT_THAT(heard_, IsEmpty());
}

} // namespace

} // namespace sonvel
