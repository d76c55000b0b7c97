// quorvel-levels as a player or the build runs it: the answers it prints, and
// one line on stderr with a non-zero exit for everything it must refuse.
#include "SolverCheck.h"

#include "files/LevelFile.h"
#include "files/SavedGame.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Run
{
    int exitCode = -1;
    QStringList out; // lines
    QString err;
};

Run RunTool(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(QUORVEL_LEVELS_TOOL), arguments);
    Run run;
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit)
        return run; // a crash or a hang fails every check on the exit code
    run.exitCode = process.exitCode();
    run.out = QString::fromUtf8(process.readAllStandardOutput())
                  .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

bool IsOneLine(const QString &text)
{
    return text.startsWith(QLatin1String("quorvel-levels: ")) && text.count(QLatin1Char('\n')) == 1
        && text.endsWith(QLatin1Char('\n'));
}

QByteArray ReadAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool WriteAll(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

const char *const Blocked = "2311/234./654./7500/8900";
const QString Gone = QStringLiteral("\x01 gone");
const char *const OneSlide = "2115/2675/3004/3004/8..9";

} // namespace

class tst_LevelTool : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void refusals_data();
    void refusals();
    void checkListsEveryLevel();
    void checkReportsBadLevelsAndFails();
    void solveTellsEachStepInPlayersWords();
    void solveStartsFromASavedGame_data();
    void solveStartsFromASavedGame();
    void compileRefusesBadSources_data();
    void compileRefusesBadSources();
    void compileReproducesTheShippedFile();

private:
    QString file(const char *name) const { return dir.filePath(QLatin1String(name)); }
    // The shipped source with some lines, given by 1-based number, replaced
    // or, when the replacement is Gone, removed.
    QString sourceWith(const QList<std::pair<int, QString>> &changes) const;
    int nameLine(int level) const { return nameLines.at(level - 1); }

    QTemporaryDir dir;
    QByteArray pack;
    QStringList sourceLines;
    QList<int> nameLines;
};

void tst_LevelTool::initTestCase()
{
    QVERIFY(dir.isValid());
    pack = ReadAll(QStringLiteral(QUORVEL_LEVEL_FILE));
    QCOMPARE(pack.size(), qsizetype(LevelFileSize));
    QVERIFY(WriteAll(file("good.zhn"), pack));
    QVERIFY(WriteAll(file("short.zhn"), pack.left(LevelFileSize - 1)));
    QVERIFY(WriteAll(file("long.zhn"), pack + '\0'));

    // Level 5 with two blocks on one cell, level 9 that no step solves.
    LevelTable levels;
    QVERIFY(ParseLevels(pack, levels));
    levels[4].codes[9] = levels[4].codes[8];
    levels[8].codes = LayoutOf(Blocked);
    QVERIFY(WriteAll(file("broken.zhn"), SerializeLevels(levels)));

    SavedGameRecord game;
    game.levelIndex = 2;
    game.levelName = QStringLiteral("Light Rain");
    game.steps = 7;
    game.codes = LayoutOf(Blocked);
    QVERIFY(WriteAll(file("stuck.sav"), SerializeSavedGame(game)));
    game.codes[9] = game.codes[8];
    QVERIFY(WriteAll(file("damaged.sav"), SerializeSavedGame(game)));
    QVERIFY(WriteAll(file("short.sav"), SerializeSavedGame(game).left(SavedGameSize - 1)));

    sourceLines
        = QString::fromUtf8(ReadAll(QStringLiteral(QUORVEL_LEVEL_SOURCE))).split(QLatin1Char('\n'));
    for (int i = 0; i < sourceLines.size(); ++i)
        if (sourceLines[i].startsWith(QLatin1String("name \"")))
            nameLines.append(i + 1);
    QCOMPARE(nameLines.size(), qsizetype(LevelCount));
}

QString tst_LevelTool::sourceWith(const QList<std::pair<int, QString>> &changes) const
{
    QStringList lines = sourceLines;
    for (const auto &[line, text] : changes)
        lines[line - 1] = text;
    lines.removeAll(Gone);
    return lines.join(QLatin1Char('\n'));
}

void tst_LevelTool::refusals_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    const QString good = file("good.zhn");
    const QString missing = file("missing.zhn");
    QTest::newRow("check: missing file") << QStringList {"check", missing} << 1;
    QTest::newRow("check: file too short") << QStringList {"check", file("short.zhn")} << 1;
    QTest::newRow("check: file too long") << QStringList {"check", file("long.zhn")} << 1;
    QTest::newRow("solve: missing file") << QStringList {"solve", missing, "3"} << 1;
    QTest::newRow("solve: file too short") << QStringList {"solve", file("short.zhn"), "3"} << 1;
    QTest::newRow("solve: level 0") << QStringList {"solve", good, "0"} << 2;
    QTest::newRow("solve: level 71") << QStringList {"solve", good, "71"} << 2;
    QTest::newRow("solve: level in words") << QStringList {"solve", good, "three"} << 2;
    QTest::newRow("solve: bad layout") << QStringList {"solve", file("broken.zhn"), "5"} << 1;
    QTest::newRow("solve: unsolvable level") << QStringList {"solve", file("broken.zhn"), "9"} << 1;
    QTest::newRow("solve: short saved game") << QStringList {"solve", file("short.sav")} << 1;
    QTest::newRow("solve: damaged saved game") << QStringList {"solve", file("damaged.sav")} << 1;
    QTest::newRow("solve: stuck saved game") << QStringList {"solve", file("stuck.sav")} << 1;
    QTest::newRow("no command") << QStringList {} << 2;
    QTest::newRow("unknown command") << QStringList {"play", good} << 2;
    QTest::newRow("check: no file") << QStringList {"check"} << 2;
    QTest::newRow("solve: too many") << QStringList {"solve", good, "1", "2"} << 2;
}

void tst_LevelTool::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    const Run run = RunTool(arguments);
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2(IsOneLine(run.err), qPrintable(run.err));
    QVERIFY(run.out.isEmpty());
}

void tst_LevelTool::checkListsEveryLevel()
{
    const Run run = RunTool({"check", file("good.zhn")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.err, QString());
    QCOMPARE(run.out.size(), qsizetype(LevelCount));
    LevelTable levels;
    QVERIFY(ParseLevels(pack, levels));
    const StateSpace space;
    for (int i = 0; i < LevelCount; ++i) {
        const QString expected = QStringLiteral("%1  \"%2\"  %3 steps")
                                     .arg(i + 1, 2)
                                     .arg(levels[i].levelName)
                                     .arg(*space.StepsToSolve(levels[i].codes));
        QCOMPARE(run.out[i], expected);
    }
}

void tst_LevelTool::checkReportsBadLevelsAndFails()
{
    const Run run = RunTool({"check", file("broken.zhn")});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(IsOneLine(run.err), qPrintable(run.err));
    QVERIFY(run.err.contains(QLatin1String("2 of 70")));
    QCOMPARE(run.out.size(), qsizetype(LevelCount));
    for (int i = 0; i < LevelCount; ++i) {
        const QString verdict = i == 4 ? "bad layout: blocks 8 and 9 overlap"
            : i == 8                   ? "cannot be solved"
                                       : " steps";
        QVERIFY2(run.out[i].contains(verdict), qPrintable(run.out[i]));
    }
}

void tst_LevelTool::solveTellsEachStepInPlayersWords()
{
    LevelTable levels;
    QVERIFY(ParseLevels(pack, levels));
    const int steps = *StateSpace().StepsToSolve(levels[0].codes);
    const Run run = RunTool({"solve", file("good.zhn"), "1"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out.size(), qsizetype(steps + 2));
    QCOMPARE(run.out.first(),
        QStringLiteral("Level 1, \"%1\": %2 steps.").arg(levels[0].levelName).arg(steps));
    static const QRegularExpression stepLine(QStringLiteral(
        "^ *(\\d+)\\. Slide the (big|wide|tall|small) block at rows? [1-5](-[1-5])?, "
        "columns? [1-4](-[1-4])? (up|down|left|right) (1 cell|2 cells|3 cells), to rows? .*\\.$"));
    for (int i = 1; i <= steps; ++i) {
        const QRegularExpressionMatch match = stepLine.match(run.out[i]);
        QVERIFY2(match.hasMatch(), qPrintable(run.out[i]));
        QCOMPARE(match.captured(1).toInt(), i);
    }
    QCOMPARE(run.out.last(), QStringLiteral("Solved in %1 steps.").arg(steps));
}

void tst_LevelTool::solveStartsFromASavedGame_data()
{
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("one step to go")
        << OneSlide
        << QStringList {"Saved game at level 3, \"Light Rain\", after 7 steps: 1 step.",
               "1. Slide the big block at rows 3-4, columns 2-3 down 1 cell, to rows 4-5, "
               "columns 2-3.",
               "Solved in 1 step."};
    QTest::newRow("solved already")
        << "2345/2345/6117/8009/.00."
        << QStringList {
               "Saved game at level 3, \"Light Rain\", after 7 steps: solved already, 0 steps."};
}

void tst_LevelTool::solveStartsFromASavedGame()
{
    QFETCH(QString, picture);
    QFETCH(QStringList, expected);
    SavedGameRecord game;
    game.levelIndex = 2;
    game.levelName = QStringLiteral("Light Rain");
    game.steps = 7;
    game.codes = LayoutOf(qPrintable(picture));
    QVERIFY(WriteAll(file("game.sav"), SerializeSavedGame(game)));
    const Run run = RunTool({"solve", file("game.sav")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, expected);
}

void tst_LevelTool::compileRefusesBadSources_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<int>("line"); // 0: any
    QTest::addColumn<QString>("says");

    const int first = nameLine(1);
    auto drawing = [&](int level, const char *picture) {
        QList<std::pair<int, QString>> changes;
        const QStringList rows = QString::fromLatin1(picture).split(QLatin1Char('/'));
        for (int row = 0; row < BoardRows; ++row)
            changes.append({nameLine(level) + 1 + row, rows[row]});
        return changes;
    };

    QTest::newRow("stray character")
        << sourceWith({{first + 2, "0x11"}}) << first + 2 << "drawing row";
    QTest::newRow("name of nine characters")
        << sourceWith({{first, "name \"Nine Char\""}}) << first << "exactly 10";
    QTest::newRow("block of the wrong shape")
        << sourceWith(drawing(1, "2211/3645/3745/..00/8900")) << first + 1 << "cells marked 2";
    QTest::newRow("unsolvable level")
        << sourceWith(drawing(1, Blocked)) << first << "cannot be solved";
    QTest::newRow("name used twice")
        << sourceWith({{nameLine(2), sourceLines[first - 1]}}) << nameLine(2) << "name";

    QList<std::pair<int, QString>> mirror;
    for (int row = 1; row <= BoardRows; ++row) {
        QString mirrored = sourceLines[first - 1 + row];
        std::reverse(mirrored.begin(), mirrored.end());
        mirror.append({nameLine(LevelCount) + row, mirrored});
    }
    QTest::newRow("a level mirrored")
        << sourceWith(mirror) << nameLine(LevelCount) << "repeats level 1";

    QList<std::pair<int, QString>> lastGone;
    for (int row = 0; row <= BoardRows; ++row)
        lastGone.append({nameLine(LevelCount) + row, Gone});
    QTest::newRow("a level too few") << sourceWith(lastGone) << 0 << "69 levels";
    QList<std::pair<int, QString>> cutShort = lastGone.mid(3);
    QTest::newRow("drawing cut short") << sourceWith(cutShort) << 0 << "stops after 2 of 5 rows";
}

void tst_LevelTool::compileRefusesBadSources()
{
    QFETCH(QString, source);
    QFETCH(int, line);
    QFETCH(QString, says);
    QVERIFY(WriteAll(file("levels.txt"), source.toUtf8()));
    const QString out = file("refused.zhn");
    const Run run = RunTool({"compile", file("levels.txt"), out});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(IsOneLine(run.err), qPrintable(run.err));
    if (line > 0)
        QVERIFY2(
            run.err.contains(QStringLiteral("levels.txt:%1: ").arg(line)), qPrintable(run.err));
    QVERIFY2(run.err.contains(says), qPrintable(run.err));
    QVERIFY(!QFile::exists(out));
}

void tst_LevelTool::compileReproducesTheShippedFile()
{
    const QString out = file("compiled.zhn");
    const Run run = RunTool({"compile", QStringLiteral(QUORVEL_LEVEL_SOURCE), out});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(ReadAll(out), pack);
}

QTEST_GUILESS_MAIN(tst_LevelTool)
#include "tst_LevelTool.moc"
