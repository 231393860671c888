#pragma once

#include "simulated/calls.h"

#include <span>

#include <vector>

namespace sonvel::simulated {

/// The failures that are ordered, and which of them a call meets. Not synchronised.
class FailurePlan {
 public:
  void add(Failure failure) { failures_.push_back(failure); }

  void clear() { failures_.clear(); }

  /// The status with which a call is to fail, if it is; counts the call. `objects` are those it concerns.
  std::optional<OSStatus> take(Call call, std::span<const AudioObjectID> objects, std::uint32_t selector);

 private:
  std::vector<Failure> failures_;
};

} // namespace sonvel::simulated
