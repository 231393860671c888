#include "audio/audio_permission.h"
#include "desktop/consent_library.h"
#include "simulated/simulated_server.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace sonvel::desktop {

using Rights = AudioServer::Rights;

TEST(ConsentLibrary, ConsentIsWhatTheServerGrants) {
  simulated::SimulatedServer server;
  ConsentLibrary library(server);
  AudioPermission permission(library);
  EXPECT_EQ(permission.status(), AudioCaptureStatus::undetermined);
  server.setRights(Rights::granted);
  EXPECT_EQ(permission.status(), AudioCaptureStatus::authorized);
  server.setConnection(AudioServer::Connection::lost);
  EXPECT_EQ(permission.status(), AudioCaptureStatus::authorized);
  server.setRights(Rights::restricted);
  EXPECT_EQ(permission.status(), AudioCaptureStatus::denied);
}

TEST(ConsentLibrary, NobodyCanBeAsked) {
  simulated::SimulatedServer server;
  ConsentLibrary library(server);
  AudioPermission permission(library);
  EXPECT_FALSE(permission.request([](bool) { ADD_FAILURE() << "nobody was asked"; }));
}

TEST(ConsentLibrary, IsUnderBothPathsAndNothingElseIs) {
  simulated::SimulatedServer server;
  ConsentLibrary library(server);
  for (const auto* path : {"/System/Library/PrivateFrameworks/TCC.framework/TCC", "TCC.framework/TCC"}) {
    const auto handle = library.open(path, kRTLDNow);
    ASSERT_TRUE(handle) << path;
    EXPECT_NE(library.symbol(*handle, "TCCAccessPreflight"), nullptr);
    EXPECT_EQ(library.symbol(*handle, "TCCAccessRequest"), nullptr);
    EXPECT_EQ(library.symbol(LibraryHandle{9}, "TCCAccessPreflight"), nullptr);
  }
  for (const auto* path : {"", "TCC", "libc.so.6", "./TCC.framework/TCC"})
    EXPECT_FALSE(library.open(path, kRTLDNow)) << path;
}

TEST(ConsentLibrary, AnswersForNoOtherServiceAndForNoServerThatHasGone) {
  simulated::SimulatedServer server;
  server.setRights(Rights::granted);
  consent::Preflight* preflight = nullptr;
  {
    ConsentLibrary library(server);
    const auto handle = library.open("TCC.framework/TCC", kRTLDNow);
    ASSERT_TRUE(handle);
    preflight = reinterpret_cast<consent::Preflight*>(library.symbol(*handle, "TCCAccessPreflight"));
    ASSERT_NE(preflight, nullptr);
    EXPECT_EQ(preflight("kTCCServiceAudioCapture", nullptr), 0);
    EXPECT_EQ(preflight("kTCCServiceCamera", nullptr), 2);
  }
  EXPECT_EQ(preflight("kTCCServiceAudioCapture", nullptr), 2);
}

TEST(ConsentLibrary, MayGoWhileItIsAsked) {
  std::atomic<bool> isOver = false;
  std::atomic<consent::Preflight*> preflight = nullptr;
  std::thread asking([&] {
    while (!isOver) {
      if (auto* function = preflight.load()) {
        EXPECT_NE(function("kTCCServiceAudioCapture", nullptr), 1);
      }
    }
  });
  for (int i = 0; i < 100; ++i) {
    simulated::SimulatedServer server;
    server.setRights(Rights::granted);
    ConsentLibrary library(server);
    preflight = reinterpret_cast<consent::Preflight*>(
        library.symbol(library.open("TCC.framework/TCC", kRTLDNow).value(), "TCCAccessPreflight"));
  }
  isOver = true;
  asking.join();
}

} // namespace sonvel::desktop
