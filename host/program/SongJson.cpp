#include "host/program/SongJson.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <optional>

#include "host/program/DisplayText.h"
#include "platform/foundation/NSString.h"

namespace Corvella {

namespace {

QJsonValue textOrNull(const std::optional<std::string>& text) {
  return text ? QJsonValue(QString::fromStdString(*text)) : QJsonValue();
}

QJsonValue secondsOrNull(const std::optional<std::string>& seconds) {
  return seconds ? QJsonValue(NSString::doubleValue(*seconds)) : QJsonValue();
}

std::string escaped(char32_t character) {
  return QString("\\u%1").arg(character, 4, 16, QChar('0')).toStdString();
}

std::string lineOf(const QJsonObject& object) {
  const auto json = QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
  return withoutControls(json, escaped) + "\n";
}

}  // namespace

SongJson songJson(const SongController& song, bool withLyrics,
                  const std::function<PlayerDescription()>& describe) {
  const bool running = song.running();
  QJsonObject object{{"player", running ? textOrNull(describe().identity) : QJsonValue()}};
  if (!running) {
    for (const auto* key :
         {"title", "artist", "album", "state", "position", "length", "rating", "volume"}) {
      object[key] = QJsonValue();
    }
    return {.line = lineOf(object), .withoutPosition = lineOf(object)};
  }
  const auto info = song.songInfo();
  // Only the record that stands for no song has no end: a track whose end is not known ends at 0.
  const bool isSong = info.finish.has_value();
  const auto length = secondsOrNull(info.finish);
  object["title"] = isSong ? textOrNull(info.title) : QJsonValue();
  object["artist"] = isSong ? textOrNull(info.artist) : QJsonValue();
  object["album"] = isSong ? textOrNull(info.album) : QJsonValue();
  object["state"] = textOrNull(song.playerState());
  object["length"] = length.toDouble() > 0 ? length : QJsonValue();
  // By now it is known whether the player answers, and what it keeps.
  const auto player = describe();
  object["rating"] = player.silent || !isSong ? QJsonValue() : info.ratings;
  object["volume"] = player.silent || !player.keepsVolume ? QJsonValue() : info.volume;
  if (withLyrics) object["lyrics"] = QString::fromStdString(song.songLyrics());
  const auto withoutPosition = lineOf(object);
  object["position"] = isSong ? secondsOrNull(song.playerPosition()) : QJsonValue();
  return {.line = lineOf(object), .withoutPosition = withoutPosition};
}

}  // namespace Corvella
