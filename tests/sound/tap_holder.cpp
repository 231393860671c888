// The engine on the real sound server, worked by the lines of its input, each of which is answered by one in
// JSON:
//   apps                                     those that play
//   add PID GAIN [DEVICE], take GAIN         takes one over; all that play, and tells how many it holds then
//   gain PID GAIN, mute PID 0|1, output PID [DEVICE]
//   remove PID, teardown                     whether all was restored; for each that it held
//   probe, permission                        what the capture probe and the permission say
// When its input ends it gives all back.
#include "app/desktop_audio.h"
#include "audio/audio_permission.h"
#include "desktop/consent_library.h"
#include "engine/actor.h"
#include "engine/hardware_controller.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <exception>
#include <iostream>
#include <map>
#include <sstream>
#include <string>

namespace sonvel {

namespace {

QString text(const std::string& string) {
  return QString::fromStdString(string);
}

class TapHolder {
 public:
  QJsonValue perform(const std::string& verb, std::istream& words) {
    if (verb == "probe") return probe();
    if (verb == "permission") return static_cast<int>(permission_.status());
    return controller_
        .call([&](HardwareController& controller) { return performOn(controller, verb, words); })
        .get();
  }

 private:
  QJsonValue performOn(HardwareController& controller, const std::string& verb, std::istream& words) {
    if (verb == "apps") return apps(controller);
    if (verb == "take") return take(controller, read<float>(words));
    if (verb == "teardown") return restored(controller.teardownAll());
    const auto pid = read<std::int32_t>(words);
    if (!known_.contains(pid)) apps(controller);
    const AudioApp& app = known_.at(pid);
    if (verb == "add") {
      const auto gain = read<float>(words);
      controller.addChannel(app, gain, false, device(words));
    } else if (verb == "gain") {
      controller.setGain(read<float>(words), app.objectID);
    } else if (verb == "mute") {
      controller.setMuted(read<int>(words) == 1, app.objectID);
    } else if (verb == "output") {
      controller.setOutput(device(words), app.objectID);
    } else if (verb == "remove") {
      const auto result = controller.removeChannel(app.objectID);
      return !result || result->restored(); // none if its process has ended
    } else {
      throw std::invalid_argument("no such request");
    }
    return true;
  }

  template <class T> static T read(std::istream& words) {
    T value{};
    if (!(words >> value)) throw std::invalid_argument("a number is missing");
    return value;
  }

  static std::optional<std::string> device(std::istream& words) {
    std::string name;
    return words >> name ? std::optional(name) : std::nullopt;
  }

  QJsonArray apps(HardwareController& controller) {
    QJsonArray list;
    for (const AudioApp& app : controller.audibleApps()) {
      known_[app.pid] = app;
      list.append(QJsonObject{{"pid", app.pid},
                              {"name", text(app.name)},
                              {"bundleID", text(app.bundleID)},
                              {"parentBundleID", text(app.parentBundleID.value_or(""))}});
    }
    return list;
  }

  /// Skips applications that it can't take over.
  static int take(HardwareController& controller, float gain) {
    for (const AudioApp& app : controller.audibleApps()) {
      try {
        controller.addChannel(app, gain, false, std::nullopt);
      } catch (const HardwareError& error) {
        std::cerr << "tap-holder: " << error.what() << '\n';
      }
    }
    return static_cast<int>(controller.controlledAppIDs().size());
  }

  static QJsonArray restored(const std::vector<HardwareTeardownResult>& results) {
    QJsonArray list;
    for (const HardwareTeardownResult& result : results)
      list.append(result.restored());
    return list;
  }

  QJsonValue probe() {
    const auto heard = controller_
                           .callForAnswer<std::optional<bool>>(
                               [](HardwareController& controller, HardwareController::ProbeAnswer answer) {
                                 controller.probeCapture(std::move(answer));
                               })
                           .get();
    return heard ? QJsonValue(*heard) : QJsonValue();
  }

  DesktopAudio audio_;
  desktop::ConsentLibrary consent_{audio_.server()};
  AudioPermission permission_{consent_};
  std::map<std::int32_t, AudioApp> known_; ///< by pid; also those that no longer play
  Actor<HardwareController> controller_{audio_.environment(), audio_.clock()};
};

} // namespace

} // namespace sonvel

int main() {
  try {
    sonvel::TapHolder holder;
    for (std::string line; std::getline(std::cin, line);) {
      std::istringstream words(line);
      std::string verb;
      words >> verb;
      QJsonValue answer;
      try {
        answer = holder.perform(verb, words);
      } catch (const std::exception& error) {
        answer = QJsonObject{{"error", error.what()}};
      }
      std::cout << QJsonDocument(QJsonArray{answer}).toJson(QJsonDocument::Compact).constData() << std::endl;
    }
    for (const QJsonValueRef restored : holder.perform("teardown", std::cin).toArray())
      if (!restored.toBool()) return 1;
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "tap-holder: " << error.what() << '\n';
    return 2;
  }
}
