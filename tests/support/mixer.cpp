// Edits the default metadata as mixers do to move streams. Each input line gets one answer line:
//   set SUBJECT KEY TYPE VALUE
//   remove SUBJECT KEY
//   entries    all entries: subject, key and value with unit separators between, and a record separator after
// each
//   reread     the same, of the metadata as it is bound anew
// Replaces pw-metadata: PipeWire 0.3 does not tell a client about objects newer than its last message, and
// stops telling all clients if one disconnects before the metadata that it bound has answered.
#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBindsWithin{500};
constexpr std::chrono::seconds kReadsAgainWithin{3}; // as Sonvel does

struct Mixer {
  pw_thread_loop* loop = nullptr;
  pw_core* core = nullptr;
  pw_registry* registry = nullptr;
  pw_metadata* metadata = nullptr;
  std::uint32_t metadataID = SPA_ID_INVALID;
  spa_hook metadataListener{};
  std::map<std::uint32_t, std::map<std::string, std::string>> entries; // value by subject and key
  std::set<std::uint32_t> globals = {0};
  std::optional<Clock::time_point> newClientAt; ///< changes may have been missed since
  Clock::time_point boundAt;
  int lastSync = 0;
  bool isSynchronized = false;

  static void onGlobal(void* data, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
                       std::uint32_t /*version*/, const spa_dict* properties) {
    auto& self = *static_cast<Mixer*>(data);
    self.globals.insert(id);
    pw_core_sync(self.core, PW_ID_CORE, 0); // any message tells the server that we know this object
    if (spa_streq(type, PW_TYPE_INTERFACE_Client)) self.newClientAt = Clock::now();
    if (!spa_streq(type, PW_TYPE_INTERFACE_Metadata) || properties == nullptr ||
        !spa_streq(spa_dict_lookup(properties, PW_KEY_METADATA_NAME), "default"))
      return;
    self.metadataID = id;
    self.bindMetadata();
    self.newClientAt = Clock::now(); // the others bind it now too
  }

  void bindMetadata() {
    static const pw_metadata_events events = {.version = PW_VERSION_METADATA_EVENTS,
                                              .property = &Mixer::onProperty};
    entries.clear();
    boundAt = Clock::now();
    if (newClientAt && boundAt - *newClientAt > kReadsAgainWithin) newClientAt.reset();
    metadata = static_cast<pw_metadata*>(
        pw_registry_bind(registry, metadataID, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
    pw_metadata_add_listener(metadata, &metadataListener, &events, this);
  }

  static void onGlobalRemove(void* data, std::uint32_t id) {
    auto& self = *static_cast<Mixer*>(data);
    self.globals.erase(id);
    if (id == self.metadataID) self.forgetMetadata();
  }

  void forgetMetadata() {
    spa_hook_remove(&metadataListener);
    void* proxy = std::exchange(metadata, nullptr);
    pw_proxy_destroy(static_cast<pw_proxy*>(proxy));
    entries.clear();
  }

  static int onProperty(void* data, std::uint32_t subject, const char* key, const char* /*type*/,
                        const char* value) {
    auto& self = *static_cast<Mixer*>(data);
    if (key == nullptr)
      self.entries.erase(subject);
    else if (value == nullptr)
      self.entries[subject].erase(key);
    else
      self.entries[subject][key] = value;
    return 0;
  }

  static void onDone(void* data, std::uint32_t id, int sequence) {
    auto& self = *static_cast<Mixer*>(data);
    if (id != PW_ID_CORE || sequence != self.lastSync) return;
    self.isSynchronized = true;
    pw_thread_loop_signal(self.loop, false);
  }

  /// Whether another program has bound the metadata since we did: the server did not report changes
  /// meanwhile.
  bool mayHaveMissed() const {
    const auto isOver = [&](Clock::duration delay) {
      return newClientAt && Clock::now() > *newClientAt + delay && boundAt <= *newClientAt + delay;
    };
    return isOver(kBindsWithin) || isOver(kReadsAgainWithin);
  }

  /// Returns when everything that the server knows now has arrived.
  void synchronize(bool isAnew) {
    // The server does not report changed entries of a removed object either.
    if (metadata != nullptr &&
        (isAnew || mayHaveMissed() || std::ranges::any_of(entries, [this](const auto& subject) {
           return !globals.contains(subject.first);
         }))) {
      forgetMetadata();
      bindMetadata();
    }
    isSynchronized = false;
    lastSync = pw_core_sync(core, PW_ID_CORE, 0);
    while (!isSynchronized)
      pw_thread_loop_wait(loop);
  }

  void perform(const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    std::uint32_t subject = 0;
    std::string key;
    std::string type;
    std::string value;
    words >> verb >> subject >> key >> type >> std::ws;
    std::getline(words, value);
    synchronize(verb == "reread");
    if (verb == "entries" || verb == "reread")
      for (const auto& [of, list] : entries)
        for (const auto& [name, entry] : list)
          std::cout << of << '\x1f' << name << '\x1f' << entry << '\x1e';
    else if (metadata != nullptr)
      pw_metadata_set_property(metadata, subject, key.c_str(), verb == "set" ? type.c_str() : nullptr,
                               verb == "set" ? value.c_str() : nullptr);
    std::cout << std::endl;
  }
};

} // namespace

int main() {
  pw_init(nullptr, nullptr);
  Mixer mixer;
  mixer.loop = pw_thread_loop_new(nullptr, nullptr);
  pw_context* context = pw_context_new(pw_thread_loop_get_loop(mixer.loop), nullptr, 0);
  mixer.core = pw_context_connect(context, pw_properties_new(PW_KEY_APP_NAME, "mixer", nullptr), 0);
  if (mixer.core == nullptr) return 1;
  mixer.registry = pw_core_get_registry(mixer.core, PW_VERSION_REGISTRY, 0);
  static const pw_core_events coreEvents = {.version = PW_VERSION_CORE_EVENTS, .done = &Mixer::onDone};
  static const pw_registry_events registryEvents = {.version = PW_VERSION_REGISTRY_EVENTS,
                                                    .global = &Mixer::onGlobal,
                                                    .global_remove = &Mixer::onGlobalRemove};
  spa_hook coreListener{};
  spa_hook registryListener{};
  pw_core_add_listener(mixer.core, &coreListener, &coreEvents, &mixer);
  pw_registry_add_listener(mixer.registry, &registryListener, &registryEvents, &mixer);
  pw_thread_loop_start(mixer.loop);
  for (std::string line; std::getline(std::cin, line);) {
    pw_thread_loop_lock(mixer.loop);
    mixer.perform(line);
    pw_thread_loop_unlock(mixer.loop);
  }
  pw_thread_loop_stop(mixer.loop);
  pw_context_destroy(context);
  pw_thread_loop_destroy(mixer.loop);
}
