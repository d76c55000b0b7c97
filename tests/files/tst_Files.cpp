// The file formats, byte by byte, and the code page they are kept in.
#include "files/CodePage.h"
#include "files/LevelFile.h"
#include "files/PlayerFile.h"
#include "files/SavedGame.h"
#include "files/Settings.h"
#include "support/ProgramFolder.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTest>

#include <sys/fsuid.h>
#include <unistd.h>

namespace {

const QByteArray NoFile = "<no file>";
const QByteArray Untouched = "<untouched>";
const QByteArray ViewOff = "\r\n[View]\r\nFewestStepsLeft=false\r\n";

} // namespace

class tst_Files : public QObject
{
    Q_OBJECT
private slots:
    void codePageKeepsItsCharactersAndWritesQuestionMarks()
    {
        const QString text = QStringLiteral("Caf\u00E9 \u20AC\u0160\u2122\u00FF");
        QCOMPARE(ToAnsi(text), QByteArray("Caf\xE9 \x80\x8A\x99\xFF"));
        QCOMPARE(FromAnsi(ToAnsi(text)), text);
        QCOMPARE(ToAnsi(QStringLiteral("\u4E2D\u0394x")), QByteArray("??x"));
        QCOMPARE(ToAnsi(FromAnsi("\x81\x8D\x8F\x90\x9D")), QByteArray("\x81\x8D\x8F\x90\x9D"));
        // Every character the code page has between 0x80 and 0x9F, in order.
        QCOMPARE(
            FromAnsi("\x80\x82\x83\x84\x85\x86\x87\x88\x89\x8A\x8B\x8C\x8E\x91\x92\x93\x94\x95\x96"
                     "\x97\x98\x99\x9A\x9B\x9C\x9E\x9F"),
            QStringLiteral(
                "\u20AC\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u017D"
                "\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u017E"
                "\u0178"));
    }

    void gameNamesGoByTheCodePage_data()
    {
        QTest::addColumn<QString>("characters");
        QTest::addColumn<bool>("forbidden");
        // Outside the code page a character is "?"; 255 is refused by its code.
        QTest::newRow("refused") << "\"\\*?.:\x01\t\r\x1F\u4E2D\u0394\u00FF" << true;
        QTest::newRow("allowed") << "aZ09 /<>|,;'\u20AC\u0160\u00FE" << false;
    }

    void gameNamesGoByTheCodePage()
    {
        QFETCH(QString, characters);
        QFETCH(bool, forbidden);
        for (const QChar character : characters)
            QVERIFY2(
                IsForbiddenNameCharacter(character) == forbidden, qPrintable(QString(character)));
    }

    void levelFileRoundTripsNamesWithTheirPadding()
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
            QCOMPARE(read[i].codes, levels[i].codes);
        }
        QVERIFY(!ParseLevels(bytes.left(2099), read));
    }

    void savedGameHasTheDocumentedBytesAndKeepsAnOlderTail()
    {
        GameState game;
        game.SetUp(LayoutFromPicture("2345/2345/6117/8009/.00."));
        game.levelIndex = 4;
        game.steps = 12;
        const SavedGameRecord record = BuildSavedGame(game, QStringLiteral("Trailing  "));
        const QByteArray written = SavedGameBytes(12, 4, "Trailing  ", "2345/2345/6117/8009/.00.");
        QCOMPARE(SerializeSavedGame(record), written);
        ProgramFolder folder;
        folder.Write("game.sav", QByteArray(50, 'z'));
        QVERIFY(!WriteSavedGame(folder.File("game.sav"), record));
        QCOMPARE(folder.Read("game.sav"), written + QByteArray(14, 'z'));
        SavedGameRecord read;
        QCOMPARE(ReadSavedGame(folder.File("skins"), read), "It cannot be read: Is a directory.");
        QCOMPARE(ReadSavedGame(folder.File("game.sav"), read), QString());
        QCOMPARE(SerializeSavedGame(read), written);
    }

    void savedGameRefusesDamagedRecords_data()
    {
        QTest::addColumn<int>("offset"); // -1: cut the record short instead
        QTest::addColumn<char>("value");
        QTest::addColumn<QString>("reason");
        QTest::newRow("short") << -1 << '\0' << "35 bytes";
        QTest::newRow("level-70") << 4 << char(70) << "level 71";
        QTest::newRow("negative-level") << 5 << char(0xFF) << "level -";
        QTest::newRow("big-block-off-the-board") << 16 << char(33) << "position code 33";
        QTest::newRow("overlap") << 34 << char(0) << "overlap";
        QTest::newRow("negative-steps") << 3 << char(0x80) << "negative";
    }

    void savedGameRefusesDamagedRecords()
    {
        QFETCH(int, offset);
        QFETCH(char, value);
        QFETCH(QString, reason);
        QByteArray bytes = SavedGameBytes(0, 0, "Level 01  ");
        if (offset < 0)
            bytes.chop(1);
        else
            bytes[offset] = value;
        SavedGameRecord record;
        record.steps = 77;
        const QString found = ParseSavedGame(bytes, record);
        QVERIFY2(found.contains(reason), qPrintable(found));
        QCOMPARE(record.steps, 77); // untouched
    }

    void settingsFirstField_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("field");
        QTest::newRow("leading-spaces") << QByteArray("   sea.gif") << "sea.gif";
        QTest::newRow("comma-ends-it") << QByteArray("sea,blue.gif\r\n") << "sea";
        QTest::newRow("quoted-comma") << QByteArray("  \"sea,blue.gif\",x\r\n") << "sea,blue.gif";
        QTest::newRow("unclosed-quote") << QByteArray("\"open.bmp\r\nnext\"") << "open.bmp";
        QTest::newRow("second-line-ignored") << QByteArray("one.bmp\ntwo.bmp") << "one.bmp";
    }

    void settingsFirstField()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, field);
        QCOMPARE(FirstField(content), field);
    }

    void settingsKeepEveryNameTheyTake_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("line"); // empty: refused, the file left as it was
        QTest::newRow("plain") << "default.bmp" << QByteArray("default.bmp\r\n");
        QTest::newRow("code-page")
            << "\u00E9t\u00E9 \u20AC.gif" << QByteArray("\xE9t\xE9 \x80.gif\r\n");
        QTest::newRow("trailing-space") << "sea.bmp " << QByteArray("sea.bmp \r\n");
        QTest::newRow("quotes-inside") << "my \"best\".bmp" << QByteArray("my \"best\".bmp\r\n");
        QTest::newRow("question-mark") << "?.jpg" << QByteArray("?.jpg\r\n");
        QTest::newRow("comma") << "a,b.bmp" << QByteArray("\"a,b.bmp\"\r\n");
        QTest::newRow("leading-space") << " sea.bmp" << QByteArray("\" sea.bmp\"\r\n");
        QTest::newRow("leading-quote") << "\"q.bmp" << QByteArray();
        QTest::newRow("comma-and-quote") << "a,\"b\".bmp" << QByteArray();
        QTest::newRow("chinese") << "\u591C.jpg" << QByteArray();
        QTest::newRow("beyond-16-bits") << QString::fromUcs4(U"\U0001F319.gif") << QByteArray();
    }

    void settingsKeepEveryNameTheyTake()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, line);
        ProgramFolder folder;
        const QByteArray old("old.bmp\r\nsecond line that must go\r\n");
        folder.Write("qvl.ini", old);
        const FileError error = WriteSkinSetting(folder.File("qvl.ini"), name);
        QCOMPARE(bool(error), line.isEmpty());
        QCOMPARE(WhySettingCannotBeKept(name).isEmpty(), !line.isEmpty());
        QCOMPARE(folder.Read("qvl.ini"), line.isEmpty() ? old : line);
        QString read;
        QVERIFY(!ReadSkinSetting(folder.File("qvl.ini"), read));
        QCOMPARE(read, line.isEmpty() ? "old.bmp" : name);
    }

    void settingsNameOnlyPlainFiles()
    {
        for (const char *plain : {"default.bmp", "my skin.gif"})
            QVERIFY(IsPlainFileName(QString::fromLatin1(plain)));
        for (const char *elsewhere : {"", ".", "..", "../qvl.ini", "/etc/passwd"})
            QVERIFY(!IsPlainFileName(QString::fromLatin1(elsewhere)));
    }

    // The player may write the file but not its folder, where no replacement
    // can be made beside it: the file is rewritten where it stands.
    void settingsInAFolderNotThePlayersAreRewrittenInPlace()
    {
        ProgramFolder folder;
        const QString path = folder.File("qvl.ini");
        // Where it can, the game replaces the file whole: a second name for the
        // old file keeps the old content.
        const QByteArray old = "old.bmp, with a tail longer than the new line\r\n";
        folder.Write("qvl.ini", old);
        QVERIFY(::link(QFile::encodeName(path), QFile::encodeName(folder.File("old"))) == 0);
        QVERIFY(!WriteSkinSetting(path, "first.bmp"));
        QCOMPARE(folder.Read("old"), old);
        QCOMPARE(folder.Read("qvl.ini"), "first.bmp\r\n");
        const auto all = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
        QVERIFY(QFile::setPermissions(path, all | QFile::ReadOther | QFile::WriteOther));
        QVERIFY(QFile::setPermissions(
            folder.path(), QFile::ReadOwner | QFile::ExeOwner | QFile::ExeOther));
        const auto restore = qScopeGuard([&] { QFile::setPermissions(folder.path(), all); });
        // Root writes anywhere; as another user the permission bits count.
        const bool root = ::geteuid() == 0;
        if (root)
            ::setfsgid(65534), ::setfsuid(65534);
        const FileError error = WriteSkinSetting(path, "new.bmp");
        if (root)
            ::setfsuid(0), ::setfsgid(0);
        QVERIFY2(!error, qPrintable(error.description));
        QCOMPARE(folder.Read("qvl.ini"), "new.bmp\r\n");
    }

    void playerFileKeepsTheLowerBest_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<int>("level"); // the level number won; 0: the view is set instead
        QTest::addColumn<int>("steps"); // for the view: 1 shown, 0 not
        QTest::addColumn<QByteArray>("after");
        const auto row = [](const char *name, const QByteArray &before, int level, int steps,
                             const QByteArray &after) {
            QTest::newRow(name) << before << level << steps << after;
        };
        row("the-first-win-makes-the-file", NoFile, 1, 12, "[Best]\r\n1=12\r\n" + ViewOff);
        row("a-better-win-replaces-the-best", "[Best]\r\n3=40\r\n", 3, 38,
            "[Best]\r\n3=38\r\n" + ViewOff);
        row("an-equal-win-leaves-the-file", "[Best]\n3=40\n", 3, 40, Untouched);
        row("other-levels-and-the-view-stay",
            "[Best]\r\n70=101\r\n1=10\r\n[View]\r\nFewestStepsLeft=true\r\n", 6, 30,
            "[Best]\r\n1=10\r\n6=30\r\n70=101\r\n\r\n[View]\r\nFewestStepsLeft=true\r\n");
        row("the-lowest-of-several-holds", "[Best]\n4=50\n4=45\n4=47\n", 4, 46, Untouched);
        row("names-without-case-spaces-and-comments",
            "; mine\r\n# too\r\n [ bEST ] \r\n\t2 = 15 \r\n", 2, 16, Untouched);
        row("lines-that-do-not-parse-are-skipped",
            QByteArrayLiteral(
                "2=1\r\n[Best]\r\n2=15\r\n0=5\r\n71=9\r\n02=3\r\n-1=4\r\n4=-3\r\n5=x\r\n6=\r\n="
                "7\r\n"
                "7=1e3\r\n8=+9\r\n9=99999999999\r\n[Best\r\n10=5\r\n[Other]\r\n11=1\r\n[View]\r\n"
                "12=1\r\nFewestStepsLeft=yes\r\n\0\xFF\x01\r\n[Best]\r\n\xFE"),
            1, 11, "[Best]\r\n1=11\r\n2=15\r\n" + ViewOff);
        row("no-steps-up-to-the-largest-count", "[Best]\n1=0\n2=2147483647\n3=2147483648\n", 3, 5,
            "[Best]\r\n1=0\r\n2=2147483647\r\n3=5\r\n" + ViewOff);
        row("the-last-view-holds", "[VIEW]\nfeweststepsleft = TRUE\nFewestStepsLeft=maybe\n", 1, 9,
            "[Best]\r\n1=9\r\n\r\n[View]\r\nFewestStepsLeft=true\r\n");
        // Only the first MiB is read; the line it cuts ("5=12" of "5=12345")
        // would read as a better best than the file holds.
        row("a-line-cut-by-the-read-limit-is-not-taken",
            "[Best]\n" + QByteArray((1 << 20) - 12, ';') + "\n5=12345\n", 5, 200,
            "[Best]\r\n5=200\r\n" + ViewOff);
        row("showing-fewest-steps-left", "[Best]\r\n2=7\r\n", 0, 1,
            "[Best]\r\n2=7\r\n\r\n[View]\r\nFewestStepsLeft=true\r\n");
        row("the-view-as-it-is-leaves-the-file", "[View]\nFewestStepsLeft=true", 0, 1, Untouched);
    }

    void playerFileKeepsTheLowerBest()
    {
        QFETCH(QByteArray, before);
        QFETCH(int, level);
        QFETCH(int, steps);
        QFETCH(QByteArray, after);
        ProgramFolder folder;
        if (before != NoFile)
            folder.Write(PlayerFileName, before);
        PlayerProgress progress;
        const QString path = folder.File(PlayerFileName);
        const FileError error = level ? RecordWin(path, level - 1, steps, progress)
                                      : RecordFewestStepsLeft(path, steps != 0, progress);
        QVERIFY2(!error, qPrintable(error.description));
        QCOMPARE(folder.Read(PlayerFileName), after == Untouched ? before : after);
        if (level)
            QVERIFY(progress.best[size_t(level - 1)] <= steps);
        // Nothing else is left beside it but the lock.
        QCOMPARE(QDir(folder.path()).entryList({"qvl-player.ini*"}, QDir::Files | QDir::Hidden),
            QStringList({"qvl-player.ini", "qvl-player.ini.lock"}));
    }

    // Other copies starting and winning at the same moment hold the files for a
    // while: the level file is read once it is let go (held for good, it is the
    // fault suite's locked row), and the win waits for the other's record and
    // keeps both.
    void filesHeldForAMomentAreWaitedFor()
    {
        ProgramFolder folder;
        const QString path = folder.File(PlayerFileName);
        QProcess level, player;
        level.start(
            "flock", {"--exclusive", folder.File("QVL.ZHN"), "sh", "-c", "echo; sleep 0.3"});
        player.start("flock",
            {path + ".lock", "sh", "-c", "echo; sleep 0.8; printf '[Best]\\r\\n2=9\\r\\n' > \"$0\"",
                path});
        QVERIFY(level.waitForReadyRead(5000) && player.waitForReadyRead(5000));
        LevelTable levels;
        QCOMPARE(ReadLevelFile(folder.File("QVL.ZHN"), levels).description, QString());
        QCOMPARE(levels[69].levelName, QStringLiteral("Level 70  "));
        PlayerProgress progress;
        QVERIFY(!RecordWin(path, 0, 12, progress));
        QVERIFY(level.waitForFinished(5000) && player.waitForFinished(5000));
        QCOMPARE(folder.Read(PlayerFileName), "[Best]\r\n1=12\r\n2=9\r\n" + ViewOff);
        QCOMPARE(progress.best[1], 9);
    }
};

QTEST_GUILESS_MAIN(tst_Files)
#include "tst_Files.moc"
