#include "pipewire/node_params.h"

#include "pipewire/io_cycle.h"

#include <spa/param/audio/format-utils.h>
#include <spa/param/buffers.h>
#include <spa/param/param.h>
#include <spa/param/port-config.h>

#include <climits>

namespace sonvel::pipewire {

namespace {

constexpr int kUsualBytes = 8192 * sizeof(float); // of the longest cycle with the server's default settings

spa_pod* rawFormat(PodBuilder& builder, std::uint32_t id, std::size_t channelCount) {
  spa_audio_info_raw info{};
  info.format = SPA_AUDIO_FORMAT_F32P;
  info.rate = 48000; // has no effect: the graph has one rate
  info.channels = static_cast<std::uint32_t>(channelCount);
  info.position[0] = channelCount == 1 ? SPA_AUDIO_CHANNEL_MONO : SPA_AUDIO_CHANNEL_FL;
  if (channelCount > 1) info.position[1] = SPA_AUDIO_CHANNEL_FR;
  return spa_format_audio_raw_build(builder.get(), id, &info);
}

} // namespace

const char* channelLabel(std::size_t channelCount, std::size_t channel) {
  if (channelCount == 1) return "MONO";
  return channel == 0 ? "FL" : "FR";
}

spa_pod* sinkParam(PodBuilder& builder, std::uint32_t id, std::size_t channelCount) {
  if (id == SPA_PARAM_EnumFormat) return rawFormat(builder, id, channelCount);
  if (id != SPA_PARAM_PortConfig) return nullptr;
  PodBuilder formatBuilder;
  const spa_pod* format = rawFormat(formatBuilder, SPA_PARAM_Format, channelCount);
  return static_cast<spa_pod*>(spa_pod_builder_add_object(
      builder.get(), SPA_TYPE_OBJECT_ParamPortConfig, id, SPA_PARAM_PORT_CONFIG_direction,
      SPA_POD_Id(SPA_DIRECTION_INPUT), SPA_PARAM_PORT_CONFIG_mode, SPA_POD_Id(SPA_PARAM_PORT_CONFIG_MODE_dsp),
      SPA_PARAM_PORT_CONFIG_format, SPA_POD_Pod(format)));
}

spa_pod* monoPortParam(PodBuilder& builder, std::uint32_t id) {
  switch (id) {
  case SPA_PARAM_EnumFormat:
  case SPA_PARAM_Format:
    return static_cast<spa_pod*>(spa_pod_builder_add_object(
        builder.get(), SPA_TYPE_OBJECT_Format, id, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_audio),
        SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_dsp), SPA_FORMAT_AUDIO_format,
        SPA_POD_Id(SPA_AUDIO_FORMAT_DSP_F32)));
  case SPA_PARAM_Buffers:
    return static_cast<spa_pod*>(spa_pod_builder_add_object(
        builder.get(), SPA_TYPE_OBJECT_ParamBuffers, id, SPA_PARAM_BUFFERS_buffers,
        SPA_POD_CHOICE_RANGE_Int(1, 1, int{kMostBuffers}), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1),
        SPA_PARAM_BUFFERS_size,
        SPA_POD_CHOICE_STEP_Int(kUsualBytes, int{sizeof(float)}, INT_MAX, int{sizeof(float)}),
        SPA_PARAM_BUFFERS_stride, SPA_POD_Int(int{sizeof(float)})));
  case SPA_PARAM_IO:
    return static_cast<spa_pod*>(spa_pod_builder_add_object(
        builder.get(), SPA_TYPE_OBJECT_ParamIO, id, SPA_PARAM_IO_id, SPA_POD_Id(SPA_IO_Buffers),
        SPA_PARAM_IO_size, SPA_POD_Int(int{sizeof(spa_io_buffers)})));
  default:
    return nullptr;
  }
}

} // namespace sonvel::pipewire
