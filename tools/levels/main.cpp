// quorvel-levels: the level pack's workbench, shipped beside the game.
//
//     quorvel-levels check FILE              every level's name and shortest solution
//     quorvel-levels solve FILE LEVEL        a shortest solution of level 1 to 70, step by step
//     quorvel-levels solve GAME.sav          the same from where a saved game stands
//     quorvel-levels compile SOURCE OUT      the readable source into the game's level file
//     quorvel-levels choose [NAMES]          a new pack from the explored positions
//
// Exit status 0 when all went well, 1 when a file or a level is bad, 2 when
// the command line is. Every refusal is one line on stderr, so a build step
// that runs `compile` fails loudly and readably.
#include "Chooser.h"
#include "LevelSource.h"

#include "files/LevelFile.h"
#include "files/RawFile.h"
#include "files/SavedGame.h"
#include "game/Solver.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

namespace {

enum Exit { Done = 0, Bad = 1, Usage = 2 };

const char *const UsageText = "usage: quorvel-levels check FILE | solve FILE LEVEL | solve GAME.sav"
                              " | compile SOURCE OUT | choose [NAMES]";

void Print(const QString &text)
{
    std::fputs(qPrintable(text + QLatin1Char('\n')), stdout);
}

int Fail(int status, const QString &message)
{
    std::fflush(stdout);
    std::fputs(
        qPrintable(QStringLiteral("quorvel-levels: ") + message + QLatin1Char('\n')), stderr);
    return status;
}

// Names come from files anyone may have edited: control characters would
// garble the terminal.
QString Printable(const QString &name)
{
    QString shown = name;
    for (QChar &character : shown)
        if (character.unicode() < 32 || character.unicode() == 127)
            character = QLatin1Char('?');
    return shown;
}

// The whole file, exactly LevelFileSize bytes: the game would ignore a longer
// tail, but a pack that carries one was not written by us.
std::optional<QString> LoadLevelFile(const QString &path, LevelTable &levels)
{
    QByteArray bytes;
    if (const FileError error = ReadFileStart(path, LevelFileSize + 1, bytes))
        return QStringLiteral("%1: %2").arg(path, error.description);
    if (bytes.size() != LevelFileSize)
        return QStringLiteral("%1: %2 bytes; a level file has exactly %3")
            .arg(path, QString::number(bytes.size()), QString::number(LevelFileSize));
    ParseLevels(bytes, levels);
    return std::nullopt;
}

// Where a block stands, counted from 1 as a player counts.
QString Place(Shape shape, int16_t code)
{
    const int row = code / 10 + 1, col = code % 10 + 1;
    const QString rows = ShapeHeight(shape) == 1
        ? QStringLiteral("row %1").arg(row)
        : QStringLiteral("rows %1-%2").arg(row).arg(row + 1);
    const QString cols = ShapeWidth(shape) == 1
        ? QStringLiteral("column %1").arg(col)
        : QStringLiteral("columns %1-%2").arg(col).arg(col + 1);
    return rows + QStringLiteral(", ") + cols;
}

QString BlockName(Shape shape)
{
    switch (shape) {
    case Shape::Big:
        return QStringLiteral("big");
    case Shape::Horizontal:
        return QStringLiteral("wide");
    case Shape::Vertical:
        return QStringLiteral("tall");
    case Shape::Small:
        return QStringLiteral("small");
    }
    return {};
}

QString DescribeMove(const Move &move)
{
    const Shape shape = ShapeOf(move.piece);
    const int rows = move.to.row - move.from.row, cols = move.to.col - move.from.col;
    const int cells = std::abs(rows + cols); // one of them is 0
    const QString direction = rows < 0 ? QStringLiteral("up")
        : rows > 0                     ? QStringLiteral("down")
        : cols < 0                     ? QStringLiteral("left")
                                       : QStringLiteral("right");
    return QStringLiteral("Slide the %1 block at %2 %3 %4 %5, to %6.")
        .arg(BlockName(shape), Place(shape, CodeOf(move.from)), direction)
        .arg(cells)
        .arg(cells == 1 ? QStringLiteral("cell") : QStringLiteral("cells"),
            Place(shape, CodeOf(move.to)));
}

QString StepCount(int steps)
{
    return steps == 1 ? QStringLiteral("1 step") : QStringLiteral("%1 steps").arg(steps);
}

// Prints the steps after the heading; false when there is no solution.
bool PrintSolution(const Layout &codes, const QString &heading)
{
    const std::optional<Solution> solution = Solve(codes);
    if (!solution)
        return false;
    if (solution->moves.empty()) {
        Print(heading + QStringLiteral(": solved already, 0 steps."));
        return true;
    }
    Print(heading + QStringLiteral(": ") + StepCount(solution->Steps()) + QLatin1Char('.'));
    const int width = static_cast<int>(QString::number(solution->Steps()).size());
    for (int i = 0; i < solution->Steps(); ++i)
        Print(QStringLiteral("%1. %2").arg(i + 1, width).arg(DescribeMove(solution->moves[i])));
    Print(QStringLiteral("Solved in ") + StepCount(solution->Steps()) + QLatin1Char('.'));
    return true;
}

int Check(const QString &path)
{
    LevelTable levels;
    if (const std::optional<QString> error = LoadLevelFile(path, levels))
        return Fail(Bad, *error);
    const StateSpace space;
    int bad = 0;
    for (int i = 0; i < LevelCount; ++i) {
        const LevelRecord &level = levels[i];
        QString verdict;
        const std::string problem = CheckLayout(level.codes);
        if (!problem.empty())
            verdict = QStringLiteral("bad layout: ") + QString::fromStdString(problem);
        else if (const std::optional<int> steps = space.StepsToSolve(level.codes))
            verdict = StepCount(*steps);
        else
            verdict = QStringLiteral("cannot be solved");
        bad += !problem.empty() || verdict.startsWith(QLatin1String("cannot"));
        Print(QStringLiteral("%1  \"%2\"  %3")
                  .arg(i + 1, 2)
                  .arg(Printable(level.levelName), verdict));
    }
    if (bad > 0)
        return Fail(Bad,
            QStringLiteral("%1: %2 of %3 levels are bad")
                .arg(path, QString::number(bad), QString::number(LevelCount)));
    return Done;
}

int SolveLevel(const QString &path, const QString &levelText)
{
    static const QRegularExpression digits(QStringLiteral("^[0-9]{1,9}$"));
    const int number = digits.match(levelText).hasMatch() ? levelText.toInt() : 0;
    if (number < 1 || number > LevelCount)
        return Fail(Usage,
            QStringLiteral("the level is a number from 1 to %1, not \"%2\"")
                .arg(int(LevelCount))
                .arg(levelText));
    LevelTable levels;
    if (const std::optional<QString> error = LoadLevelFile(path, levels))
        return Fail(Bad, *error);
    const LevelRecord &level = levels[number - 1];
    const QString title = QStringLiteral("Level %1, \"%2\"")
                              .arg(QString::number(number), Printable(level.levelName));
    const std::string problem = CheckLayout(level.codes);
    if (!problem.empty())
        return Fail(Bad,
            QStringLiteral("%1 has a bad layout: %2").arg(title, QString::fromStdString(problem)));
    if (!PrintSolution(level.codes, title))
        return Fail(Bad, title + QStringLiteral(" cannot be solved"));
    return Done;
}

int SolveSavedGame(const QString &path)
{
    SavedGameRecord game;
    const QString error = ReadSavedGame(path, game);
    if (!error.isEmpty())
        return Fail(Bad, QStringLiteral("%1: %2").arg(path, error));
    const QString title = QStringLiteral("Saved game at level %1, \"%2\", after %3")
                              .arg(QString::number(game.levelIndex + 1), Printable(game.levelName),
                                  StepCount(game.steps));
    if (!PrintSolution(game.codes, title))
        return Fail(Bad, title + QStringLiteral(": the blocks stand where no step can solve them"));
    return Done;
}

int Compile(const QString &sourcePath, const QString &outPath)
{
    QFile file(sourcePath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return Fail(Bad, QStringLiteral("%1: %2").arg(sourcePath, file.errorString()));
    QString text = QString::fromUtf8(file.readAll());
    if (text.startsWith(QChar(0xFEFF))) // some editors mark UTF-8 this way
        text.remove(0, 1);
    const ParsedSource source = ParseLevelSource(text);
    if (const std::optional<SourceError> error = CheckPack(source, StateSpace()))
        return Fail(Bad,
            QStringLiteral("%1:%2: %3")
                .arg(sourcePath, QString::number(error->line), error->message));
    LevelTable levels = ClearedLevels();
    for (int i = 0; i < LevelCount; ++i)
        levels[i] = source.levels[i].record;
    if (const FileError error = ReplaceFile(outPath, SerializeLevels(levels)))
        return Fail(Bad, QStringLiteral("%1: %2").arg(outPath, error.description));
    return Done;
}

int Choose(const QString &namesPath)
{
    QStringList names;
    if (!namesPath.isEmpty()) {
        QFile file(namesPath);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            return Fail(Bad, QStringLiteral("%1: %2").arg(namesPath, file.errorString()));
        for (const QString &line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n')))
            if (const std::optional<QString> name = NameOfLine(line))
                names.append(*name);
    }
    const StateSpace space;
    // A first level of about ten steps is one a newcomer finishes while
    // learning how blocks slide.
    const std::vector<ChosenLevel> chosen = ChooseLevels(space, LevelCount, 10);
    if (chosen.empty())
        return Fail(Bad,
            QStringLiteral("too few good starting positions for %1 levels").arg(int(LevelCount)));

    Print(QStringLiteral(
        "# Quorvel's levels, easiest first; `quorvel-levels compile` turns this file into the\n"
        "# game's level file at every build.\n"
        "#\n"
        "# Each level is a line  name \"...\"  with exactly ten characters between the quotes\n"
        "# (spaces count), then five rows of four characters: the number of the block that\n"
        "# covers the cell, or '.' for a free cell. Block 0 is the big block, 1 the wide one,\n"
        "# 2 to 5 the tall ones, 6 to 9 the small ones. '#' starts a comment.\n"
        "#\n"
        "# The layouts were picked by `quorvel-levels choose tools/levels/names.txt`, whose\n"
        "# choice is explained in tools/levels/Chooser.cpp. The comment above each level\n"
        "# gives the number of steps of its shortest solution."));
    for (size_t i = 0; i < chosen.size(); ++i) {
        const QString name = i < size_t(names.size()) ? names[qsizetype(i)]
                                                      : QStringLiteral("Level %1")
                                                            .arg(i + 1, 2, 10, QLatin1Char('0'))
                                                            .leftJustified(LevelNameLength);
        Print(QStringLiteral("\n# %1: %2 steps").arg(i + 1).arg(chosen[i].steps));
        Print(QStringLiteral("name \"%1\"").arg(name));
        for (const QString &row : DrawLayout(chosen[i].layout))
            Print(row);
    }
    return Done;
}

} // namespace

int main(int argc, char **argv)
{
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args.append(QString::fromLocal8Bit(argv[i]));
    const QString command = args.value(0);
    const qsizetype count = args.size() - 1;

    if (command == QLatin1String("check") && count == 1)
        return Check(args[1]);
    if (command == QLatin1String("solve") && count == 2)
        return SolveLevel(args[1], args[2]);
    if (command == QLatin1String("solve") && count == 1)
        return SolveSavedGame(args[1]);
    if (command == QLatin1String("compile") && count == 2)
        return Compile(args[1], args[2]);
    if (command == QLatin1String("choose") && count <= 1)
        return Choose(args.value(1));

    const QStringList commands = {QStringLiteral("check"), QStringLiteral("solve"),
        QStringLiteral("compile"), QStringLiteral("choose")};
    if (command.isEmpty())
        return Fail(Usage, QLatin1String(UsageText));
    if (!commands.contains(command))
        return Fail(Usage,
            QStringLiteral("unknown command \"%1\"; %2").arg(command, QLatin1String(UsageText)));
    return Fail(Usage,
        QStringLiteral("wrong number of arguments for %1; %2")
            .arg(command, QLatin1String(UsageText)));
}
