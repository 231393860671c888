#include "desktop/program_bundle.h"

#include "desktop/regular_file.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <system_error>

namespace sonvel::desktop {
namespace {

constexpr std::size_t kMaximumInformationBytes = 64UL * 1024;

QJsonObject readObject(const std::filesystem::path& file) {
  const auto text = readRegularFile(file, kMaximumInformationBytes);
  return text ? QJsonDocument::fromJson(QByteArray::fromStdString(*text)).object() : QJsonObject();
}

std::filesystem::path ownProgram() {
  std::error_code failed;
  return std::filesystem::read_symlink("/proc/self/exe", failed);
}

} // namespace

ProgramBundle::ProgramBundle()
    : ProgramBundle(informationFileOf(ownProgram())) {}

ProgramBundle::ProgramBundle(const std::filesystem::path& informationFile) {
  const QJsonObject object = readObject(informationFile);
  for (auto entry = object.begin(); entry != object.end(); ++entry) {
    if (entry.value().isString())
      information_.emplace(entry.key().toStdString(), entry.value().toString().toStdString());
    else if (entry.value().isBool())
      information_.emplace(entry.key().toStdString(), entry.value().toBool());
  }
}

std::optional<std::string> ProgramBundle::bundleIdentifier() const {
  return "com.quellmarsh.sonvel";
}

std::optional<BundleInformation::InfoObject> ProgramBundle::objectForInfoKey(std::string_view key) const {
  const auto found = information_.find(key);
  if (found == information_.end()) return std::nullopt;
  return found->second;
}

std::filesystem::path ProgramBundle::informationFileOf(const std::filesystem::path& program) {
  return program.parent_path().parent_path() / "share" / "sonvel" / "information.json";
}

} // namespace sonvel::desktop
