// The level file the build compiled: what a player gets must be sound,
// solvable, all different and in order of difficulty.
#include "SolverCheck.h"

#include "files/LevelFile.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>
#include <set>

class tst_LevelPack : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void everyLevelIsAPlayablePuzzle_data();
    void everyLevelIsAPlayablePuzzle();
    void noLevelRepeatsAnother();
    void difficultyRisesGentlyToTheHardest();
    void namesAreTenLettersAndDistinct();

private:
    LevelTable levels;
    std::unique_ptr<StateSpace> space;
    std::vector<int> steps;
};

void tst_LevelPack::initTestCase()
{
    const FileError error = ReadLevelFile(QStringLiteral(QUORVEL_LEVEL_FILE), levels);
    QVERIFY2(!error, qPrintable(error.description));
    space = std::make_unique<StateSpace>();
    for (const LevelRecord &level : levels)
        steps.push_back(space->StepsToSolve(level.codes).value_or(-1));
}

void tst_LevelPack::everyLevelIsAPlayablePuzzle_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < LevelCount; ++i)
        QTest::addRow("%02d %s", i + 1, qPrintable(levels[i].levelName)) << i;
}

void tst_LevelPack::everyLevelIsAPlayablePuzzle()
{
    QFETCH(int, index);
    const Layout &codes = levels[index].codes;
    QCOMPARE(QString::fromStdString(CheckLayout(codes)), QString());
    const std::optional<Solution> solution = Solve(codes);
    QVERIFY2(solution, "cannot be solved");
    QVERIFY2(solution->Steps() > 0, "solved before the first step");
    QCOMPARE(solution->Steps(), steps[index]);
    QCOMPARE(Replay(codes, solution->moves), QString());
    // No first step leads somewhere harder: the level is not a harder
    // puzzle with its opening played.
    for (const SolverMove &move : LegalMoves(codes))
        QVERIFY(space->StepsToSolve(ApplyMove(codes, move)).value_or(-1) <= steps[index]);
}

void tst_LevelPack::noLevelRepeatsAnother()
{
    std::set<PositionKey> seen;
    for (int i = 0; i < LevelCount; ++i)
        QVERIFY2(seen.insert(MirrorFreeKey(KeyOf(levels[i].codes))).second,
            qPrintable(
                QStringLiteral("level %1 repeats an earlier one, perhaps mirrored").arg(i + 1)));
}

void tst_LevelPack::difficultyRisesGentlyToTheHardest()
{
    for (int i = 1; i < LevelCount; ++i) {
        const QByteArray where = QByteArray::number(i + 1);
        QVERIFY2(steps[i] >= steps[i - 1], "easier than the level before: " + where);
        // Smooth: no level much harder than the one before.
        QVERIFY2(steps[i] - steps[i - 1] <= 4, "a jump in difficulty at level " + where);
    }
    for (int i = 0; i < 3; ++i)
        QVERIFY(steps[i] > 0 && steps[i] < 20);
    QCOMPARE(steps[LevelCount - 1], space->MaxDistance());
    for (int i = LevelCount - 5; i < LevelCount; ++i)
        QVERIFY(steps[i] >= space->MaxDistance() - 5);
}

void tst_LevelPack::namesAreTenLettersAndDistinct()
{
    static const QRegularExpression words(QStringLiteral("^[A-Za-z][A-Za-z ]{8}[A-Za-z]$"));
    std::set<QString> names;
    for (const LevelRecord &level : levels) {
        QVERIFY2(words.match(level.levelName).hasMatch(), qPrintable(level.levelName));
        QVERIFY2(names.insert(level.levelName.toLower()).second, qPrintable(level.levelName));
    }
}

QTEST_APPLESS_MAIN(tst_LevelPack)
#include "tst_LevelPack.moc"
