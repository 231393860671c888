#include "updater/relaunch.h"

#include "updater/program_file.h"

#include <QProcess>
#include <QProcessEnvironment>

namespace sonvel::updater {
namespace {

bool startProgram(const std::filesystem::path& program) {
  QProcess process;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  // Set by the image that runs now, for itself.
  for (const char* name : {"APPIMAGE", "APPDIR", "ARGV0", "OWD"})
    environment.remove(QString::fromLatin1(name));
  process.setProcessEnvironment(environment);
  process.setProgram(QString::fromStdString(program.string()));
  return process.startDetached();
}

} // namespace

bool Relaunch::perform() const {
  if (!program_) return false;
  if (startProgram(*program_)) return true;
  return restorePreviousProgram(*program_) && startProgram(*program_);
}

} // namespace sonvel::updater
