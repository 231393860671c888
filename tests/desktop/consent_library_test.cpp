#include "audio/audio_permission.h"
#include "desktop/consent_library.h"
#include "simulated/simulated_server.h"

#include <gtest/gtest.h>

namespace sonvel::desktop {

using Rights = AudioServer::Rights;

TEST(ConsentLibrary, ConsentIsWhatTheServerGrantsAndNobodyCanBeAsked) {
  simulated::SimulatedServer server;
  consent::Preflight* preflight = nullptr;
  {
    ConsentLibrary library(server);
    AudioPermission permission(library);
    EXPECT_EQ(permission.status(), AudioCaptureStatus::undetermined);
    server.setRights(Rights::granted);
    server.setConnection(AudioServer::Connection::lost);
    EXPECT_EQ(permission.status(), AudioCaptureStatus::authorized);
    server.setRights(Rights::restricted);
    EXPECT_EQ(permission.status(), AudioCaptureStatus::denied);
    EXPECT_FALSE(permission.request([](bool) { ADD_FAILURE() << "nobody was asked"; }));
    EXPECT_FALSE(library.open("libc.so.6", kRTLDNow));
    const auto handle = library.open("TCC.framework/TCC", kRTLDNow);
    ASSERT_TRUE(handle);
    preflight = reinterpret_cast<consent::Preflight*>(library.symbol(*handle, "TCCAccessPreflight"));
  }
  EXPECT_EQ(preflight("kTCCServiceAudioCapture", nullptr), 2) << "there is no server any more";
}

} // namespace sonvel::desktop
