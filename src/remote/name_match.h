#pragma once

#include <QString>
#include <vector>

namespace sonvel::remote {

/// Something that a user calls by its key or by its name.
struct Named {
  QString key;
  QString name;
};

/// The position of what `wanted` stands for: the key itself, else the name in upper or lower case, else the
/// beginning of a name. Throws Refusal if nothing is called so, or more than one at the first of these that
/// fits; `kind` is the word for these things in its text.
std::size_t findNamed(const QString& wanted, const std::vector<Named>& things, const QString& kind);

} // namespace sonvel::remote
