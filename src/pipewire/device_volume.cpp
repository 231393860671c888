#include "pipewire/device_volume.h"

#include "pipewire/node_params.h"

#include <spa/param/param.h>
#include <spa/param/props.h>
#include <spa/param/route.h>

#include <algorithm>
#include <cmath>

namespace sonvel::pipewire {

namespace {

/// The card output that a node plays through; null if it does not belong to a card.
template <class AnyGraph>
auto routeOf(AnyGraph& graph, const Node& node) -> decltype(&graph.cards.at(0).routes[0]) {
  const auto card = node.card ? graph.cards.find(*node.card) : graph.cards.end();
  if (card == graph.cards.end() || !node.cardProfileDevice) return nullptr;
  const auto route = std::ranges::find(card->second.routes, *node.cardProfileDevice, &Route::profileDevice);
  return route == card->second.routes.end() ? nullptr : &*route;
}

const spa_pod* buildProps(PodBuilder& builder, const std::vector<float>& volumes) {
  return static_cast<const spa_pod*>(spa_pod_builder_add_object(
      builder.get(), SPA_TYPE_OBJECT_Props, SPA_PARAM_Props, SPA_PROP_channelVolumes,
      SPA_POD_Array(sizeof(float), SPA_TYPE_Float, static_cast<std::uint32_t>(volumes.size()),
                    volumes.data())));
}

} // namespace

float scalarFromLinear(float linear) noexcept {
  return std::cbrt(std::max(linear, 0.0F));
}

float linearFromScalar(float scalar) noexcept {
  return scalar * scalar * scalar;
}

std::optional<float> volumeScalar(const std::vector<float>& channelVolumes, std::uint32_t element) {
  if (channelVolumes.empty() || element > channelVolumes.size()) return std::nullopt;
  const float linear = element == 0 ? *std::ranges::max_element(channelVolumes) : channelVolumes[element - 1];
  return std::min(scalarFromLinear(linear), 1.0F);
}

std::vector<float> withVolumeScalar(std::vector<float> channelVolumes, std::uint32_t element, float scalar) {
  const float linear = linearFromScalar(scalar);
  if (element > 0) {
    channelVolumes.at(element - 1) = linear;
    return channelVolumes;
  }
  const float loudest = *std::ranges::max_element(channelVolumes);
  for (auto& volume : channelVolumes)
    volume = loudest > 0.0F ? volume / loudest * linear : linear;
  return channelVolumes;
}

std::vector<float> deviceVolumes(const Graph& graph, GlobalID device) {
  const Node& node = graph.nodes.at(device);
  const Route* route = routeOf(graph, node);
  return route != nullptr && !route->channelVolumes.empty() ? route->channelVolumes : node.channelVolumes;
}

void setDeviceVolumes(Graph& graph, GraphMonitor& monitor, GlobalID device,
                      const std::vector<float>& volumes) {
  PodBuilder builder;
  Node& node = graph.nodes.at(device);
  if (Route* route = routeOf(graph, node)) {
    spa_pod_frame frame{};
    spa_pod_builder_push_object(builder.get(), &frame, SPA_TYPE_OBJECT_ParamRoute, SPA_PARAM_Route);
    spa_pod_builder_add(builder.get(), SPA_PARAM_ROUTE_index, SPA_POD_Int(route->index),
                        SPA_PARAM_ROUTE_device, SPA_POD_Int(route->profileDevice), 0);
    spa_pod_builder_prop(builder.get(), SPA_PARAM_ROUTE_props, 0);
    buildProps(builder, volumes);
    spa_pod_builder_add(builder.get(), SPA_PARAM_ROUTE_save, SPA_POD_Bool(true), 0);
    const auto* param = static_cast<const spa_pod*>(spa_pod_builder_pop(builder.get(), &frame));
    pw_device_set_param(monitor.card(node.card.value_or(0)), SPA_PARAM_Route, 0, param);
    route->channelVolumes = volumes; // until the card reports the actual values
  } else {
    pw_node_set_param(monitor.node(device), SPA_PARAM_Props, 0, buildProps(builder, volumes));
    // A sink that has never run applies the value but does not report it; use this value until it does.
    node.channelVolumes = volumes;
  }
}

} // namespace sonvel::pipewire
