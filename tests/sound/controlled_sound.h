#pragma once

#include "app/desktop_audio.h"
#include "engine/actor.h"
#include "engine/hardware_controller.h"
#include "session/private_session.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>

namespace sonvel::sound {

/// Waits for what another process brings about; false if it takes longer than `within`.
bool waitUntil(const std::function<bool()>& isSo,
               std::chrono::milliseconds within = std::chrono::seconds{20});

/// Whether a graph holds a node, link or entry of ours.
bool holdsAnythingOfOurs(const session::Graph& graph);

/// The engine on the real sound server of a private session, as the program runs it.
class ControlledSound {
 public:
  /// Puts the session's environment into this process.
  explicit ControlledSound(const session::PrivateSession& session);

  /// The application that a process plays for, once it is heard of; none if it isn't within 5 seconds.
  std::optional<AudioApp> findApp(pid_t pid);

  /// Runs something with the controller, on its thread.
  template <class F> auto with(F&& function) { return controller_->call(std::forward<F>(function)).get(); }

  void add(const AudioApp& app, float gain = 1.0F, std::optional<std::string> outputUID = std::nullopt);
  void setGain(const AudioApp& app, float gain);
  void setMuted(const AudioApp& app, bool isMuted);
  void setOutput(const AudioApp& app, std::optional<std::string> outputUID);

  AudioServer& server() noexcept { return audio_->server(); }

  /// As the controller's probe answers.
  std::optional<bool> probe();

  /// Whether all of it was restored.
  bool remove(const AudioApp& app);

 private:
  std::optional<DesktopAudio> audio_; // made when the environment is right
  std::optional<Actor<HardwareController>> controller_;
};

} // namespace sonvel::sound
