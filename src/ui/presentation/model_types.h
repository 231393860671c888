#pragma once

// Registers the model's types for QML; the model itself is independent of views.

#include "model/mixer_view_model.h"

#include <qqml.h>

namespace sonvel {

struct MixerViewModelForViews {
  Q_GADGET
  QML_FOREIGN(sonvel::MixerViewModel)
  QML_NAMED_ELEMENT(MixerViewModel)
  QML_UNCREATABLE("The program has one.")
};

struct ChannelListForViews {
  Q_GADGET
  QML_FOREIGN(sonvel::ChannelList)
  QML_ANONYMOUS
};

struct ChannelStateForViews {
  Q_GADGET
  QML_FOREIGN(sonvel::ChannelState)
  QML_NAMED_ELEMENT(ChannelState)
  QML_UNCREATABLE("The model makes the rows.")
};

struct AudioAppForViews {
  Q_GADGET
  QML_FOREIGN(sonvel::AudioApp)
  QML_VALUE_TYPE(audioApp)
};

struct MixerStatusForViews {
  Q_GADGET
  QML_FOREIGN(sonvel::MixerStatus)
  QML_VALUE_TYPE(mixerStatus)
};

struct AudioCaptureStatusForViews {
  Q_GADGET
  QML_FOREIGN(sonvel::AudioCaptureStatus)
  QML_VALUE_TYPE(audioCaptureStatus)
};

} // namespace sonvel
