#pragma once

#include "desktop/desktop_entry_table.h"
#include "desktop/process_tree.h"
#include "platform/application_identity.h"

namespace sonvel::desktop {

/// The program that asks, which is told apart from others by its file.
struct OwnProgram {
  std::string bundleIdentifier = {};
  std::optional<std::string> executable = {}; ///< as ProcessFacts has it
};

/// Names a client after the first that answers:
/// 1. the sandbox that the sound server vouches for;
/// 2. the installed desktop entry that owns its process: by the systemd unit that it was started in, else by
///    the program that it runs, else by that of the parents that belong to the same program;
/// 3. the application ID that it claims;
/// 4. the name of its program, as it claims.
///
/// The identifier of this program is given only to processes that run its file: a program that claims it is
/// named by what else is known of it, at least by its file.
///
/// A client's process ID may be no more than a claim, too. It is not believed if the process runs no program
/// of the name that the client claims: then it has ended, or the number is one of a sandbox.
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
