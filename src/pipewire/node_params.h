#pragma once

#include <spa/pod/builder.h>
#include <spa/pod/pod.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace sonvel::pipewire {

/// Builds one parameter, which is valid as long as the builder.
class PodBuilder {
 public:
  PodBuilder() {
    spa_pod_builder_init(&builder_, memory_.data(), static_cast<std::uint32_t>(memory_.size()));
  }

  PodBuilder(const PodBuilder&) = delete;
  PodBuilder& operator=(const PodBuilder&) = delete;

  spa_pod_builder* get() noexcept { return &builder_; }

 private:
  std::array<std::uint8_t, 1024> memory_{}; ///< more than the largest parameter
  spa_pod_builder builder_{};
};

/// The label of a channel of a node with one or two.
const char* channelLabel(std::size_t channelCount, std::size_t channel);

/// A parameter of a node that plays what streams send it, as the session manager reads it before it gives the
/// node its ports: SPA_PARAM_EnumFormat or SPA_PARAM_PortConfig. Null for others.
spa_pod* sinkParam(PodBuilder& builder, std::uint32_t id, std::size_t channelCount);

/// A parameter of a port that carries one channel of floating-point samples: SPA_PARAM_EnumFormat, _Format,
/// _Buffers or _IO. Null for others.
spa_pod* monoPortParam(PodBuilder& builder, std::uint32_t id);

} // namespace sonvel::pipewire
