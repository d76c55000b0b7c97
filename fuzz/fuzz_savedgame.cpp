// A saved game of any content: the reader either refuses it with a reason
// or hands over a record the game can put on the board as it stands, and
// that record saved again gives back the file's first 36 bytes.
#include "Checks.h"
#include "files/LevelFile.h"
#include "files/SavedGame.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    SavedGameRecord record;
    record.levelName = QStringLiteral("untouched");
    const QString refusal = ParseSavedGame(bytes, record);
    if (!refusal.isEmpty()) {
        // A refused file leaves the record as it was.
        Require(record.levelName == QLatin1String("untouched"));
        return 0;
    }
    Require(size >= size_t(SavedGameSize));
    Require(record.levelIndex >= 0 && record.levelIndex < LevelCount);
    Require(record.steps >= 0);
    Require(record.levelName.size() == LevelNameLength);
    Require(CheckLayout(record.codes).empty());

    GameState game;
    game.levelIndex = record.levelIndex;
    game.steps = record.steps;
    game.SetUp(record.codes);
    RequireSoundBoard(game, record.codes);
    Require(
        SerializeSavedGame(BuildSavedGame(game, record.levelName)) == bytes.left(SavedGameSize));
    return 0;
}
