// The readable source of the level pack.
//
//     # A comment runs from '#' to the end of the line; blank lines are ignored.
//     name "Dawn Trail"      # ten characters between the quotes, spaces count
//     2003                   # then the board: five rows of four characters,
//     2003                   # each cell the number of the block covering it
//     4115                   # or '.' when it is free
//     4675
//     8..9
//
// Block numbers decide the shapes as in the game: 0 the big block (2 by 2),
// 1 the wide block, 2 to 5 the tall blocks, 6 to 9 the small ones. Every
// block appears exactly once, so the compiled file puts each number exactly
// where the drawing shows it.
#pragma once

#include "files/LevelFile.h"
#include "game/Solver.h"

#include <QList>
#include <QString>

#include <optional>

struct SourceLevel
{
    LevelRecord record;
    int line = 0; // of its name
};

struct SourceError
{
    int line = 0;
    QString message;
};

struct ParsedSource
{
    QList<SourceLevel> levels;
    std::optional<SourceError> error; // the first fault; the levels before it are kept
    int lineCount = 0;
};

ParsedSource ParseLevelSource(const QString &text);

// What makes a source a pack the game can ship: exactly LevelCount levels, no
// two with one name, none repeating another (blocks of one shape swapped, or
// mirrored left to right), every one solvable.
std::optional<SourceError> CheckPack(const ParsedSource &source, const StateSpace &space);

// The name of a `name "..."` line, if the line is one (comments allowed after
// it). Used for lists of names too.
std::optional<QString> NameOfLine(const QString &line);

// The five drawing rows of a layout, which must pass CheckLayout.
QStringList DrawLayout(const Layout &codes);
