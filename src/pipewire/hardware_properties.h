#pragma once

#include "pipewire/hardware_state.h"

namespace sonvel::pipewire {

/// Reads the properties of each kind of object from the graph. None means that the object lacks the property.
/// Use once, with the loop's lock held.
class PipeWireHardware::PropertyReader {
 public:
  using Bytes = std::optional<std::vector<std::byte>>;

  PropertyReader(State& state, AudioObjectID object, const PropertyAddress& address)
      : state_(state)
      , object_(object)
      , address_(address) {}

  /// A number or a list.
  Bytes data();

  /// A string; the inner none is a null reference. The bundle identifier is not in the graph: always null
  /// here.
  std::optional<std::optional<std::string>> text();

  /// Either kind, for comparisons.
  Bytes anyValue();

  bool exists() { return data().has_value() || text().has_value(); }

  /// Whether an object with that ID exists now.
  bool objectExists() const;

 private:
  bool isStreams() const;
  Bytes systemData();
  AudioObjectID chosenDeviceOf(const ProcessKey& process) const;
  Bytes processData(const AudioClient& client);
  Bytes tapData(const DesiredTap& tap);
  Bytes deviceData(GlobalID device) const;

  State& state_;
  AudioObjectID object_;
  PropertyAddress address_;
};

} // namespace sonvel::pipewire
