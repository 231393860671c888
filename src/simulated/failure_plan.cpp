#include "simulated/failure_plan.h"

#include <algorithm>

namespace sonvel::simulated {

namespace {

bool matches(const Failure& failure, Call call, std::span<const AudioObjectID> objects,
             std::uint32_t selector) {
  if (failure.call && *failure.call != call) return false;
  if (failure.selector && *failure.selector != selector) return false;
  return !failure.object || std::find(objects.begin(), objects.end(), *failure.object) != objects.end();
}

} // namespace

std::optional<OSStatus> FailurePlan::take(Call call, std::span<const AudioObjectID> objects,
                                          std::uint32_t selector) {
  std::optional<OSStatus> status;
  for (Failure& failure : failures_) {
    if (!matches(failure, call, objects, selector)) continue;
    if (failure.after > 0) {
      --failure.after;
    } else if (!status && failure.times != 0U) {
      status = failure.status;
      if (failure.times) --*failure.times;
    }
  }
  std::erase_if(failures_, [](const Failure& failure) { return failure.times == 0U; });
  return status;
}

} // namespace sonvel::simulated
