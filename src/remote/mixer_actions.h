#pragma once

#include <QString>
#include <QVariantList>

namespace sonvel {

class MixerViewModel;

namespace remote {

/// Carries out a method of the interface that changes the mixer, and returns what it gives. The model is up
/// to date. Throws Refusal. Main thread; does not wait for the sound to follow.
QVariantList carryOut(MixerViewModel& model, const QString& method, const QString& signature,
                      const QVariantList& arguments);

} // namespace remote
} // namespace sonvel
