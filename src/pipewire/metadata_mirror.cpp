#include "pipewire/metadata_mirror.h"

#include <algorithm>

namespace sonvel::pipewire {

void MetadataMirror::wrote(GlobalID subject, const MetadataWrite& write) {
  ownWrites_[subject].push_back(write);
  apply(subject, write);
  const auto stream = graph_.nodes.find(subject);
  if (stream != graph_.nodes.end() && isTarget(write.key)) stream->second.overwritten.reset();
}

void MetadataMirror::reported(GlobalID subject, const std::string& key, std::optional<MetadataValue> value) {
  const MetadataWrite change{key, std::move(value)};
  if (takeEcho(subject, change)) {
    if (!isOnItsWay(subject, key)) apply(subject, change);
    return;
  }
  const auto stream = graph_.nodes.find(subject);
  if (stream != graph_.nodes.end()) {
    if (isChoiceInTap(graph_, subject, change)) stream->second.choiceSerial = ++graph_.lastChoiceSerial;
    // The server gets our write after this one, which we did not know of when we sent it.
    if (isTarget(key) && isOnItsWay(subject, key) && !targetTapOf(graph_, subject).empty()) {
      stream->second.overwritten = change;
      return;
    }
  }
  apply(subject, change);
}

void MetadataMirror::forget(GlobalID subject) {
  ownWrites_.erase(subject);
  graph_.metadata.erase(subject);
}

/// Removes the write, and those before it: a write of the value that is there already is never reported.
bool MetadataMirror::takeEcho(GlobalID subject, const MetadataWrite& reported) {
  const auto writes = ownWrites_.find(subject);
  if (writes == ownWrites_.end()) return false;
  const auto own = std::ranges::find_if(writes->second, [&](const MetadataWrite& write) {
    return write.key == reported.key && write.value.has_value() == reported.value.has_value() &&
           (!write.value || write.value->value == reported.value->value);
  });
  if (own == writes->second.end()) return false;
  writes->second.erase(writes->second.begin(), std::next(own));
  if (writes->second.empty()) ownWrites_.erase(writes);
  return true;
}

bool MetadataMirror::isOnItsWay(GlobalID subject, const std::string& key) const {
  const auto writes = ownWrites_.find(subject);
  return writes != ownWrites_.end() &&
         std::ranges::find(writes->second, key, &MetadataWrite::key) != writes->second.end();
}

void MetadataMirror::apply(GlobalID subject, const MetadataWrite& write) {
  if (write.value)
    graph_.metadata[subject][write.key] = *write.value;
  else
    graph_.metadata[subject].erase(write.key);
}

} // namespace sonvel::pipewire
