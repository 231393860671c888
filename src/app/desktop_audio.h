#pragma once

#include "audio/audio_environment.h"
#include "desktop/desktop_applications.h"
#include "desktop/desktop_entries.h"
#include "desktop/desktop_identity.h"
#include "desktop/proc_process_information.h"
#include "desktop/program_bundle.h"
#include "desktop/steady_clock.h"
#include "pipewire/pipewire_hardware.h"

namespace sonvel {

/// The implementations for a real desktop, joined: PipeWire for sound, the session's desktop entries and the
/// process table for who plays it. Connects to the sound server when it is made, as PipeWireHardware does,
/// and lets this process open as many files as it may.
class DesktopAudio {
 public:
  DesktopAudio();
  DesktopAudio(const DesktopAudio&) = delete;
  DesktopAudio& operator=(const DesktopAudio&) = delete;

  /// What it refers to lives as long as this object.
  AudioEnvironment environment() { return {hardware_, processInformation_, bundle_, applications_}; }

  AudioServer& server() noexcept { return hardware_.server(); }

  const BundleInformation& bundle() const noexcept { return bundle_; }

  const RunningApplications& applications() const noexcept { return applications_; }

  const desktop::DesktopEntries& entries() const noexcept { return entries_; }

  Clock& clock() noexcept { return clock_; }

 private:
  desktop::SteadyClock clock_;
  desktop::ProgramBundle bundle_;
  desktop::ProcFilesystem processes_;
  desktop::InstalledDesktopEntries entries_;
  desktop::DesktopIdentity identity_;
  desktop::ProcProcessInformation processInformation_;
  pipewire::PipeWireHardware hardware_;
  desktop::DesktopApplications applications_;
};

} // namespace sonvel
