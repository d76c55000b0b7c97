// Start-up on prepared program folders and the window it leaves; and the
// about box: its links and the hidden bonus behind three modified
// presses. What start-up does with damaged files is the fault suite's.
#include "app/ImageControl.h"
#include "app/modMain.h"
#include "dialogs/frmAbout.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QDir>
#include <QFileInfo>
#include <QMenuBar>
#include <QTest>

namespace {

// Which of blocks 0 and 6 to 9, in that order, show their second picture
// cut from `skin`.
QString SecondPictures(const frmMain &form, const QImage &skin)
{
    QString seen;
    for (int i : {0, 6, 7, 8, 9})
        seen += form.imgPieces[i]->pixmap().toImage().convertToFormat(QImage::Format_RGB32)
                == skin.copy(i ? QRect(140, 140, 60, 60) : QRect(140, 20, 120, 120))
            ? 's'
            : '-';
    return seen;
}

} // namespace

class tst_Window : public QObject
{
    Q_OBJECT
private slots:
    // A first run is the installed game's (tests/install), a missing skin the
    // fault suite's.
    void startUpShowsAnEmptyWindowAndKeepsAUsableSkin()
    {
        ProgramFolder folder;
        QVERIFY(folder.Write("saved", "a plain file of that name is left alone"));
        QVERIFY(QFile::copy(folder.File("skins/default.bmp"), folder.File("skins/other.bmp")));
        QVERIFY(folder.Write("qvl.ini", "other.bmp,ignored\r\nline two\r\n"));
        ScriptedPlatform platform;
        frmMain form(platform, folder.path());
        QVERIFY(StartUp(form, platform));
        QVERIFY(QFileInfo(folder.File("saved")).isFile());
        QCOMPARE(folder.Read("qvl.ini"), "other.bmp\r\n");
        QVERIFY(platform.Shown().isEmpty());
        QVERIFY(form.isVisible() && !form.mnuSaveGame->isEnabled());
        for (QWidget *image : form.centralWidget()->findChildren<ImageControl *>())
            QVERIFY(!image->isVisible());
        QCOMPARE(form.lblStatus->text(), QString());
        QCOMPARE(form.centralWidget()->size(), QSize(408, 405));
        // Each item with its keys; "off" when disabled, "[ ]" when it can be checked.
        QStringList captions;
        for (QAction *menu : form.menuBar()->actions())
            for (QAction *item : QList<QAction *> {menu} + menu->menu()->actions()) {
                QStringList keys;
                for (const QKeySequence &key : item->shortcuts())
                    keys << key.toString();
                captions << (item->isSeparator()
                        ? QStringLiteral("-")
                        : QStringList {item->text(), keys.join(", "),
                            item->isEnabled() ? "" : "off", item->isCheckable() ? "[ ]" : ""}
                              .join(' ')
                              .trimmed());
            }
        QCOMPARE(captions,
            (QStringList {"&File", "&New Game", "&Load Game", "&Save Game  off", "-", "Set S&kin",
                "-", "E&xit", "&Game", "&Undo Ctrl+Z off", "&Redo Ctrl+Y, Ctrl+Shift+Z off",
                "Re&start Level Ctrl+R off", "-", "&Hint Ctrl+H off",
                "Show &Fewest Steps Left Ctrl+F  [ ]", "&Help", "H&ow to Play", "-", "&About"}));
    }

    void easterEggWantsItsOrder_data()
    {
        // "target modifiers": E the mail link, U the web link, P the picture;
        // modifiers as Shift 1 + Ctrl 2 + Alt 4.
        QTest::addColumn<QString>("presses");
        QTest::addColumn<int>("found"); // how many times the message came
        QTest::newRow("mail-web-picture") << "E5 U5 P1" << 1;
        QTest::newRow("every-further-picture-press-repeats") << "E5 U5 P1 P1 P0 P1" << 3;
        QTest::newRow("plain-presses-keep-the-step") << "E5 E0 U0 U5 U1 E0 P0 P1" << 1;
        QTest::newRow("web-link-first") << "U5 E5 P1" << 0;
        QTest::newRow("picture-first") << "P1 E5 U5" << 0;
        QTest::newRow("shift-ctrl-on-the-picture") << "E5 U5 P3" << 0;
        QTest::newRow("ctrl-too-on-the-mail-link") << "E7 U5 P1" << 0;
        QTest::newRow("ctrl-too-on-the-web-link") << "E5 U7 P1" << 0;
        QTest::newRow("mail-link-again-goes-back-a-step") << "E5 U5 E5 P1" << 0;
    }

    void easterEggWantsItsOrder()
    {
        QFETCH(QString, presses);
        QFETCH(int, found);
        ScriptedPlatform platform;
        ProgramFolder folder;
        frmMain form(platform, folder.path());
        // The second pictures are cut from the skin in use, whichever the player chose.
        QVERIFY(KnownSkin().mirrored().save(folder.File("skins/other.bmp"), "BMP"));
        form.ApplySkin("other.bmp");
        for (int i = 0; i < found; ++i)
            platform.Reply(Answer::Ok);
        frmAbout box(form);
        for (const QString &press : presses.split(' ')) {
            QWidget *target = QList<QWidget *> {box.lblEmail, box.lblUpdates, box.imgVess}.value(
                QString("EUP").indexOf(press[0]));
            // Qt numbers Shift, Ctrl and Alt alike, only further up.
            const auto modifiers = Qt::KeyboardModifiers(press[1].digitValue() << 25);
            // Released away from the target, so no link opens.
            QTest::mousePress(target, Qt::LeftButton, modifiers, QPoint(5, 5));
            QTest::mouseRelease(target, Qt::LeftButton, modifiers, QPoint(-20, -20));
        }

        QCOMPARE(platform.Shown(),
            QStringList(found, "Quorvel - Easter Egg | You have found the Easter Egg!"));
        QCOMPARE(SecondPictures(form, KnownSkin().mirrored()), found ? "sssss" : "-----");
        form.ApplySkin("other.bmp"); // even the skin in use gives the usual ones back
        QCOMPARE(SecondPictures(form, KnownSkin().mirrored()), "-----");
        QVERIFY(platform.Done());
    }

    void linksThatCannotOpenSayWhereToGo_data()
    {
        // Each row is named for its link; "help" is the help command of the main window.
        QTest::addColumn<QString>("target"); // <folder> the program folder
        QTest::addColumn<QString>("shown");
        const auto row = [](const char *link, const QString &target, const QString &shown) {
            QTest::newRow(link) << target << "Quorvel - " + shown;
        };
        row("mail", "mailto:quorvel@example.org?Subject=Quorvel",
            "Email | Unable to start your Email agent automatically.\r\nPlease send an Email to "
            "quorvel@example.org manually.");
        row("web", "https://quorvel.example.org/",
            "Updates | Unable to start your web browser automatically.\r\nPlease goto the site "
            "https://quorvel.example.org/ manually.");
        row("help", "<folder>/qvl.html",
            "Help | Unable to open <folder>/qvl.html automatically.\r\nPlease open the file "
            "manually.");
    }

    void linksThatCannotOpenSayWhereToGo()
    {
        const QString link = QTest::currentDataTag();
        QFETCH(QString, target);
        QFETCH(QString, shown);
        ScriptedPlatform platform;
        ProgramFolder folder;
        frmMain form(platform, folder.path());
        platform.Reply(Answer::Ok);
        frmAbout box(form);
        QCOMPARE(box.lblProd->text().section('\n', 0, 0), "Quorvel Version 1.01"); // its first line

        link == "help"
            ? form.mnuHTP_Click()
            : QTest::mouseClick(link == "mail" ? box.lblEmail : box.lblUpdates, Qt::LeftButton);

        QCOMPARE(platform.Opened(), QStringList(1, target.replace("<folder>", folder.path())));
        QCOMPARE(platform.Shown(),
            QStringList {shown.replace("<folder>", QDir::toNativeSeparators(folder.path()))});
        // The link pressed turns red and stays so; every box starts with both blue.
        QCOMPARE(frmAbout::LinkColour(*box.lblEmail), QColor(link == "mail" ? Qt::red : Qt::blue));
        QCOMPARE(frmAbout::LinkColour(*box.lblUpdates), QColor(link == "web" ? Qt::red : Qt::blue));
        QVERIFY(platform.Done());
    }
};

QTEST_MAIN(tst_Window)
#include "tst_Window.moc"
