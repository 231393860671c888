#include "panel/private_bus.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace sonvel::testing {

namespace {

constexpr std::string_view kConfiguration = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

} // namespace

PrivateBus::PrivateBus() {
  std::string configuration = "/tmp/sonvel-bus-XXXXXX"; // read once, at the start
  const int file = mkostemp(configuration.data(), O_CLOEXEC);
  std::array<int, 2> ends{};
  if (file < 0 || write(file, kConfiguration.data(), kConfiguration.size()) < 0 ||
      pipe2(ends.data(), O_CLOEXEC) != 0)
    throw std::system_error(errno, std::generic_category(), "making a bus");
  close(file);
  daemon_ = session::ChildProcess({.program = "dbus-daemon",
                                   .arguments = {"dbus-daemon", "--nofork", "--nopidfile",
                                                 "--config-file=" + configuration, "--print-address=1"},
                                   .output = ends[1]});
  close(ends[1]);

  char letter = 0;
  while (read(ends[0], &letter, 1) == 1 && letter != '\n')
    address_ += letter;
  close(ends[0]);
  unlink(configuration.c_str());
  if (letter != '\n') throw std::runtime_error("no bus");
}

PrivateBus::~PrivateBus() {
  for (const QString& name : connections_)
    QDBusConnection::disconnectFromBus(name);
}

session::Environment PrivateBus::environment() const {
  return {{"DBUS_SESSION_BUS_ADDRESS", address_}, {"XDG_RUNTIME_DIR", std::nullopt}};
}

QDBusConnection PrivateBus::connect(const QString& name) {
  connections_.append(name);
  return QDBusConnection::connectToBus(QString::fromStdString(address_), name);
}

} // namespace sonvel::testing
