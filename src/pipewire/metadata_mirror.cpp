#include "pipewire/metadata_mirror.h"

#include <algorithm>

namespace sonvel::pipewire {

void MetadataMirror::wrote(GlobalID subject, const MetadataWrite& write) {
  ownWrites_[subject].push_back({write, readings_});
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

void MetadataMirror::readingBegins() {
  ++readings_;
  knownUntilSerial_ = newestSerial_;
  for (const auto& [id, node] : graph_.nodes)
    newestSerial_ = std::max(newestSerial_, node.serial);
}

void MetadataMirror::read(const Entries& entries) {
  // What the server has answered to the earlier writes either is in the entries or has been replaced.
  for (auto writes = ownWrites_.begin(); writes != ownWrites_.end();) {
    std::erase_if(writes->second, [this](const OwnWrite& own) { return own.reading < readings_; });
    writes = writes->second.empty() ? ownWrites_.erase(writes) : std::next(writes);
  }
  const MetadataEntries none;
  for (const auto& [subject, known] : Entries(graph_.metadata)) {
    const auto read = entries.find(subject);
    for (const auto& [key, value] : known)
      compare(subject, key, read == entries.end() ? none : read->second);
  }
  for (const auto& [subject, read] : entries)
    for (const auto& [key, value] : read)
      compare(subject, key, read);
}

void MetadataMirror::compare(GlobalID subject, const std::string& key, const MetadataEntries& read) {
  if (isOnItsWay(subject, key)) return;
  const auto entry = read.find(key);
  const MetadataValue* value = entry == read.end() ? nullptr : &entry->second;
  const MetadataValue* known = graph_.metadataOf(subject, key);
  const bool isSame = value == nullptr || known == nullptr ? value == known : *value == *known;
  if (isSame) return;
  const auto node = graph_.nodes.find(subject);
  const auto missed = value == nullptr ? std::nullopt : std::optional(*value);
  if (node != graph_.nodes.end() && node->second.serial > knownUntilSerial_)
    apply(subject, {key, missed});
  else
    reported(subject, key, missed);
}

void MetadataMirror::forget(GlobalID subject) {
  ownWrites_.erase(subject);
  graph_.metadata.erase(subject);
}

/// Removes the write, and those before it: a write of the value that is there already is never reported.
bool MetadataMirror::takeEcho(GlobalID subject, const MetadataWrite& reported) {
  const auto writes = ownWrites_.find(subject);
  if (writes == ownWrites_.end()) return false;
  const auto own = std::ranges::find_if(writes->second, [&](const OwnWrite& candidate) {
    const MetadataWrite& write = candidate.write;
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
         std::ranges::any_of(writes->second, [&](const OwnWrite& own) { return own.write.key == key; });
}

void MetadataMirror::apply(GlobalID subject, const MetadataWrite& write) {
  if (write.value)
    graph_.metadata[subject][write.key] = *write.value;
  else
    graph_.metadata[subject].erase(write.key);
}

} // namespace sonvel::pipewire
