#pragma once

#include <QLatin1String>
#include <QString>
#include <stdexcept>

namespace sonvel::remote {

/// Answers a call with an error: a D-Bus name and a sentence for the user.
class Refusal final : public std::runtime_error {
 public:
  Refusal(QLatin1String name, const QString& text)
      : std::runtime_error(text.toStdString())
      , name_(name) {}

  QLatin1String name() const noexcept { return name_; }

  QString text() const { return QString::fromUtf8(what()); }

 private:
  QLatin1String name_;
};

} // namespace sonvel::remote
