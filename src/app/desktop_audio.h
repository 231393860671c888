#pragma once

#include "app/program_audio.h"
#include "desktop/desktop_application_icons.h"
#include "desktop/desktop_applications.h"
#include "desktop/desktop_entries.h"
#include "desktop/desktop_identity.h"
#include "desktop/proc_process_information.h"
#include "desktop/program_bundle.h"
#include "desktop/pulse_audio.h"
#include "desktop/remembered_identity.h"
#include "desktop/settings_preferences.h"
#include "desktop/steady_clock.h"
#include "pipewire/pipewire_hardware.h"
#include "platform/descriptor_limit.h"

namespace sonvel {

/// The implementations for a real desktop: PipeWire for sound, desktop entries and the process table for the
/// applications. Connects to the sound server when constructed, as PipeWireHardware does, and raises this
/// process's limit of open files.
class DesktopAudio final : public ProgramAudio {
 public:
  DesktopAudio();
  DesktopAudio(const DesktopAudio&) = delete;
  DesktopAudio& operator=(const DesktopAudio&) = delete;

  AudioEnvironment environment() override { return {hardware_, processInformation_, bundle_, applications_}; }

  AudioServer& server() override { return hardware_.server(); }

  const BundleInformation& bundle() const override { return bundle_; }

  const RunningApplications& applications() const override { return applications_; }

  const ApplicationIcons& icons() const override { return icons_; }

  Clock& clock() override { return clock_; }

  Preferences& preferences() override { return preferences_; }

  bool isForeignSoundServing() const override { return desktop::isPulseAudioServing(); }

 private:
  // Each tap uses about a dozen file descriptors, shared with the sound server; the usual limit of 1,024
  // would be reached at about eighty applications.
  RaisedDescriptorLimit descriptorLimit_;
  desktop::SteadyClock clock_;
  desktop::ProgramBundle bundle_;
  desktop::ProcFilesystem processes_;
  desktop::InstalledDesktopEntries entries_;
  desktop::DesktopIdentity askedIdentity_;
  desktop::RememberedIdentity identity_;
  desktop::ProcProcessInformation processInformation_;
  pipewire::PipeWireHardware hardware_;
  desktop::DesktopApplications applications_;
  desktop::DesktopApplicationIcons icons_;
  desktop::SettingsPreferences preferences_;
};

} // namespace sonvel
