#include "pipewire/metadata_reader.h"

#include <utility>

namespace sonvel::pipewire {

namespace {

// A program binds the metadata a few milliseconds after the server has announced it.
constexpr std::chrono::milliseconds kBindsWithin{300};

// The session manager answers within milliseconds when nothing has happened for this long.
constexpr std::chrono::milliseconds kQuiet{200};
constexpr int kMostWaits = 11;

} // namespace

/// A second binding of the metadata, which is sent all entries.
class MetadataReader::Reading {
 public:
  Reading(pw_registry* registry, GlobalID metadata, LoopEvent& complete)
      : complete_(complete)
      , proxy_(static_cast<pw_proxy*>(
            pw_registry_bind(registry, metadata, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0))) {
    static const pw_metadata_events metadataEvents = [] {
      pw_metadata_events made{};
      made.version = PW_VERSION_METADATA_EVENTS;
      made.property = [](void* self, std::uint32_t subject, const char* key, const char* type,
                         const char* value) {
        static_cast<Reading*>(self)->onProperty(subject, key, type, value);
        return 0;
      };
      return made;
    }();
    static const pw_proxy_events proxyEvents = [] {
      pw_proxy_events made{};
      made.version = PW_VERSION_PROXY_EVENTS;
      made.done = [](void* self, int) { static_cast<Reading*>(self)->complete_.signal(); };
      return made;
    }();
    if (!proxy_) return; // the connection is lost, and so is this object soon
    pw_metadata_add_listener(fromProxy<pw_metadata>(proxy_), metadataHook_.get(), &metadataEvents, this);
    pw_proxy_add_listener(proxy_.get(), proxyHook_.get(), &proxyEvents, this);
    pw_proxy_sync(proxy_.get(), 0); // the server answers it after the session manager has sent the entries
  }

  const MetadataMirror::Entries& entries() const noexcept { return entries_; }

  void forget(GlobalID subject) { entries_.erase(subject); }

 private:
  void onProperty(GlobalID subject, const char* key, const char* type, const char* value) {
    if (key == nullptr)
      entries_.erase(subject);
    else if (value == nullptr)
      entries_[subject].erase(key);
    else
      entries_[subject][key] = {type == nullptr ? "" : type, value};
  }

  LoopEvent& complete_;
  MetadataMirror::Entries entries_;
  ProxyHandle proxy_;
  Hook metadataHook_;
  Hook proxyHook_;
};

MetadataReader::MetadataReader(pw_loop* loop, pw_registry* registry, GlobalID metadata, const Graph& graph,
                               MetadataMirror& mirror, std::function<void()> finished)
    : registry_(registry)
    , metadata_(metadata)
    , graph_(graph)
    , mirror_(mirror)
    , finished_(std::move(finished))
    , delay_(loop, [this] { waitForQuiet(); })
    , complete_(loop, [this] { take(); }) {}

MetadataReader::~MetadataReader() = default;

void MetadataReader::readSoon() {
  if (std::exchange(isWanted_, true)) {
    isWantedAgain_ = true;
    return;
  }
  waits_ = 0;
  revision_ = graph_.revision;
  delay_.arm(kBindsWithin);
}

void MetadataReader::waitForQuiet() {
  const bool isQuiet = std::exchange(revision_, graph_.revision) == graph_.revision;
  if (waits_ > 0 && (isQuiet || waits_ >= kMostWaits)) {
    start();
    return;
  }
  ++waits_;
  delay_.arm(kQuiet);
}

void MetadataReader::forget(GlobalID subject) {
  if (reading_) reading_->forget(subject);
}

void MetadataReader::start() {
  mirror_.readingBegins();
  reading_ = std::make_unique<Reading>(registry_, metadata_, complete_);
}

void MetadataReader::take() {
  if (!reading_) return;
  mirror_.read(reading_->entries());
  reading_.reset();
  isWanted_ = false;
  if (std::exchange(isWantedAgain_, false)) readSoon();
  finished_();
}

} // namespace sonvel::pipewire
