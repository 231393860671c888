#pragma once

#include <QObject>
#include <QStringList>
#include <utility>

namespace sonvel::testing {

/// What a panel's content tells.
class Journal : public QObject {
  Q_OBJECT

 public:
  Q_INVOKABLE void note(const QString& event) { events_ << event; }

  [[nodiscard]] QStringList take() { return std::exchange(events_, {}); }

 private:
  QStringList events_;
};

} // namespace sonvel::testing
