#pragma once

#include <QString>
#include <QVariantList>

namespace sonvel {

class MixerViewModel;

namespace remote {

/// Runs a method of the interface that changes the mixer, and returns its results. The model must be up to
/// date. Throws Refusal. Main thread; does not wait for the sound to change.
QVariantList carryOut(MixerViewModel& model, const QString& method, const QString& signature,
                      const QVariantList& arguments);

} // namespace remote
} // namespace sonvel
