#include "audio/audio_permission.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace sonvel {

namespace {

int preflightResult = 0;
int requests = 0;

int preflight(const char* service, const void* options) {
  return std::string(service) == "kTCCServiceAudioCapture" && options == nullptr ? preflightResult : 99;
}

void request(const char* /*service*/, const void* /*options*/,
             std::function<void(bool)>
                 completion) { // NOLINT(performance-unnecessary-value-param): the framework's signature
  ++requests;
  completion(true);
}

/// A framework that is at one path, with the functions that a test gives it.
class Framework final : public DynamicLibraries {
 public:
  std::optional<LibraryHandle> open(const char* path, int mode) override {
    EXPECT_EQ(mode, 2);
    opened.emplace_back(path);
    return path == path_ ? std::optional(LibraryHandle{7}) : std::nullopt;
  }

  Function symbol(LibraryHandle library, const char* name) override {
    EXPECT_EQ(library, LibraryHandle{7});
    if (hasPreflight && std::string(name) == "TCCAccessPreflight")
      return reinterpret_cast<Function>(&preflight);
    if (hasRequest && std::string(name) == "TCCAccessRequest") return reinterpret_cast<Function>(&request);
    return nullptr;
  }

  std::string path_ = "TCC.framework/TCC";
  bool hasPreflight = true;
  bool hasRequest = true;
  std::vector<std::string> opened;
};

} // namespace

TEST(AudioPermission, MapsThePreflight) {
  Framework framework;
  AudioPermission permission(framework);
  for (const auto& [result, status] :
       {std::pair{0, AudioCaptureStatus::authorized}, std::pair{1, AudioCaptureStatus::denied},
        std::pair{2, AudioCaptureStatus::undetermined}, std::pair{-1, AudioCaptureStatus::undetermined}}) {
    preflightResult = result;
    EXPECT_EQ(permission.status(), status);
  }
  EXPECT_EQ(framework.opened, (std::vector<std::string>{"/System/Library/PrivateFrameworks/TCC.framework/TCC",
                                                        "TCC.framework/TCC"})); // once
}

TEST(AudioPermission, CannotTellNorAskWithoutTheFrameworkOrItsFunctions) {
  Framework none;
  none.path_ = "elsewhere";
  Framework empty;
  empty.hasPreflight = empty.hasRequest = false;
  for (auto* framework : {&none, &empty}) {
    AudioPermission permission(*framework);
    EXPECT_EQ(permission.status(), AudioCaptureStatus::unknown);
    EXPECT_FALSE(permission.request([](bool) { ADD_FAILURE() << "nobody was asked"; }));
  }
}

TEST(AudioPermission, AnswersARequestOnce) {
  Framework framework;
  AudioPermission permission(framework);
  int answers = 0;
  EXPECT_TRUE(permission.request([&](bool isGranted) { answers += isGranted ? 1 : 100; }));
  EXPECT_EQ(answers, 1);
  EXPECT_EQ(requests, 1);
}

} // namespace sonvel
