#pragma once

#include "pipewire/graph.h"
#include "pipewire/graph_monitor.h"

#include <optional>
#include <vector>

namespace sonvel::pipewire {

/// The volume that desktop mixers show for a linear factor: its cube root, 0.0 to 1.0, more for
/// amplification.
float scalarFromLinear(float linear) noexcept;
float linearFromScalar(float scalar) noexcept;

/// The volume, 0.0 to 1.0, of the loudest channel (element 0) or of one channel (elements 1 and 2). Values
/// above 1.0 give 1.0. None if there is no such channel.
std::optional<float> volumeScalar(const std::vector<float>& channelVolumes, std::uint32_t element);

/// The linear factors with one element set. Element 0 keeps the balance between channels.
std::vector<float> withVolumeScalar(std::vector<float> channelVolumes, std::uint32_t element, float scalar);

/// The linear factors of a device's channels; those of the card's output if the device belongs to a card.
/// Empty if it has no volume.
std::vector<float> deviceVolumes(const Graph& graph, GlobalID device);

/// Sets the factors; on a card through its route, so that they are stored and its own control moves.
void setDeviceVolumes(Graph& graph, GraphMonitor& monitor, GlobalID device,
                      const std::vector<float>& volumes);

} // namespace sonvel::pipewire
