#include "remote/name_match.h"

#include "remote/mixer_interface.h"
#include "remote/refusal.h"

#include <QStringList>
#include <array>

namespace sonvel::remote {
namespace {

bool isKey(const Named& thing, const QString& wanted) {
  return thing.key == wanted;
}

bool isName(const Named& thing, const QString& wanted) {
  return thing.name.compare(wanted, Qt::CaseInsensitive) == 0;
}

bool isStartOfName(const Named& thing, const QString& wanted) {
  return !wanted.isEmpty() && thing.name.startsWith(wanted, Qt::CaseInsensitive);
}

} // namespace

std::size_t findNamed(const QString& wanted, const std::vector<Named>& things, const QString& kind) {
  for (const auto fits : std::array{isKey, isName, isStartOfName}) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < things.size(); ++i)
      if (fits(things[i], wanted)) found.push_back(i);
    if (found.size() == 1) return found.front();
    if (found.empty()) continue;
    QStringList candidates;
    for (const auto i : found)
      candidates += QStringLiteral("%1 (%2)").arg(things[i].name, things[i].key);
    throw Refusal(error::kAmbiguous,
                  QStringLiteral("“%1” may be %2").arg(wanted, candidates.join(QStringLiteral(" or "))));
  }
  throw Refusal(error::kNotFound, QStringLiteral("there is no %1 “%2”").arg(kind, wanted));
}

} // namespace sonvel::remote
