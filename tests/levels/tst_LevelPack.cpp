// The level file the build compiled: what a player gets must be sound,
// solvable, all different and in order of difficulty. And quorvel-levels,
// which checks and solves such files, as a player or the build runs it.
#include "game/Solver.h"
#include "support/ProgramFolder.h"

#include <QProcess>
#include <QTest>

#include <set>

namespace {

struct Run
{
    int exitCode = -1; // also for a crash or a hang
    QStringList out; // lines
    QString err;
};

Run RunTool(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(QUORVEL_LEVELS_TOOL), arguments);
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(),
        QString::fromUtf8(process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts),
        QString::fromUtf8(process.readAllStandardError())};
}

// Every refusal is one line, so a build step that runs the tool fails readably.
bool IsOneLine(const QString &text)
{
    return text.startsWith("quorvel-levels: ") && text.count('\n') == 1 && text.endsWith('\n');
}

// As the comments of data/levels.txt give them: a newcomer's first levels,
// none easier than the one before, and the hardest position there is last.
const int FewestSteps[LevelCount] = {10, 11, 13, 14, 15, 17, 18, 19, 21, 22, 23, 25, 26, 27, 28, 30,
    31, 32, 34, 35, 36, 38, 39, 40, 42, 43, 44, 46, 47, 48, 50, 51, 52, 54, 55, 56, 57, 59, 60, 61,
    63, 64, 65, 67, 68, 69, 71, 72, 73, 75, 76, 77, 79, 80, 81, 83, 84, 85, 86, 88, 89, 90, 92, 92,
    93, 96, 97, 97, 99, 101};

} // namespace

class tst_LevelPack : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        const FileError error = ReadLevelFile(QStringLiteral(QUORVEL_LEVEL_FILE), levels);
        QVERIFY2(!error, qPrintable(error.description));

        // The game would ignore a longer tail; a pack that carries one was not
        // written by the tool.
        QVERIFY(folder.Write("long.zhn", SerializeLevels(levels) + '\0'));
        // Level 5 with two blocks on one cell, level 9 that no step solves and the
        // last level two steps from solved.
        LevelTable broken = folder.levels;
        broken[4].codes[9] = broken[4].codes[8];
        broken[8].codes = LayoutFromPicture("2311/234./654./7500/8900");
        broken[69].codes = LayoutFromPicture("1167/2.83/2.93/4500/4500");
        QVERIFY(folder.Write("broken.zhn", SerializeLevels(broken)));
    }

    void everyLevelIsADistinctSolvablePuzzle()
    {
        // Names, one to a level, are the build's to check (quorvel-levels compile).
        std::set<PositionKey> seen;
        for (int i = 0; i < LevelCount; ++i) {
            QCOMPARE(space.StepsToSolve(levels[i].codes).value_or(-1), FewestSteps[i]);
            QVERIFY2(seen.insert(MirrorFreeKey(KeyOf(levels[i].codes))).second,
                "level " + QByteArray::number(i + 1) + " repeats an earlier one, perhaps mirrored");
        }
    }

    void toolRefusesBadInput_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode"); // 1: a bad file or level; 2: a bad command line
        const QString pack = QStringLiteral(QUORVEL_LEVEL_FILE);
        QTest::newRow("missing file") << QStringList {"check", folder.File("missing.zhn")} << 1;
        QTest::newRow("a byte too long") << QStringList {"check", folder.File("long.zhn")} << 1;
        QTest::newRow("bad layout") << QStringList {"solve", folder.File("broken.zhn"), "5"} << 1;
        QTest::newRow("level 0") << QStringList {"solve", pack, "0"} << 2;
        QTest::newRow("level 71") << QStringList {"solve", pack, "71"} << 2;
        QTest::newRow("level in words") << QStringList {"solve", pack, "three"} << 2;
        QTest::newRow("unknown command") << QStringList {"play", pack} << 2;
    }

    void toolRefusesBadInput()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        const Run run = RunTool(arguments);
        QCOMPARE(run.exitCode, exitCode);
        QVERIFY2(IsOneLine(run.err), qPrintable(run.err));
        QVERIFY(run.out.isEmpty());
    }

    void checkAndSolveTellEachLevelInPlayersWords()
    {
        Run run = RunTool({"check", folder.File("broken.zhn")});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(
            IsOneLine(run.err) && run.err.contains("2 of 70 levels are bad"), qPrintable(run.err));
        QCOMPARE(run.out.size(), LevelCount);
        QCOMPARE(run.out[0], " 1  \"Level 01  \"  3 steps");
        QVERIFY(run.out[4].startsWith(" 5  \"Level 05  \"  bad layout: blocks 8 and 9 overlap"));
        QCOMPARE(run.out[8], " 9  \"Level 09  \"  cannot be solved");
        QCOMPARE(run.out[69], "70  \"Level 70  \"  2 steps");

        run = RunTool({"solve", folder.File("broken.zhn"), "70"});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out,
            QStringList({"Level 70, \"Level 70  \": 2 steps.",
                "1. Slide the tall block at rows 4-5, column 2 up 2 cells, to rows 2-3, column 2.",
                "2. Slide the big block at rows 4-5, columns 3-4 left 1 cell, to rows 4-5, columns "
                "2-3.",
                "Solved in 2 steps."}));
    }

private:
    // Levels of three steps, worked out by hand (tst_Solver), and packs made
    // from them.
    const ProgramFolder folder {{"2311/2345/9745/..00/8600"}, false};
    LevelTable levels; // the shipped pack
    const StateSpace space;
};

QTEST_GUILESS_MAIN(tst_LevelPack)
#include "tst_LevelPack.moc"
