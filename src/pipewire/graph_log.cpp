#include "pipewire/graph_log.h"

#include <pipewire/log.h>
#include <pipewire/pipewire.h>

#include <cstdarg>

namespace sonvel::pipewire {

namespace {

spa_log_topic* topic() {
  static spa_log_topic made = [] {
    spa_log_topic fresh{};
    fresh.topic = "sonvel";
    return fresh;
  }();
  static const bool isKnown = [] {
    pw_init(nullptr, nullptr);
    PW_LOG_TOPIC_INIT(&made);
    return true;
  }();
  static_cast<void>(isKnown);
  return &made;
}

// A user does not notice a shorter delay.
constexpr std::chrono::milliseconds kNoticed{50};

void log(const char* format, va_list arguments) {
  if (!pw_log_topic_enabled(SPA_LOG_LEVEL_INFO, topic())) return;
  pw_log_logtv(SPA_LOG_LEVEL_INFO, topic(), "sonvel", 0, "", format, arguments);
}

} // namespace

void setVerbose() {
  topic()->level = SPA_LOG_LEVEL_INFO;
  topic()->has_custom_level = true;
}

void logEdit(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  log(format, arguments);
  va_end(arguments);
}

void logRefusal(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  log(format, arguments);
  va_end(arguments);
}

void logBusy(std::chrono::steady_clock::duration time) {
  if (time < kNoticed) return;
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
  logEdit("the engine was busy for %lld ms", static_cast<long long>(milliseconds));
}

} // namespace sonvel::pipewire
