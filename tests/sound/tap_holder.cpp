// Takes over everything that plays, at the gain of its argument, tells so, and holds it until its input ends;
// then it gives all of it back.
#include "app/desktop_audio.h"
#include "engine/actor.h"
#include "engine/hardware_controller.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

int main(int argumentCount, char** arguments) {
  try {
    const float gain = argumentCount > 1 ? std::strtof(arguments[1], nullptr) : 1.0F;
    sonvel::DesktopAudio audio;
    sonvel::Actor<sonvel::HardwareController> controller(audio.environment(), audio.clock());
    const auto held = controller
                          .call([gain](sonvel::HardwareController& hardware) {
                            for (const auto& app : hardware.audibleApps())
                              hardware.addChannel(app, gain, false, std::nullopt);
                            return hardware.controlledAppIDs().size();
                          })
                          .get();
    std::cout << "holding " << held << std::endl;
    for (std::string line; std::getline(std::cin, line);)
      continue;
    for (const auto& result : controller.call(&sonvel::HardwareController::teardownAll).get())
      if (!result.restored()) return 1;
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "tap-holder: " << error.what() << '\n';
    return 2;
  }
}
