// Does what the lines of its input say, and answers each with a number: "take" takes over everything that
// plays, at the gain of its argument, and tells how many applications it holds; "status" tells its permission
// to capture as a number. When its input ends it gives all of it back.
#include "app/desktop_audio.h"
#include "audio/audio_permission.h"
#include "desktop/consent_library.h"
#include "engine/actor.h"
#include "engine/hardware_controller.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

namespace {

using sonvel::HardwareController;

/// What it can't have it goes without.
std::size_t takeAll(HardwareController& hardware, float gain) {
  for (const auto& app : hardware.audibleApps()) {
    try {
      hardware.addChannel(app, gain, false, std::nullopt);
    } catch (const sonvel::HardwareError& error) {
      std::cerr << "tap-holder: " << error.what() << '\n';
    }
  }
  return hardware.controlledAppIDs().size();
}

} // namespace

int main(int argumentCount, char** arguments) {
  try {
    const float gain = argumentCount > 1 ? std::strtof(arguments[1], nullptr) : 1.0F;
    sonvel::DesktopAudio audio;
    sonvel::desktop::ConsentLibrary consent(audio.server());
    sonvel::AudioPermission permission(consent);
    sonvel::Actor<HardwareController> controller(audio.environment(), audio.clock());
    for (std::string line; std::getline(std::cin, line);) {
      if (line == "take")
        std::cout
            << controller.call([gain](HardwareController& hardware) { return takeAll(hardware, gain); }).get()
            << std::endl;
      else
        std::cout << static_cast<int>(permission.status()) << std::endl;
    }
    for (const auto& result : controller.call(&HardwareController::teardownAll).get())
      if (!result.restored()) return 1;
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "tap-holder: " << error.what() << '\n';
    return 2;
  }
}
