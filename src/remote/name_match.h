#pragma once

#include <QString>
#include <vector>

namespace sonvel::remote {

/// Something that can be found by its key or its name.
struct Named {
  QString key;
  QString name;
};

/// The index of the thing that `wanted` names: an exact key first, then a name ignoring case, then the start
/// of a name. Throws Refusal if none matches, or if several match at the first of these steps that has a
/// match; `kind` is the word for these things in the error text.
std::size_t findNamed(const QString& wanted, const std::vector<Named>& things, const QString& kind);

} // namespace sonvel::remote
