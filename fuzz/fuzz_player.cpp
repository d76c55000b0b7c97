// The player's record of any content: every best read is a count, the file
// the game writes for it reads back the same, and whatever junk comes
// before a well-formed record cannot change what that record says.
#include "Checks.h"
#include "files/PlayerFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const PlayerProgress progress = ParsePlayerFile(bytes);
    for (const int32_t best : progress.best)
        Require(best == PlayerProgress::NotWon || best >= 0);

    const QByteArray written = SerializePlayerFile(progress);
    for (const char c : written)
        Require(c > 0); // plain ASCII
    Require(written.endsWith("\r\n") && !written.contains("\n\n"));
    Require(ParsePlayerFile(written) == progress);

    // The file written after this content, as a second copy of the game
    // might leave it behind a damaged start.
    Require(ParsePlayerFile(bytes + '\n' + written) == progress);

    PlayerProgress merged = progress;
    MergeBest(merged, ParsePlayerFile(bytes.left(bytes.size() / 2)));
    for (size_t i = 0; i < merged.best.size(); ++i)
        Require(progress.best[i] == PlayerProgress::NotWon || merged.best[i] <= progress.best[i]);
    return 0;
}
