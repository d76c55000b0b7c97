// The three file formats, byte by byte, and the code page they are kept in.
#include "files/CodePage.h"
#include "files/LevelFile.h"
#include "files/SavedGame.h"
#include "files/Settings.h"
#include "support/ProgramFolder.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

class tst_Files : public QObject
{
    Q_OBJECT
private slots:
    void codePageKeepsItsCharactersAndWritesQuestionMarks();
    void levelFileRoundTripsNamesWithTheirPadding();
    void levelFileShortMissingOrLockedIsAnError();
    void savedGameHasTheDocumentedBytes();
    void savedGameRefusesDamagedRecords_data();
    void savedGameRefusesDamagedRecords();
    void savedGameWritesOverTheStartOnly();
    void savedGameWriteFailureLeavesNoFileBehind();
    void forbiddenNameCharacters_data();
    void forbiddenNameCharacters();
    void settingsFirstField_data();
    void settingsFirstField();
    void settingsAreOneLineEndingInCrLf();
    void plainFileNamesOnly_data();
    void plainFileNamesOnly();
};

void tst_Files::codePageKeepsItsCharactersAndWritesQuestionMarks()
{
    const QString text = QStringLiteral("Caf\u00E9 \u20AC\u0160\u2122\u00FF");
    const QByteArray bytes = ToAnsi(text);
    QCOMPARE(bytes, QByteArray("Caf\xE9 \x80\x8A\x99\xFF"));
    QCOMPARE(FromAnsi(bytes), text);
    QCOMPARE(ToAnsi(QStringLiteral("\u4E2D\u0394x")), QByteArray("??x"));
    // Unassigned bytes survive a round trip.
    QCOMPARE(
        ToAnsi(FromAnsi(QByteArray("\x81\x8D\x8F\x90\x9D"))), QByteArray("\x81\x8D\x8F\x90\x9D"));
    QCOMPARE(AnsiCode(QChar(0x2013)), 0x96);
    QCOMPARE(AnsiCode(QChar(0x0394)), int('?'));
}

void tst_Files::levelFileRoundTripsNamesWithTheirPadding()
{
    LevelTable levels = ClearedLevels();
    levels[0].levelName = QStringLiteral("Short     ");
    levels[1].levelName = QString::fromLatin1("Zero\0\0\0\0\0\0", 10);
    levels[69].levelName = QStringLiteral("\u00C9t\u00E9 d'or \u20AC");
    levels[69].codes = LayoutFromPicture("2003/2003/4115/4675/8..9");
    const QByteArray bytes = SerializeLevels(levels);
    QCOMPARE(bytes.size(), 2100);
    QCOMPARE(bytes.mid(69 * 30, 12), QByteArray("\xC9t\xE9 d'or \x80\x01\x00", 12));
    LevelTable read = ClearedLevels();
    QVERIFY(ParseLevels(bytes + "tail is never read", read));
    for (int i : {0, 1, 69}) {
        QCOMPARE(read[i].levelName, levels[i].levelName);
        QCOMPARE(read[i].levelName.size(), 10);
        QCOMPARE(read[i].codes, levels[i].codes);
    }
    QVERIFY(!ParseLevels(bytes.left(2099), read));
}

void tst_Files::levelFileShortMissingOrLockedIsAnError()
{
    ProgramFolder folder;
    LevelTable levels;
    QVERIFY(!ReadLevelFile(folder.File("QVL.ZHN"), levels));
    QCOMPARE(levels[0].levelName, QStringLiteral("Level 01  "));

    const FileError missing = ReadLevelFile(folder.File("nothing"), levels);
    QCOMPARE(missing.number, ENOENT);
    QVERIFY(!missing.description.isEmpty());
    QCOMPARE(levels[5].levelName, QString(10, QChar(0))); // cleared before the read

    folder.Write("short", QByteArray(2099, 'x'));
    QCOMPARE(ReadLevelFile(folder.File("short"), levels).number, int(ShortFileError));

    // Someone else holds the file locked: a lock on another open description
    // is refused just as one held by another process.
    const int holder = ::open(QFile::encodeName(folder.File("QVL.ZHN")).constData(), O_RDONLY);
    QVERIFY(holder >= 0);
    QCOMPARE(::flock(holder, LOCK_EX), 0);
    QCOMPARE(ReadLevelFile(folder.File("QVL.ZHN"), levels).number, EWOULDBLOCK);
    ::close(holder);
    QCOMPARE(ReadLevelFile(folder.File("QVL.ZHN"), levels).number, 0);
}

void tst_Files::savedGameHasTheDocumentedBytes()
{
    GameState game;
    game.SetUp(LayoutFromPicture("2345/2345/6117/8009/.00."));
    game.levelIndex = 4;
    game.steps = 12;
    const SavedGameRecord record = BuildSavedGame(game, QStringLiteral("Trailing  "));
    const QByteArray bytes = SerializeSavedGame(record);
    QCOMPARE(bytes.size(), 36);
    QCOMPARE(bytes.left(18), QByteArray("\x0C\x00\x00\x00\x04\x00Trailing  \x1F\x00", 18));
    SavedGameRecord read;
    QCOMPARE(ParseSavedGame(bytes, read), QString());
    QCOMPARE(read.steps, 12);
    QCOMPARE(read.levelIndex, int16_t(4));
    QCOMPARE(read.levelName, QStringLiteral("Trailing  "));
    QCOMPARE(read.codes, game.EncodePositions());
}

void tst_Files::savedGameRefusesDamagedRecords_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    GameState game;
    game.SetUp(LayoutFromPicture("2003/2003/4115/4675/8..9"));
    const QByteArray good = SerializeSavedGame(BuildSavedGame(game, QStringLiteral("Level 01  ")));
    QTest::newRow("short") << good.left(35) << "35 bytes";
    QTest::newRow("empty") << QByteArray() << "0 bytes";
    QByteArray level = good;
    level[4] = char(70);
    QTest::newRow("level-70") << level << "level 71";
    level[4] = char(0xFF);
    level[5] = char(0xFF);
    QTest::newRow("level-minus-1") << level << "level 0";
    QByteArray off = good;
    off[16] = char(33);
    QTest::newRow("big-block-off-the-board") << off << "position code 33";
    QByteArray overlap = good;
    overlap[34] = char(0); // block 9 onto the big block's corner... and more
    QTest::newRow("overlap") << overlap << "overlap";
    QByteArray negative = good;
    negative[3] = char(0x80);
    QTest::newRow("negative-steps") << negative << "negative";
}

void tst_Files::savedGameRefusesDamagedRecords()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    SavedGameRecord record;
    record.steps = 77;
    const QString found = ParseSavedGame(bytes, record);
    QVERIFY2(found.contains(reason), qPrintable(found));
    QCOMPARE(record.steps, 77); // untouched
}

void tst_Files::savedGameWritesOverTheStartOnly()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("game.sav");
    QFile older(path);
    QVERIFY(older.open(QIODevice::WriteOnly));
    older.write(QByteArray(50, 'z'));
    older.close();
    GameState game;
    game.SetUp(LayoutFromPicture("2003/2003/4115/4675/8..9"));
    const SavedGameRecord record = BuildSavedGame(game, QStringLiteral("Level 01  "));
    QVERIFY(!WriteSavedGame(path, record));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    QCOMPARE(bytes.size(), 50);
    QCOMPARE(bytes.left(36), SerializeSavedGame(record));
    QCOMPARE(bytes.mid(36), QByteArray(14, 'z'));
    SavedGameRecord read;
    QCOMPARE(ReadSavedGame(path, read), QString());
    QCOMPARE(read.codes, record.codes);
}

void tst_Files::savedGameWriteFailureLeavesNoFileBehind()
{
    QTemporaryDir dir;
    // A link is never followed: the write cannot land outside the folder.
    const QString outside = dir.filePath("outside");
    QVERIFY(QFile::link(outside, dir.filePath("link.sav")));
    SavedGameRecord record;
    QVERIFY(WriteSavedGame(dir.filePath("link.sav"), record));
    QVERIFY(!QFile::exists(outside));
    // No such folder.
    QVERIFY(WriteSavedGame(dir.filePath("missing/x.sav"), record));
    // A folder of that name is no file to read.
    QVERIFY(QDir(dir.path()).mkdir("folder.sav"));
    QVERIFY(ReadSavedGame(dir.filePath("folder.sav"), record).contains("cannot be read"));
}

void tst_Files::forbiddenNameCharacters_data()
{
    QTest::addColumn<QString>("character");
    QTest::addColumn<bool>("forbidden");
    for (const char *c : {".", ":", "?", "*", "\"", "\\", "\t", "\x01", "\x1F"})
        QTest::newRow(c[0] == '\t' ? "tab" : c) << QString::fromLatin1(c) << true;
    QTest::newRow("y-diaeresis") << QStringLiteral("\u00FF") << true;
    QTest::newRow("not-in-the-code-page") << QStringLiteral("\u4E2D") << true;
    for (const char *c : {" ", "/", "<", ">", "|", "-", "a", "Z", "9", "_"})
        QTest::newRow(c) << QString::fromLatin1(c) << false;
    QTest::newRow("euro") << QStringLiteral("\u20AC") << false;
    QTest::newRow("e-acute") << QStringLiteral("\u00E9") << false;
}

void tst_Files::forbiddenNameCharacters()
{
    QFETCH(QString, character);
    QFETCH(bool, forbidden);
    QCOMPARE(IsForbiddenNameCharacter(character.at(0)), forbidden);
}

void tst_Files::settingsFirstField_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("field");
    QTest::newRow("plain") << QByteArray("default.bmp\r\n") << "default.bmp";
    QTest::newRow("no-line-end") << QByteArray("sea.gif") << "sea.gif";
    QTest::newRow("leading-spaces") << QByteArray("   sea.gif\r\n") << "sea.gif";
    QTest::newRow("comma-ends-it") << QByteArray("sea,blue.gif\r\n") << "sea";
    QTest::newRow("quoted-comma") << QByteArray("\"sea,blue.gif\",x\r\n") << "sea,blue.gif";
    QTest::newRow("quoted-after-spaces") << QByteArray("  \"a b.bmp\"\r\n") << "a b.bmp";
    QTest::newRow("unclosed-quote") << QByteArray("\"open.bmp\r\nnext\"") << "open.bmp";
    QTest::newRow("second-line-ignored") << QByteArray("one.bmp\r\ntwo.bmp\r\n") << "one.bmp";
    QTest::newRow("lf-only") << QByteArray("one.bmp\ntwo.bmp") << "one.bmp";
    QTest::newRow("empty") << QByteArray() << "";
    QTest::newRow("code-page") << QByteArray("\xE9t\xE9.bmp\r\n") << "\u00E9t\u00E9.bmp";
}

void tst_Files::settingsFirstField()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, field);
    QCOMPARE(FirstField(content), field);
}

void tst_Files::settingsAreOneLineEndingInCrLf()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("qvl.ini");
    QFile old(path);
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("old.bmp\r\nsecond line that must go\r\n");
    old.close();
    QVERIFY(!WriteSkinSetting(path, QStringLiteral("\u00E9t\u00E9.gif")));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("\xE9t\xE9.gif\r\n"));
    QString setting;
    QVERIFY(!ReadSkinSetting(path, setting));
    QCOMPARE(setting, QStringLiteral("\u00E9t\u00E9.gif"));
    QVERIFY(ReadSkinSetting(dir.filePath("none.ini"), setting));
    QCOMPARE(setting, QString());
}

void tst_Files::plainFileNamesOnly_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("plain");
    QTest::newRow("default") << "default.bmp" << true;
    QTest::newRow("spaces") << "my skin.gif" << true;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("dot") << "." << false;
    QTest::newRow("dot-dot") << ".." << false;
    QTest::newRow("climbs-out") << "../qvl.ini" << false;
    QTest::newRow("absolute") << "/etc/passwd" << false;
    QTest::newRow("nul") << QString::fromLatin1("a\0b", 3) << false;
}

void tst_Files::plainFileNamesOnly()
{
    QFETCH(QString, name);
    QFETCH(bool, plain);
    QCOMPARE(IsPlainFileName(name), plain);
}

QTEST_GUILESS_MAIN(tst_Files)
#include "tst_Files.moc"
