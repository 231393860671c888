#include "command/listing.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <algorithm>
#include <cstdio>

namespace sonvel::command {
namespace {

QString deviceName(const QVariantList& devices, const QString& uid) {
  const auto isIt = [&](const QVariant& device) { return device.toMap().value("uid") == uid; };
  const auto found = std::ranges::find_if(devices, isIt);
  return found != devices.end() ? found->toMap().value("name").toString() : uid;
}

/// What the table says besides the volume.
QString remarks(const QVariantMap& application, const QVariantList& devices) {
  QStringList words;
  if (application["muted"].toBool()) words += QStringLiteral("muted");
  if (!application["playing"].toBool()) words += QStringLiteral("paused");
  if (application.contains("route"))
    words += QStringLiteral("to ") + deviceName(devices, application["route"].toString());
  if (application.contains("error"))
    words += QStringLiteral("failed: ") + application["error"].toString();
  else if (application["playing"].toBool() && !application["controlled"].toBool())
    words += QStringLiteral("not under control");
  if (application["partial"].toBool()) words += QStringLiteral("only part of it under control");
  return words.join(QStringLiteral(", "));
}

} // namespace

QByteArray toJson(const QVariantMap& properties) {
  const QJsonObject document{
      {"applications", QJsonArray::fromVariantList(properties["Applications"].toList())},
      {"devices", QJsonArray::fromVariantList(properties["Devices"].toList())},
      {"master", QJsonObject{{"volume", properties["MasterVolume"].toInt()},
                             {"adjustable", properties["MasterAdjustable"].toBool()}}},
      {"permission", properties["Permission"].toString()}};
  return QJsonDocument(document).toJson(QJsonDocument::Compact) + '\n';
}

QByteArray toTable(const QVariantMap& properties) {
  const auto applications = properties["Applications"].toList();
  const auto systemOutput = QStringLiteral("System Output");
  qsizetype width = systemOutput.size();
  for (const auto& application : applications)
    width = std::max(width, application.toMap()["name"].toString().size());

  QString text;
  const auto addLine = [&](const QString& name, const QString& volume, const QString& remarks) {
    const auto line = name.leftJustified(width) + QStringLiteral("  ") + volume.rightJustified(4) +
                      QStringLiteral("  ") + remarks;
    text += line.trimmed() + QLatin1Char('\n');
  };
  const auto percent = [](const QVariant& number) { return number.toString() + QLatin1Char('%'); };
  addLine(systemOutput,
          properties["MasterAdjustable"].toBool() ? percent(properties["MasterVolume"]) : QStringLiteral("-"),
          {});
  for (const auto& application : applications) {
    const auto fields = application.toMap();
    addLine(fields["name"].toString(), percent(fields["volume"]),
            remarks(fields, properties["Devices"].toList()));
  }
  if (properties["Permission"] != QLatin1String("authorized"))
    text += QStringLiteral("Sonvel has no access to the sound of other applications.\n");
  return text.toLocal8Bit();
}

void print(const QByteArray& text) {
  std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
  std::fflush(stdout);
}

} // namespace sonvel::command
