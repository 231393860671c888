#pragma once

#include "pipewire/graph.h"
#include "pipewire/graph_monitor.h"

#include <optional>
#include <vector>

namespace sonvel::pipewire {

/// The scalar that mixers on the desktop show for a linear factor: its cube root, 0.0 to 1.0 and beyond for
/// amplification.
float scalarFromLinear(float linear) noexcept;
float linearFromScalar(float scalar) noexcept;

/// The scalar, 0.0 to 1.0, of all channels together (element 0: that of the loudest) or of one channel
/// (elements 1 and 2). An amplified device is at 1.0. None if there is no such channel.
std::optional<float> volumeScalar(const std::vector<float>& channelVolumes, std::uint32_t element);

/// The linear factors with one element set. Element 0 keeps the channels' balance to one another.
std::vector<float> withVolumeScalar(std::vector<float> channelVolumes, std::uint32_t element, float scalar);

/// The linear factors of a device's channels: of the card's output where it is one of a card. Empty if it has
/// no volume.
std::vector<float> deviceVolumes(const Graph& graph, GlobalID device);

/// Sets them; on a card so that they last and move its own control.
void setDeviceVolumes(Graph& graph, GraphMonitor& monitor, GlobalID device,
                      const std::vector<float>& volumes);

} // namespace sonvel::pipewire
