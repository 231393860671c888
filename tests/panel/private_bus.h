#pragma once

#include "session/child_process.h"

#include <QDBusConnection>
#include <string>

namespace sonvel::testing {

/// A session bus of our own that starts no services. It ends with this object, and with this process.
class PrivateBus {
 public:
  /// Returns when it serves; throws std::runtime_error when it doesn't.
  PrivateBus();
  ~PrivateBus();
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  [[nodiscard]] const std::string& address() const noexcept { return address_; }

  /// What a program needs to find this bus, as part of its environment.
  [[nodiscard]] session::Environment environment() const;

  /// A connection of this process. All connections of one name are one.
  [[nodiscard]] QDBusConnection connect(const QString& name);

 private:
  std::string address_;
  session::ChildProcess daemon_;
  QStringList connections_;
};

} // namespace sonvel::testing
