#pragma once

#include "desktop/desktop_entry_table.h"
#include "desktop/process_tree.h"
#include "platform/application_identity.h"

namespace sonvel::desktop {

/// This program; other programs are distinguished from it by their file.
struct OwnProgram {
  std::string bundleIdentifier = {};
  std::optional<std::string> executable = {}; ///< as in ProcessFacts
};

/// Finds a client's identifier; the first answer counts: 1. the sandbox that the sound server vouches for; 2.
/// the installed desktop entry of its process: from its systemd unit, else from its executable, else from the
/// parents that belong to the same program; 3. the application ID that it claims; 4. the program name that it
/// claims.
///
/// This program's identifier is given only to processes that run its file. Another program that claims it is
/// named by other facts, at least by its file.
///
/// A client's process ID may be just a claim too. It is not believed if that process runs no program with the
/// claimed name: then the process has ended, or the ID is from inside a sandbox.
class DesktopIdentity final : public ApplicationIdentity {
 public:
  /// Both must outlive this object.
  DesktopIdentity(const ProcessTree& processes, const DesktopEntries& entries, OwnProgram own = {});

  std::optional<std::string> bundleIdentifier(const AudioClient& client) const override;

 private:
  bool isClaimOfOurs(const std::string& id, const AudioClient& client) const;

  const ProcessTree& processes_;
  const DesktopEntries& entries_;
  const OwnProgram own_;
};

} // namespace sonvel::desktop
