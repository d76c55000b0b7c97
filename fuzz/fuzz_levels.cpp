// A level file of any content: reading it must not crash, and every level
// the game would start must put a sound board up. Levels the board's checks
// refuse never reach it.
#include "Checks.h"
#include "files/LevelFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    LevelTable levels = ClearedLevels();
    const bool read = ParseLevels(bytes, levels);
    Require(read == (size >= size_t(LevelFileSize)));
    if (!read)
        return 0;
    // Every byte of every name survives: the table written back is the
    // file's first 2100 bytes, whatever lies beyond.
    Require(SerializeLevels(levels) == bytes.left(LevelFileSize));
    for (const LevelRecord &level : levels) {
        Require(level.levelName.size() == LevelNameLength);
        if (!CheckLayout(level.codes).empty())
            continue;
        GameState game;
        game.SetUp(level.codes);
        RequireSoundBoard(game, level.codes);
    }
    return 0;
}
