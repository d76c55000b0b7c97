// The about box as the player meets it: its version line, its two links and
// the hidden bonus behind three modified presses; and the help page command.
#include "app/ImageControl.h"
#include "dialogs/frmAbout.h"
#include "dialogs/frmFile.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"
#include "support/WhenModal.h"

#include <QApplication>
#include <QDir>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

namespace {

const QColor Blue(0, 0, 255), Red(255, 0, 0);
const QString Usual = "usual usual usual usual usual";
const QString Second = "second second second second second";

QColor TextColour(const QLabel *label)
{
    return label->palette().color(QPalette::WindowText);
}

// What blocks 0 and 6 to 9 show, in that order: their "usual" picture of the
// skin, their "second" one, or "other".
QString BlockPictures(const frmMain &form, const QImage &skin)
{
    QStringList seen;
    for (int i : {0, 6, 7, 8, 9}) {
        const QImage shown
            = form.imgPieces[i]->pixmap().toImage().convertToFormat(QImage::Format_RGB32);
        const QRect usual = i == 0 ? QRect(20, 20, 120, 120) : QRect(200, 140, 60, 60);
        const QRect second = i == 0 ? QRect(140, 20, 120, 120) : QRect(140, 140, 60, 60);
        seen << (shown == skin.copy(usual)   ? "usual"
                : shown == skin.copy(second) ? "second"
                                             : "other");
    }
    return seen.join(' ');
}

// Presses as "target modifiers [button]": E the mail link, U the web link,
// P the picture; modifiers summed as Shift 1, Ctrl 2, Alt 4; button r or m,
// else the left one. Each is released away from its target, so no link opens.
void Press(frmAbout &box, const QString &presses)
{
    for (const QString &press : presses.split(' ')) {
        QLabel *target = press[0] == 'E' ? box.lblEmail
            : press[0] == 'U'            ? box.lblUpdates
                                         : box.imgVess;
        const int sum = press[1].digitValue();
        Qt::KeyboardModifiers modifiers;
        modifiers.setFlag(Qt::ShiftModifier, sum & 1);
        modifiers.setFlag(Qt::ControlModifier, sum & 2);
        modifiers.setFlag(Qt::AltModifier, sum & 4);
        const Qt::MouseButton button = press.endsWith('r') ? Qt::RightButton
            : press.endsWith('m')                          ? Qt::MiddleButton
                                                           : Qt::LeftButton;
        QTest::mousePress(target, button, modifiers, QPoint(5, 5));
        QTest::mouseRelease(target, button, modifiers, QPoint(-20, -20));
    }
}

// Every box shown was an information box with an OK button.
bool AllInformation(const ScriptedPlatform &platform)
{
    for (const ScriptedPlatform::Call &call : platform.Calls())
        if (call.icon != Icon::Information || call.buttons != Buttons::Ok)
            return false;
    return true;
}

// A program started on a fresh folder, as start-up leaves it.
struct Game
{
    Game()
        : form(platform, folder.path())
    {
        QVERIFY(StartUp(form, platform, folder));
    }
    ScriptedPlatform platform;
    ProgramFolder folder;
    frmMain form;
};

} // namespace

class tst_About : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }

    void showsTheVersionFirstAndBlueLinks();
    void linksTurnRedWhenPressedAndStayRed();
    void easterEggWantsItsOrder_data();
    void easterEggWantsItsOrder();
    void secondPicturesComeFromTheSkinUntilTheNextIsSet();
    void linksOpenTheirTargetsOrSayHowToReachThem_data();
    void linksOpenTheirTargetsOrSayHowToReachThem();
};

void tst_About::showsTheVersionFirstAndBlueLinks()
{
    Game game;
    QStringList seen;
    bool blue = false, underlined = false, okFocused = false;
    WhenModal([&](QWidget *w) {
        if (auto *box = qobject_cast<frmAbout *>(w)) {
            seen << box->windowTitle() << QString(box->lblProd->text()).remove('\r').split('\n')
                 << box->lblEmail->text() << box->lblUpdates->text();
            blue = TextColour(box->lblEmail) == Blue && TextColour(box->lblUpdates) == Blue;
            underlined = box->lblEmail->font().underline() && box->lblUpdates->font().underline();
            okFocused = box->focusWidget() == box->cmdOk;
            QTest::mouseClick(box->cmdOk, Qt::LeftButton);
        } else {
            w->close();
        }
    });

    game.form.mnuAbout_Click();

    QVERIFY(blue && underlined && okFocused);
    QCOMPARE(seen.size(), 6);
    QCOMPARE(seen.mid(0, 3), (QStringList {"About", "Quorvel Version 1.01", ""}));
    QVERIFY(seen[3].startsWith("Copyright"));
    QCOMPARE(seen.mid(4), (QStringList {"Email: " + ContactAddress, "Updates:  " + WebAddress}));
    QVERIFY(game.platform.Done());
}

void tst_About::linksTurnRedWhenPressedAndStayRed()
{
    Game game;
    {
        frmAbout box(game.form);
        box.show();
        QCOMPARE(box.lblEmail->cursor().shape(), Qt::ArrowCursor);
        QTest::mouseMove(box.lblEmail, QPoint(5, 5));
        QCOMPARE(box.lblEmail->cursor().shape(), Qt::BitmapCursor);
        QCOMPARE(box.lblEmail->cursor().pixmap().size(), QSize(32, 32));
        QCOMPARE(box.lblEmail->cursor().hotSpot(), QPoint(5, 0));

        Press(box, "E0");
        QCOMPARE(TextColour(box.lblEmail), Red);
        QCOMPARE(TextColour(box.lblUpdates), Blue);
        Press(box, "U0r");
        QTest::mouseMove(box.lblUpdates, QPoint(5, 5));
        QTest::mouseMove(box.lblEmail, QPoint(5, 5));
        QCOMPARE(TextColour(box.lblEmail), Red);
        QCOMPARE(TextColour(box.lblUpdates), Red);
    }
    frmAbout next(game.form); // the next box starts afresh
    QCOMPARE(TextColour(next.lblEmail), Blue);
    QCOMPARE(TextColour(next.lblUpdates), Blue);
    QVERIFY(game.platform.Opened().isEmpty());
}

void tst_About::easterEggWantsItsOrder_data()
{
    QTest::addColumn<QString>("presses");
    QTest::addColumn<int>("found"); // how many times the message came
    QTest::newRow("mail-web-picture") << "E5 U5 P1" << 1;
    QTest::newRow("every-further-picture-press-repeats") << "E5 U5 P1 P1 P0 P1" << 3;
    QTest::newRow("any-mouse-button") << "E5r U5m P1r" << 1;
    QTest::newRow("plain-presses-keep-the-step") << "E5 E0 U0 U5 U1 E0 P0 P1" << 1;
    QTest::newRow("web-link-first") << "U5 E5 P1" << 0;
    QTest::newRow("picture-first") << "P1 E5 U5" << 0;
    QTest::newRow("shift-ctrl-on-the-picture") << "E5 U5 P3" << 0;
    QTest::newRow("shift-alt-on-the-picture") << "E5 U5 P5" << 0;
    QTest::newRow("shift-alone-on-the-mail-link") << "E1 U5 P1" << 0;
    QTest::newRow("ctrl-too-on-the-mail-link") << "E7 U5 P1" << 0;
    QTest::newRow("ctrl-too-on-the-web-link") << "E5 U7 P1" << 0;
    QTest::newRow("mail-link-again-goes-back-a-step") << "E5 U5 E5 P1" << 0;
    QTest::newRow("mail-link-again-then-web-link") << "E5 U5 E5 U5 P1" << 1;
}

void tst_About::easterEggWantsItsOrder()
{
    QFETCH(QString, presses);
    QFETCH(int, found);
    Game game;
    for (int i = 0; i < found; ++i)
        game.platform.Reply(Answer::Ok);
    {
        frmAbout box(game.form);
        box.show();
        Press(box, presses);
    }

    QCOMPARE(game.platform.Shown(),
        QStringList(found, "Quorvel - Easter Egg | You have found the Easter Egg!"));
    QVERIFY(AllInformation(game.platform));
    QCOMPARE(BlockPictures(game.form, KnownSkin()), found ? Second : Usual);
    QVERIFY(game.platform.Opened().isEmpty());
    QVERIFY(game.platform.Done());
}

void tst_About::secondPicturesComeFromTheSkinUntilTheNextIsSet()
{
    Game game;
    QImage other = KnownSkin();
    other.invertPixels();
    QVERIFY(other.save(game.folder.File("skins/other.bmp"), "BMP"));
    const auto setSkin = [&game] {
        WhenModal([](QWidget *w) {
            if (auto *chooser = qobject_cast<frmFile *>(w)) {
                const auto found = chooser->filList->findItems("other.bmp", Qt::MatchExactly);
                chooser->filList->setCurrentItem(found.value(0));
                QTest::mouseClick(chooser->cmdSet, Qt::LeftButton);
            }
            w->close(); // should the choice not have closed it
        });
        game.form.mnuSetSkin_Click();
    };
    setSkin();
    game.platform.Reply(Answer::Ok);
    {
        frmAbout box(game.form);
        box.show();
        Press(box, "E5 U5 P1");
    }
    QCOMPARE(BlockPictures(game.form, other), Second); // cut from the skin in use

    ChooseLevel(game.form, 0);
    QCOMPARE(BlockPictures(game.form, other), Second); // a new game keeps them
    setSkin(); // even the skin in use gives the usual pictures back
    QCOMPARE(BlockPictures(game.form, other), Usual);
    QCOMPARE(game.folder.Read("qvl.ini"), QByteArray("other.bmp\r\n"));
    QVERIFY(game.platform.Done());
}

void tst_About::linksOpenTheirTargetsOrSayHowToReachThem_data()
{
    QTest::addColumn<QString>("link"); // "help" the help command of the main window
    QTest::addColumn<bool>("opens");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<bool>("doubleClick");
    const QString mail = "Quorvel - Email | Unable to start your Email agent automatically.\r\n"
                         "Please send an Email to "
        + ContactAddress + " manually.";
    const QString web = "Quorvel - Updates | Unable to start your web browser automatically.\r\n"
                        "Please goto the site "
        + WebAddress + " manually.";
    const QString help = "Quorvel - Help | Unable to open <folder>/qvl.html automatically.\r\n"
                         "Please open the file manually.";
    QTest::newRow("mail-opens") << "mail" << true << "" << false;
    QTest::newRow("mail-fails") << "mail" << false << mail << false;
    QTest::newRow("mail-double-click-opens-once") << "mail" << true << "" << true;
    QTest::newRow("web-opens") << "web" << true << "" << false;
    QTest::newRow("web-fails") << "web" << false << web << false;
    QTest::newRow("web-double-click-opens-once") << "web" << true << "" << true;
    QTest::newRow("help-opens") << "help" << true << "" << false;
    QTest::newRow("help-fails") << "help" << false << help << false;
}

void tst_About::linksOpenTheirTargetsOrSayHowToReachThem()
{
    QFETCH(QString, link);
    QFETCH(bool, opens);
    QFETCH(QString, shown);
    QFETCH(bool, doubleClick);
    Game game;
    game.platform.OpenResult(opens);
    if (!opens)
        game.platform.Reply(Answer::Ok);
    frmAbout box(game.form);
    box.show();

    QLabel *label = link == "mail" ? box.lblEmail : box.lblUpdates;
    if (link == "help")
        game.form.mnuHTP_Click();
    else
        QTest::mouseClick(label, Qt::LeftButton, {}, QPoint(5, 5));
    if (doubleClick) { // the second press of a double click comes as its own event
        QTest::mouseDClick(label, Qt::LeftButton, {}, QPoint(5, 5));
        QTest::mouseRelease(label, Qt::LeftButton, {}, QPoint(5, 5));
    }

    const QString target = link == "mail" ? "mailto:" + ContactAddress + "?Subject=Quorvel"
        : link == "web"                   ? WebAddress
                                          : game.folder.File("qvl.html");
    QCOMPARE(game.platform.Opened(), QStringList {target});
    shown.replace("<folder>", QDir::toNativeSeparators(game.folder.path()));
    QCOMPARE(game.platform.Shown(), opens ? QStringList() : QStringList {shown});
    QVERIFY(AllInformation(game.platform));
    QVERIFY(box.isVisible());
    QVERIFY(game.platform.Done());
}

QTEST_MAIN(tst_About)
#include "tst_About.moc"
