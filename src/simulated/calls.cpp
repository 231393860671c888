#include "simulated/calls.h"

#include <ostream>

namespace sonvel::simulated {

const char* name(Call call) noexcept {
  switch (call) {
  case Call::getPropertyDataSize:
    return "getPropertyDataSize";
  case Call::getPropertyData:
    return "getPropertyData";
  case Call::getPropertyText:
    return "getPropertyText";
  case Call::hasProperty:
    return "hasProperty";
  case Call::isPropertySettable:
    return "isPropertySettable";
  case Call::setPropertyData:
    return "setPropertyData";
  case Call::beginConfiguration:
    return "beginConfiguration";
  case Call::commitConfiguration:
    return "commitConfiguration";
  case Call::createProcessTap:
    return "createProcessTap";
  case Call::destroyProcessTap:
    return "destroyProcessTap";
  case Call::createAggregateDevice:
    return "createAggregateDevice";
  case Call::destroyAggregateDevice:
    return "destroyAggregateDevice";
  case Call::createIOProcID:
    return "createIOProcID";
  case Call::destroyIOProcID:
    return "destroyIOProcID";
  case Call::deviceStart:
    return "deviceStart";
  case Call::deviceStop:
    return "deviceStop";
  }
  return "unknown call";
}

std::ostream& operator<<(std::ostream& out, Call call) {
  return out << name(call);
}

} // namespace sonvel::simulated
