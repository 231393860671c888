#include "audio/audio_permission.h"
#include "desktop/consent_library.h"
#include "simulated/simulated_server.h"

#include <gtest/gtest.h>

namespace sonvel::desktop {

using Rights = AudioServer::Rights;

TEST(ConsentLibrary, ConsentIsWhatTheServerGrantsAndNobodyCanBeAsked) {
  simulated::SimulatedServer server;
  ConsentLibrary library(server);
  AudioPermission permission(library);
  EXPECT_EQ(permission.status(), AudioCaptureStatus::undetermined);
  server.setRights(Rights::granted);
  server.setConnection(AudioServer::Connection::lost);
  EXPECT_EQ(permission.status(), AudioCaptureStatus::authorized);
  server.setRights(Rights::restricted);
  EXPECT_EQ(permission.status(), AudioCaptureStatus::denied);
  EXPECT_FALSE(permission.request([](bool) { ADD_FAILURE() << "nobody was asked"; }));
}

TEST(ConsentLibrary, AnswersUnderItsPathsForItsServiceWhileItExists) {
  simulated::SimulatedServer server;
  server.setRights(Rights::granted);
  consent::Preflight* preflight = nullptr;
  {
    ConsentLibrary library(server);
    for (const auto* path : {"", "TCC", "libc.so.6", "./TCC.framework/TCC"})
      EXPECT_FALSE(library.open(path, kRTLDNow)) << path;
    for (const auto* path : {"/System/Library/PrivateFrameworks/TCC.framework/TCC", "TCC.framework/TCC"}) {
      const auto handle = library.open(path, kRTLDNow);
      ASSERT_TRUE(handle) << path;
      preflight = reinterpret_cast<consent::Preflight*>(library.symbol(*handle, "TCCAccessPreflight"));
      ASSERT_NE(preflight, nullptr);
    }
    EXPECT_EQ(preflight("kTCCServiceAudioCapture", nullptr), 0);
    EXPECT_EQ(preflight("kTCCServiceCamera", nullptr), 2);
  }
  EXPECT_EQ(preflight("kTCCServiceAudioCapture", nullptr), 2);
}

} // namespace sonvel::desktop
